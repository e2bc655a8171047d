// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "testing/BwaTestRequest.h"

#include "fcgi/BwaFcgiListener.h"
#include "services/BwaAbstractFcgiRequestProcessor.h"
#include "services/BwaAbstractFcgiService.h"
#include "testing/BwaTestExchange_p.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>

#include <stdexcept>

namespace {

const QByteArray boundary = "----------------BwaTestRequest-7d1c5f0a93e84b26";

/** A root service that is a function. */
class HandlerService : public BwaAbstractFcgiService
{
public:
    explicit HandlerService(const BwaTestRequest::Handler& handler)
        : m_handler(handler)
    {
    }

    void processRequest(BwaFcgiRequest* request) override { m_handler(request); }

private:
    const BwaTestRequest::Handler& m_handler;
};

// The name of the CGI variable that holds a header.
QByteArray variableOf(const QByteArray& header)
{
    const QByteArray name = header.toUpper().replace('-', '_');
    return name == "CONTENT_TYPE" || name == "CONTENT_LENGTH" ? name : "HTTP_" + name;
}

// A name as browsers write it in the header of a part.
QByteArray quoted(const QByteArray& name)
{
    return '"' + QByteArray(name).replace('"', "%22").replace('\r', "%0D").replace('\n', "%0A") +
        '"';
}

// Calls the slot with which the listener receives requests from the accepting thread.
void deliver(BwaFcgiListener* listener, FCGX_Request* request)
{
    const bool isDelivered = QMetaObject::invokeMethod(listener, "newRequest", Qt::DirectConnection,
                                                       Q_ARG(FCGX_Request*, request));
    Q_ASSERT(isDelivered);
    Q_UNUSED(isDelivered)
}

void waitUntilComplete(BwaTestExchange* exchange, int timeout)
{
    QEventLoop loop;
    exchange->whenComplete([&loop] { loop.quit(); });
    QTimer::singleShot(timeout, &loop, SLOT(quit()));
    loop.exec();
    exchange->whenComplete(nullptr);
}

} // namespace

BwaTestRequest::BwaTestRequest(const QByteArray& method, const QByteArray& target)
    : m_timeout(10000)
{
    const QByteArray path = target.split('?').first();
    setVariable("REQUEST_METHOD", method);
    setVariable("SCRIPT_NAME", "");
    setVariable("PATH_INFO", QByteArray::fromPercentEncoding(path));
    setVariable("QUERY_STRING", QByteArray(target).remove(0, path.size() + 1));
    setVariable("SERVER_PROTOCOL", "HTTP/1.1");
    setVariable("REMOTE_ADDR", "127.0.0.1");
}

BwaTestRequest::~BwaTestRequest() = default;

void BwaTestRequest::setHeader(const QByteArray& name, const QByteArray& value)
{
    setVariable(variableOf(name), value);
}

void BwaTestRequest::setVariable(const QByteArray& name, const QByteArray& value)
{
    if (value.isNull()) {
        m_variables.remove(name);
    } else {
        m_variables.insert(name, value);
    }
}

void BwaTestRequest::setBody(const QByteArray& contentType, const QByteArray& body)
{
    setHeader("Content-Type", contentType);
    setHeader("Content-Length", QByteArray::number(body.size()));
    m_body = body;
}

void BwaTestRequest::setForm(const QList<QPair<QByteArray, QByteArray>>& fields)
{
    QList<QByteArray> pairs;
    for (const auto& field : fields) {
        pairs.append(field.first.toPercentEncoding() + '=' + field.second.toPercentEncoding());
    }
    setBody("application/x-www-form-urlencoded", pairs.join('&'));
}

void BwaTestRequest::addField(const QByteArray& name, const QByteArray& value)
{
    addPart("Content-Disposition: form-data; name=" + quoted(name) + "\r\n", value);
}

void BwaTestRequest::addFile(const QByteArray& name, const QByteArray& fileName,
                             const QByteArray& contentType, const QByteArray& content)
{
    addPart("Content-Disposition: form-data; name=" + quoted(name) +
                "; filename=" + quoted(fileName) + "\r\nContent-Type: " + contentType + "\r\n",
            content);
}

void BwaTestRequest::addPart(const QByteArray& header, const QByteArray& content)
{
    m_parts += "--" + boundary + "\r\n" + header + "\r\n" + content + "\r\n";
    setBody("multipart/form-data; boundary=" + boundary, m_parts + "--" + boundary + "--\r\n");
}

BwaTestReply BwaTestRequest::sendTo(BwaAbstractFcgiService& service) const
{
    return sendThrough({{QString::fromLatin1(m_variables.value("SCRIPT_NAME")), &service}});
}

BwaTestReply BwaTestRequest::sendTo(BwaAbstractFcgiRequestProcessor& processor) const
{
    return sendTo([&processor](BwaFcgiRequest* request) { processor.processRequest(request); });
}

BwaTestReply BwaTestRequest::sendTo(const Handler& handler) const
{
    HandlerService service(handler);
    return sendTo(service);
}

BwaTestReply
BwaTestRequest::sendThrough(const QMap<QString, BwaAbstractFcgiService*>& services) const
{
    BwaFcgiListener listener(services);
    const auto exchange = BwaTestExchange::begin(entries(), m_body);
    deliver(&listener, exchange->request());
    if (!exchange->isComplete() && !QCoreApplication::instance()) {
        throw std::runtime_error("The request " + shownName().toStdString() +
                                 " is held, and without a QCoreApplication nobody can answer it");
    }
    if (!exchange->isComplete()) {
        waitUntilComplete(exchange.get(), m_timeout);
    }
    if (!exchange->isComplete()) {
        throw std::runtime_error("The request " + shownName().toStdString() +
                                 " was not deleted within " + std::to_string(m_timeout) + " ms");
    }
    return BwaTestReply(exchange->out(), exchange->err());
}

BwaTestStream BwaTestRequest::open(BwaAbstractFcgiService& service) const
{
    return BwaTestStream(service, m_variables, m_body);
}

QList<QByteArray> BwaTestRequest::entries() const
{
    QList<QByteArray> entries;
    for (auto variable = m_variables.begin(); variable != m_variables.end(); ++variable) {
        entries.append(variable.key() + '=' + variable.value());
    }
    return entries;
}

// The method and the path, as in "GET /notes", for messages.
QByteArray BwaTestRequest::shownName() const
{
    return m_variables.value("REQUEST_METHOD") + ' ' + m_variables.value("SCRIPT_NAME") +
        m_variables.value("PATH_INFO");
}
