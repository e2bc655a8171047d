// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWATESTREQUEST_H
#define BWATESTREQUEST_H

#include "testing/BwaTestReply.h"
#include "testing/BwaTestStream.h"

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QPair>
#include <QString>

#include <functional>

class BwaAbstractFcgiRequestProcessor;
class BwaAbstractFcgiService;
class BwaFcgiRequest;

/**
 * A request for tests: goes through a service in this process, without a web server and without
 * a socket that anybody could see, and brings the reply back.
 *
 *     BwaTestRequest request("POST", "/notes?page=2");
 *     request.setBody("application/json", R"({"title":"a"})");
 *     const BwaTestReply reply = request.sendTo(service);
 *     // reply.statusCode, reply.header("Location"), reply.body, reply.errorText
 *
 * It takes the road of a real one from the listener on: a std::exception that leaves the service
 * ends as there, in a message on Qt's debug channel and a reply that stops where it was. It may be
 * sent several times, in any thread, and needs no test framework.
 */
class BwaTestRequest
{
public:
    /** Takes a request over, as a service does: answers and deletes it, now or later. */
    using Handler = std::function<void(BwaFcgiRequest*)>;

    /**
     * @a target is the path as a client writes it, and behind a "?" the query string. As with web
     * servers the path is percent-decoded (PATH_INFO), the query is not (QUERY_STRING).
     *
     * SCRIPT_NAME is empty, SERVER_PROTOCOL is "HTTP/1.1", REMOTE_ADDR is "127.0.0.1".
     */
    explicit BwaTestRequest(const QByteArray& method, const QByteArray& target = "/");
    ~BwaTestRequest();

    /** Sets a header of the client, such as "Cookie" or "Authorization". */
    void setHeader(const QByteArray& name, const QByteArray& value);
    /** Sets a CGI variable, such as "SCRIPT_NAME"; a null @a value takes it away. */
    void setVariable(const QByteArray& name, const QByteArray& value);

    /** Sets the body, its Content-Type, and its length in bytes as Content-Length. */
    void setBody(const QByteArray& contentType, const QByteArray& body);
    /** Sets the body to a form, application/x-www-form-urlencoded, of names and values as bytes. */
    void setForm(const QList<QPair<QByteArray, QByteArray>>& fields);
    /** Adds a field to the body, which becomes multipart/form-data. */
    void addField(const QByteArray& name, const QByteArray& value);
    /** Adds a file to the body, which becomes multipart/form-data. */
    void addFile(const QByteArray& name, const QByteArray& fileName, const QByteArray& contentType,
                 const QByteArray& content);

    /** How long a reply may take once the service has returned; 10000 ms unless set. */
    void setTimeout(int milliseconds) { m_timeout = milliseconds; }

    /**
     * Sends the request to @a service, whatever its script name, and waits until it is deleted.
     * When the service holds it, the event loop runs until then; to answer a held request by
     * another one, send that from a timer.
     *
     * @throws std::runtime_error when the request is not deleted within the timeout, or is held
     *         without a QCoreApplication. The service may still delete it afterwards.
     */
    BwaTestReply sendTo(BwaAbstractFcgiService& service) const;
    /** The same with a processor. */
    BwaTestReply sendTo(BwaAbstractFcgiRequestProcessor& processor) const;
    /** The same with a function, for code that needs a BwaFcgiRequest in its hand. */
    BwaTestReply sendTo(const Handler& handler) const;
    /** The same with root services by script name, as a listener has them: see SCRIPT_NAME. */
    BwaTestReply sendThrough(const QMap<QString, BwaAbstractFcgiService*>& services) const;

    /**
     * Sends the request to @a service, which is to outlive the stream, and gives the reply while it
     * comes: for replies that have no end of their own. It goes over a connection, as those of web
     * servers do. To be called in one thread only, that of @a service, with a QCoreApplication; a
     * body beyond 100 KB only for services that take it in pieces, while the event loop runs.
     */
    BwaTestStream open(BwaAbstractFcgiService& service) const;

private:
    void addPart(const QByteArray& header, const QByteArray& content);
    QList<QByteArray> entries() const;
    QByteArray shownName() const;

    QMap<QByteArray, QByteArray> m_variables;
    QByteArray m_body;
    QByteArray m_parts; // of a multipart body, without its end
    int m_timeout;      // milliseconds
};

#endif
