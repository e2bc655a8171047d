// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWARESTSERVICE_H
#define BWARESTSERVICE_H

#include "rest/BwaRestGlobal.h"
#include "rest/BwaRestGroup.h"
#include "services/BwaDispatcherFcgiService.h"

#include <QStringList>
#include <QVariant>

#include <memory>

class BwaRestExchange;
class BwaRestHeldCalls;
class QThreadPool;
struct BwaRestSettings;

/**
 * A service that answers by routes: the outermost group of them, used as a root service or as a
 * child of a dispatcher.
 *
 *     BwaRestService api;
 *     api.get("/greeting/{name}", [](const BwaRestCall& call) -> BwaRestReply {
 *         return QVariantMap{{"greeting", "Hello, " + call.text("name")}};
 *     });
 *     BwaFcgiListener listener({{"/api", &api}});
 *
 * Each call is checked in this order: 400 for a path that is no UTF-8, 404, OPTIONS and preflights,
 * 405, 401 and 403 of needs(), the hooks of before(), then what the handler asks for: 411 and 413,
 * 415, 400, and 422 for fields. Every refusal is a BwaRestProblem. A std::exception that leaves a
 * hook or a handler becomes a 500 that says nothing of it, and is logged.
 *
 * It lives in the listener's thread. It has no children besides its routes: a service that is added
 * to it is never called.
 */
class BWA_REST_EXPORT BwaRestService
    : public BwaDispatcherFcgiService
    , public BwaRestGroup
{
    Q_OBJECT

public:
    /** The header by which a web server takes the path of a file. */
    enum FileHeader {
        XSendfile,     /**< lighttpd, Apache httpd with mod_xsendfile: a path of the file system. */
        XAccelRedirect /**< nginx: the path of an internal location. */
    };

    /** Answers everything with 404 until it has routes. */
    explicit BwaRestService(QObject* parent = nullptr);
    ~BwaRestService() override;

    /** Sets the header for BwaRestReply::file(); XSendfile unless set. */
    void setFileHeader(FileHeader header);
    /**
     * Lets pages of these origins read all replies, errors included (CORS). Write each origin as
     * browsers do: scheme, host, and the port unless it is the scheme's own
     * ("https://example.org:8443"). "*" allows any origin. With @a credentials, requests may have
     * cookies and an Authorization header.
     *
     * @throws std::logic_error for "*" with @a credentials, which browsers refuse
     */
    void allowOrigins(const QStringList& origins, bool credentials = false);

    /**
     * Sets the pool of BwaRestCall::onPool(); QThreadPool::globalInstance() unless set. When all
     * its threads are busy, @a mostWaiting more calls may wait; further ones are answered with 503.
     * @a pool is not owned, and must outlive the calls.
     */
    void setPool(QThreadPool* pool, int mostWaiting = 64);

    /**
     * The OpenAPI 3.1 document of the routes added so far: the parameters of their patterns, and
     * what BwaRestRoute::says(), takes() and gives() have set. HEAD and OPTIONS are not in it. Nor
     * is the address of the service: add a member "servers" unless its paths begin at the root of
     * the host.
     */
    QVariantMap describe(const QString& title, const QString& version) const;

    void processRequest(BwaFcgiRequest* request) override;
    /** Answers the calls that are held with 503, and asks work on the pool to stop. */
    void endCalls();

Q_SIGNALS:
    /**
     * Emitted when the server is to stop and accepts nothing more: end what would otherwise go on
     * for ever.
     */
    void stopping();

private:
    BwaRestReply replyTo(BwaRestExchange& exchange) const;

    std::unique_ptr<BwaRestSettings> m_settings;
    BwaRestHeldCalls* m_calls; // owned as a QObject child
};

#endif
