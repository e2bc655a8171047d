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
 * What a handler answers: a value, which any thread may make and which the service writes once.
 *
 *     return QVariantMap{{"id", 7}, {"name", name}};
 *     return BwaRestReply::created(QStringLiteral("/notes/7"), note);
 *     return BwaRestReply::empty();
 *     return BwaRestReply(note).etag(QByteArray::number(version));
 *     return BwaRestReply(note).header("Cache-Control", "no-cache");
 *     return BwaRestProblem(404);
 *
 * A reply to HEAD loses its body by itself, and one with an ETag that the client has becomes 304.
 * What cannot be sent, such as a value that is no JSON, becomes a logged 500.
 */
class BWA_REST_EXPORT BwaRestReply
{
public:
    /** When browsers send a cookie with requests that come from other sites (RFC 6265bis). */
    enum SameSite { Strict, Lax, None };

    /** application/json, as BwaJson writes it. Not explicit: handlers return the map. */
    BwaRestReply(const QVariantMap& json, int status = 200);
    /** application/json, as BwaJson writes it. Not explicit: handlers return the list. */
    BwaRestReply(const QVariantList& json, int status = 200);
    /** application/problem+json (RFC 9457). Not explicit: handlers return the problem. */
    BwaRestReply(const BwaRestProblem& problem);
    /** The reply that @a later brings. Not explicit: handlers return the handle. */
    BwaRestReply(const BwaRestLater& later);
    ~BwaRestReply();
    BwaRestReply(const BwaRestReply&) = default;
    BwaRestReply(BwaRestReply&&) = default;
    BwaRestReply& operator=(const BwaRestReply&) = default;
    BwaRestReply& operator=(BwaRestReply&&) = default;

    /** No body. */
    static BwaRestReply empty(int status = 204);
    /** Any body; @a contentType is written as it stands. */
    static BwaRestReply bytes(const QByteArray& body, const QByteArray& contentType,
                              int status = 200);
    /** 201 with the Location of @a path, which is below the service and not percent-encoded. */
    static BwaRestReply created(const QString& path, const QVariantMap& json);
    /**
     * Sends the client to @a target, a URL or an absolute path, whose characters that no URL may
     * hold are percent-encoded. 303: with GET.
     */
    static BwaRestReply redirect(const QString& target, int status = 303);
    /**
     * Has the web server send a file: @a path is what the header that is set by
     * BwaRestService::setFileHeader() takes, not percent-encoded.
     */
    static BwaRestReply file(const QString& path, const QByteArray& contentType);

    /**
     * Adds a header line. Left out and logged are a name that is no token (RFC 9110), the names
     * Status and Content-Length, and a value that holds CR, LF or NUL.
     */
    BwaRestReply& header(const QByteArray& name, const QByteArray& value);
    /**
     * Sets a cookie, whose texts are written in UTF-8. Left out and logged is one with a control
     * character or ";". None implies Secure, without which browsers drop such a cookie.
     */
    BwaRestReply& cookie(const BwaHttpCookie& cookie, SameSite sameSite = Lax);
    /**
     * Sets the ETag, @a tag in quotes; bytes that none may hold are percent-encoded. A GET or HEAD
     * whose If-None-Match has it is answered with 304. Weak tags match: web servers that compress
     * make tags weak.
     */
    BwaRestReply& etag(const QByteArray& tag);

    /** From 200 to 599; of a reply that comes later 202. */
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
    std::shared_ptr<BwaRestLaterState> m_later; // null: this is the reply
    // What the exchange does while the reply is awaited; may be empty.
    std::function<void(BwaRestExchange&, const BwaRestReply&)> m_whenHeld;
};

#endif
