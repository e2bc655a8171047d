// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "fcgi/BwaFcgiRequest.h"

#include "BwaStringStreaming.h"
#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiClock_p.h"
#include "fcgi/BwaFcgiExchange_p.h"
#include "fcgi/BwaFcgiGuard_p.h"
#include "fcgi/BwaFcgiListener.h"
#include "fcgi/BwaFcgiReplyBuffer_p.h"
#include "html/BwaHtmlClosingPairedTag.h"
#include "html/BwaHtmlDoctype.h"
#include "html/BwaHtmlElement.h"
#include "html/BwaHtmlOpeningPairedTag.h"
#include "http/BwaHttpReplyHeader.h"
#include "http/BwaHttpStatusHeader.h"

#include <utility>

namespace {

struct ErrorReply {
    BwaFcgiRequest::StandardHttpError error;
    const char* reasonPhrase;
};

const ErrorReply errorReplies[] = {
    {BwaFcgiRequest::BadRequest, "Bad Request"},
    {BwaFcgiRequest::Unauthorized, "Unauthorized"},
    {BwaFcgiRequest::PaymentRequired, "Payment Required"},
    {BwaFcgiRequest::Forbidden, "Forbidden"},
    {BwaFcgiRequest::NotFound, "Not Found"},
    {BwaFcgiRequest::MethodNotAllowed, "Method Not Allowed"},
    {BwaFcgiRequest::NotAcceptable, "Not Acceptable"},
    {BwaFcgiRequest::ProxyAuthenticationRequired, "Proxy Authentication Required"},
    {BwaFcgiRequest::RequestTimeout, "Request Timeout"},
    {BwaFcgiRequest::Conflict, "Conflict"},
    {BwaFcgiRequest::Gone, "Gone"},
    {BwaFcgiRequest::LengthRequired, "Length Required"},
    {BwaFcgiRequest::PreconditionFailed, "Precondition Failed"},
    {BwaFcgiRequest::PayloadTooLarge, "Payload Too Large"},
    {BwaFcgiRequest::UriTooLong, "URI Too Long"},
    {BwaFcgiRequest::UnsupportedMediaType, "Unsupported Media Type"},
    {BwaFcgiRequest::RequestedRangeNotSatisfiable, "Requested Range Not Satisfiable"},
    {BwaFcgiRequest::ExpectationFailed, "Expectation Failed"},
    {BwaFcgiRequest::ImATeapot, "I'm a teapot"},
    {BwaFcgiRequest::MisdirectedRequest, "Misdirected Request"},
    {BwaFcgiRequest::UnprocessableEntity, "Unprocessable Entity"},
    {BwaFcgiRequest::Locked, "Locked"},
    {BwaFcgiRequest::MethodFailure, "Method Failure"}, // Settled: not the registered phrase of 424.
    {BwaFcgiRequest::UpgradeRequired, "Upgrade Required"},
    {BwaFcgiRequest::PreconditionRequired, "Precondition Required"},
    {BwaFcgiRequest::TooManyRequests, "Too Many Requests"},
    {BwaFcgiRequest::RequestHeaderFieldsTooLarge, "Request Header Fields Too Large"},
    {BwaFcgiRequest::UnavailableForLegalReasons, "Unavailable For Legal Reasons"},
    {BwaFcgiRequest::InternalServerError, "Internal Server Error"},
    {BwaFcgiRequest::NotImplemented, "Not Implemented"},
    {BwaFcgiRequest::BadGateway, "Bad Gateway"},
    {BwaFcgiRequest::ServiceUnavailable, "Service Unavailable"},
    {BwaFcgiRequest::GatewayTimeout, "Gateway Timeout"},
    {BwaFcgiRequest::HttpVersionNotSupported, "HTTP Version Not Supported"},
    {BwaFcgiRequest::VariantAlsoNegotiates, "Variant Also Negotiates"},
    {BwaFcgiRequest::InsufficientStorage, "Insufficient Storage"},
    {BwaFcgiRequest::LoopDetected, "Loop Detected"},
    {BwaFcgiRequest::NotExtended, "Not Extended"},
    {BwaFcgiRequest::NetworkAuthenticationRequired, "Network Authentication Required"},
};

} // namespace

BwaFcgiRequest::BwaFcgiRequest(FCGX_Request* request)
    : m_request(request)
    , m_exchange(new BwaFcgiExchange(request))
    , m_input(new BwaFcgiInput(request))
    , m_cgiRequest(new BwaCgiRequest(m_input.get()))
    , m_outBuffer(new BwaFcgiReplyBuffer(request->out, m_exchange.get()))
    , m_out(m_outBuffer.get())
    , m_guard(nullptr)
    , m_began(BwaFcgiClock::now())
{
}

BwaFcgiRequest::~BwaFcgiRequest()
{
    logMissingReply();
    const QString path = reportedPath();
    m_cgiRequest.reset();
    m_input.reset();
    finish(path);
    for (Guard* guard = m_guard; guard; guard = guard->m_outer) {
        guard->m_request = nullptr;
    }
}

BwaFcgiRequest::ErrorStream::ErrorStream(FCGX_Stream* errors)
    : buffer(errors)
    , stream(&buffer)
{
}

// Logs an exception on Qt's debug channel, for requests whose err() can no longer be used.
void BwaFcgiRequest::logException(const std::exception& exception)
{
    try {
        const QString what = QString::fromLatin1(exception.what());
        qDebug("An exception occurs while processing a FastCGI request: %s",
               what.toUtf8().constData());
    } catch (const std::exception&) {
        // Memory is short. The line is lost, but serving goes on.
    }
}

// Called for a request that comes from a listener's connection.
void BwaFcgiRequest::join(const QSharedPointer<BwaFcgiConnections>& connections, bool inputIsWhole)
{
    m_exchange->join(connections, inputIsWhole);
    m_input->m_exchange = m_exchange.get();
}

// Called when the request still exists after its hook has returned: sends what has been written so
// far, so that the client need not wait for it.
void BwaFcgiRequest::goOn()
{
    m_outBuffer->sendAll();
    m_exchange->watch(this);
}

void BwaFcgiRequest::tellGone()
{
    const std::function<void()> function = std::exchange(m_whenGone, nullptr);
    if (function) {
        function();
    }
}

// Logs that a hook has deleted the request without a reply. The web server then answers with 500 or
// 502.
void BwaFcgiRequest::logMissingReply()
{
    if (!m_request || !m_exchange->listener() || m_outBuffer->size() > 0) {
        return;
    }
    try {
        const BwaCgiEnvironment& environment = m_cgiRequest->environment();
        err() << QString::fromLatin1("Error in the FastCGI listener: A request to script \"%1\" "
                                     "with path info \"%2\" was deleted without a reply")
                     .arg(environment.scriptName(), environment.pathInfo());
    } catch (const std::exception&) {
        // Memory is short. The line is lost.
    }
}

// The path for the listener's signal; null when nobody receives it or memory is short.
QString BwaFcgiRequest::reportedPath() const
{
    const BwaFcgiListener* const listener = m_exchange->listener();
    try {
        return listener && listener->reportsCompletion() ? fullPath() : QString();
    } catch (const std::exception&) {
        return QString();
    }
}

void BwaFcgiRequest::finish(const QString& path)
{
    if (!m_request) {
        return;
    }
    BwaFcgiListener* const listener = m_exchange->listener();
    m_exchange->complete();
    m_request = nullptr;
    if (listener && listener->reportsCompletion()) {
        Q_EMIT listener->requestCompleted(path, m_outBuffer->status(), m_outBuffer->size(),
                                          BwaFcgiClock::now() - m_began);
    }
}

// Finishes a request to which a service may still have a pointer. From then on its streams drop
// what is written, and its body is empty.
void BwaFcgiRequest::abandon()
{
    std::ostream* const streams[] = {&out(), &err()};
    m_input->m_request = nullptr;
    finish(reportedPath());
    for (std::ostream* stream : streams) {
        stream->exceptions(std::ios::goodbit);
        stream->rdbuf(nullptr);
    }
}

QByteArray BwaFcgiRequest::readAvailable(unsigned int most)
{
    return m_request ? m_exchange->readAvailable(most) : QByteArray();
}

bool BwaFcgiRequest::bodyIsOver() const
{
    return !m_request || m_exchange->bodyIsOver();
}

void BwaFcgiRequest::onGone(const std::function<void()>& function)
{
    m_whenGone = function;
    if (m_request) {
        m_exchange->watch(this);
    }
}

bool BwaFcgiRequest::isGone() const
{
    return !m_request || m_exchange->isGone();
}

bool BwaFcgiRequest::canWrite() const
{
    return m_request && m_exchange->canWrite();
}

int BwaFcgiRequest::connection() const
{
    return m_request ? m_request->ipcFd : -1;
}

FCGX_Request* BwaFcgiRequest::fcgxRequest()
{
    if (m_request) {
        m_exchange->waitForPeer();
    }
    return m_request;
}

std::ostream& BwaFcgiRequest::err()
{
    if (!m_err) {
        m_exchange->waitForPeer(); // a long message may have to wait for room
        m_err.emplace(m_request->err);
    }
    return m_err->stream;
}

QPair<unsigned short, QString> BwaFcgiRequest::standardHttpErrorParameters(StandardHttpError error)
{
    for (const ErrorReply& reply : errorReplies) {
        if (reply.error == error) {
            return qMakePair(static_cast<unsigned short>(error),
                             QString::fromLatin1(reply.reasonPhrase));
        }
    }
    return standardHttpErrorParameters(InternalServerError);
}

void BwaFcgiRequest::sendHttpError(StandardHttpError error)
{
    const QPair<unsigned short, QString> parameters = standardHttpErrorParameters(error);
    sendHttpError(parameters.first, parameters.second);
}

void BwaFcgiRequest::sendHttpError(unsigned short statusCode, const QString& reasonPhrase)
{
    try {
        const BwaFcgiReplyBuffer::FlushHolder holder(m_outBuffer.get());
        writeErrorPage(statusCode, reasonPhrase);
    } catch (const std::exception& exception) {
        const BwaCgiEnvironment& environment = m_cgiRequest->environment();
        err() << QString::fromLatin1("Error while sending HTTP error %1 (%2) for request to script "
                                     "\"%3\" with path info \"%4\": %5")
                     .arg(QString::number(statusCode), reasonPhrase, environment.scriptName(),
                          environment.pathInfo(), QString::fromLatin1(exception.what()));
    }
}

void BwaFcgiRequest::writeErrorPage(unsigned short statusCode, const QString& reasonPhrase)
{
    const QString title = QString::number(statusCode) + QLatin1String(" - ") + reasonPhrase;
    const QString html = QString::fromLatin1("html");
    const QString head = QString::fromLatin1("head");
    const QString body = QString::fromLatin1("body");
    m_out << BwaHttpStatusHeader(statusCode, reasonPhrase)
          << BwaHtmlDoctype(BwaHtmlDoctype::Html401Strict) << std::endl
          << BwaHtmlOpeningPairedTag(html) << std::endl
          << BwaHtmlOpeningPairedTag(head) << std::endl
          << BwaHtmlElement(QString::fromLatin1("title"), title) << std::endl
          << BwaHtmlClosingPairedTag(head) << std::endl
          << BwaHtmlOpeningPairedTag(body) << std::endl
          << BwaHtmlElement(QString::fromLatin1("h1"), title) << std::endl
          << BwaHtmlClosingPairedTag(body) << std::endl
          << BwaHtmlClosingPairedTag(html);
}

void BwaFcgiRequest::sendStaticFile(const QString& filePath, const QString& contentType,
                                    const QList<BwaHttpCookie>& cookies)
{
    try {
        BwaHttpReplyHeader header(QString::fromLatin1("HTTP/1.1"), 200, QString::fromLatin1("OK"));
        header.addHeader(QString::fromLatin1("Content-Type"), contentType);
        header.cookies = cookies;
        header.addHeader(QString::fromLatin1("X-Sendfile"), filePath);
        m_out << header;
    } catch (const std::exception& exception) {
        const BwaCgiEnvironment& environment = m_cgiRequest->environment();
        err() << QString::fromLatin1("Error while sending static file \"%1\" for request to script "
                                     "\"%2\" with path info \"%3\": %4")
                     .arg(filePath, environment.scriptName(), environment.pathInfo(),
                          QString::fromLatin1(exception.what()));
        sendHttpError(InternalServerError);
    }
}

QString BwaFcgiRequest::fullPath() const
{
    const BwaCgiEnvironment& environment = m_cgiRequest->environment();
    return environment.scriptName() + environment.pathInfo();
}
