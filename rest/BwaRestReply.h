// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWARESTREPLY_H
#define BWARESTREPLY_H

#include "http/BwaHttpCookie.h"
#include "rest/BwaRestGlobal.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QVariant>

#include <functional>
#include <memory>

class BwaRestExchange;
class BwaRestLater;
class BwaRestLaterState;
class BwaRestProblem;

/**
 * The reply that a handler returns: a value, which any thread may make and the service sends.
 *
 *     return QVariantMap{{"id", 7}, {"name", name}};
 *     return BwaRestReply::created(QStringLiteral("/notes/7"), note);
 *     return BwaRestReply::empty();
 *     return BwaRestReply(note).etag(QByteArray::number(version));
 *     return BwaRestReply(note).header("Cache-Control", "no-cache");
 *     return BwaRestProblem(404);
 *
 * The service leaves out the body when it answers HEAD, and sends 304 when the client has the ETag
 * of the reply already. A reply that cannot be sent, such as a value that BwaJson cannot write,
 * becomes a 500 and is logged.
 */
class BWA_REST_EXPORT BwaRestReply
{
public:
    /** When browsers send a cookie with requests that come from other sites (RFC 6265bis). */
    enum SameSite { Strict, Lax, None };

    /**
     * A body of application/json, as BwaJson writes it. Not explicit, so that handlers can return a
     * map.
     */
    BwaRestReply(const QVariantMap& json, int status = 200);
    /**
     * A body of application/json, as BwaJson writes it. Not explicit, so that handlers can return a
     * list.
     */
    BwaRestReply(const QVariantList& json, int status = 200);
    /**
     * A body of application/problem+json (RFC 9457). Not explicit, so that handlers can return a
     * problem.
     */
    BwaRestReply(const BwaRestProblem& problem);
    /**
     * The reply that comes through @a later. Not explicit, so that handlers can return the handle.
     */
    BwaRestReply(const BwaRestLater& later);
    ~BwaRestReply();
    BwaRestReply(const BwaRestReply&) = default;
    BwaRestReply(BwaRestReply&&) = default;
    BwaRestReply& operator=(const BwaRestReply&) = default;
    BwaRestReply& operator=(BwaRestReply&&) = default;

    /** A reply without a body. */
    static BwaRestReply empty(int status = 204);
    /** A reply with any body; @a contentType is written unchanged. */
    static BwaRestReply bytes(const QByteArray& body, const QByteArray& contentType,
                              int status = 200);
    /** A 201 whose Location is @a path, a path below the service that is not percent-encoded. */
    static BwaRestReply created(const QString& path, const QVariantMap& json);
    /**
     * Sends the client to @a target, a URL or an absolute path. Characters that no URL may contain
     * are percent-encoded. With 303, the client uses GET.
     */
    static BwaRestReply redirect(const QString& target, int status = 303);
    /**
     * Has the web server send a file. @a path, not percent-encoded, is of the kind that the header
     * chosen with BwaRestService::setFileHeader() needs.
     */
    static BwaRestReply file(const QString& path, const QByteArray& contentType);

    /**
     * Adds a header line. It is left out, and that is logged, when the name is no token (RFC 9110),
     * is Status or Content-Length, or when the value contains CR, LF or NUL.
     */
    BwaRestReply& header(const QByteArray& name, const QByteArray& value);
    /**
     * Sets a cookie; its texts are written in UTF-8. It is left out, and that is logged, when a
     * text contains a control character or ";". SameSite None also sets Secure, without which
     * browsers drop such a cookie.
     */
    BwaRestReply& cookie(const BwaHttpCookie& cookie, SameSite sameSite = Lax);
    /**
     * Sets the ETag to @a tag in quotes; bytes that no entity tag may contain are percent-encoded.
     * A GET or HEAD whose If-None-Match contains the tag is answered with 304. Weak tags match,
     * too, because web servers that compress replies make tags weak.
     */
    BwaRestReply& etag(const QByteArray& tag);

    /** The status, from 200 to 599; 202 for a reply that comes later. */
    int status() const { return m_status; }

private:
    friend class BwaRestCall;
    friend class BwaRestEvents;
    friend class BwaRestExchange;
    friend class BwaRestHeldCalls;
    friend class BwaRestOutcome;

    BwaRestReply(int status, const QByteArray& body, const QByteArray& contentType);
    void setJson(const QVariant& value);
    void addLine(const QByteArray& name, const QByteArray& value);

    int m_status;
    QByteArray m_contentType; // null: no body
    QByteArray m_body;
    QByteArray m_lines;                         // headers, each with its line end
    QList<QByteArray> m_headerNames;            // of m_lines
    QByteArray m_etag;                          // with its quotes; null: none
    QString m_createdPath;                      // below the service; null: none
    QString m_filePath;                         // null: none
    QList<QByteArray> m_complaints;             // for the log
    std::shared_ptr<BwaRestLaterState> m_later; // null unless the reply comes later
    // Called when the exchange is held until the reply comes; may be empty.
    std::function<void(BwaRestExchange&, const BwaRestReply&)> m_whenHeld;
};

#endif
