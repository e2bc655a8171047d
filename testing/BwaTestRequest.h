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
 * A request for tests: it goes through a service in this process and brings the reply back. There
 * is no web server, and no socket that another process could see.
 *
 *     BwaTestRequest request("POST", "/notes?page=2");
 *     request.setBody("application/json", R"({"title":"a"})");
 *     const BwaTestReply reply = request.sendTo(service);
 *     // reply.statusCode, reply.header("Location"), reply.body, reply.errorText
 *
 * It takes the path of a real request from the listener on. So a std::exception that leaves the
 * service is logged on Qt's debug channel, and the reply ends where it was. A request may be sent
 * several times and in any thread, and needs no test framework.
 */
class BwaTestRequest
{
public:
    /** A function that takes a request over as a service does: it answers and deletes it. */
    using Handler = std::function<void(BwaFcgiRequest*)>;

    /**
     * @a target is the path as a client writes it and, after a "?", the query string. As a web
     * server does, this percent-decodes the path (PATH_INFO), but not the query string
     * (QUERY_STRING).
     *
     * SCRIPT_NAME is empty, SERVER_PROTOCOL is "HTTP/1.1", REMOTE_ADDR is "127.0.0.1".
     */
    explicit BwaTestRequest(const QByteArray& method, const QByteArray& target = "/");
    ~BwaTestRequest();

    /** Sets a header of the client, such as "Cookie" or "Authorization". */
    void setHeader(const QByteArray& name, const QByteArray& value);
    /** Sets a CGI variable, such as "SCRIPT_NAME"; a null @a value removes it. */
    void setVariable(const QByteArray& name, const QByteArray& value);

    /** Sets the body, its Content-Type, and its length in bytes as Content-Length. */
    void setBody(const QByteArray& contentType, const QByteArray& body);
    /** Sets the body to a form, application/x-www-form-urlencoded, of these names and values. */
    void setForm(const QList<QPair<QByteArray, QByteArray>>& fields);
    /** Adds a field to the body, which becomes multipart/form-data. */
    void addField(const QByteArray& name, const QByteArray& value);
    /** Adds a file to the body, which becomes multipart/form-data. */
    void addFile(const QByteArray& name, const QByteArray& fileName, const QByteArray& contentType,
                 const QByteArray& content);

    /** Limits how long the reply may take once the service has returned; 10000 ms at first. */
    void setTimeout(int milliseconds) { m_timeout = milliseconds; }

    /**
     * Sends the request to @a service, whatever the script name, and waits until it is deleted.
     * When the service keeps it, the event loop runs until the service deletes it. If the service
     * waits for another request to do so, have a timer send that one.
     *
     * @throws std::runtime_error when the request is not deleted within the timeout, or when it is
     *         kept and there is no QCoreApplication. The service may still delete it afterwards.
     */
    BwaTestReply sendTo(BwaAbstractFcgiService& service) const;
    /** Sends the request to a processor, otherwise as above. */
    BwaTestReply sendTo(BwaAbstractFcgiRequestProcessor& processor) const;
    /** Sends the request to a function, otherwise as above; for code that takes a BwaFcgiRequest.
     */
    BwaTestReply sendTo(const Handler& handler) const;
    /** Sends the request to the service that @a services has for its SCRIPT_NAME, as a listener
     * does. */
    BwaTestReply sendThrough(const QMap<QString, BwaAbstractFcgiService*>& services) const;

    /**
     * Sends the request to @a service, and returns a stream that gives the reply while it is sent:
     * for replies without an end, such as events. The request goes over a connection, as those of
     * web servers do. @a service must outlive the stream. Call this in one thread only, that of
     * @a service, with a QCoreApplication. A body of more than 100 KB is only for services that
     * take it in pieces, while the event loop runs.
     */
    BwaTestStream open(BwaAbstractFcgiService& service) const;

private:
    void addPart(const QByteArray& header, const QByteArray& content);
    QList<QByteArray> entries() const;
    QByteArray shownName() const;

    QMap<QByteArray, QByteArray> m_variables;
    QByteArray m_body;
    QByteArray m_parts; // the parts of a multipart body, without the closing delimiter
    int m_timeout;      // milliseconds
};

#endif
