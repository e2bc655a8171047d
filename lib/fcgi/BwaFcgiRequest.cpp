// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "fcgi/BwaFcgiRequest.h"

#include "BwaStringStreaming.h"
#include "cgi/BwaCgiRequest.h"
#include "cgi/BwaGrowingRead_p.h"
#include "fcgi/BwaFcgiFinish_p.h"
#include "html/BwaHtmlClosingPairedTag.h"
#include "html/BwaHtmlDoctype.h"
#include "html/BwaHtmlElement.h"
#include "html/BwaHtmlOpeningPairedTag.h"
#include "http/BwaHttpReplyHeader.h"
#include "http/BwaHttpStatusHeader.h"

#include <cstring>
#include <exception>

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
    , m_input(new BwaFcgiInput(request))
    , m_cgiRequest(new BwaCgiRequest(m_input.get()))
    , m_outBuffer(request->out)
    , m_errBuffer(request->err)
    , m_out(&m_outBuffer)
    , m_err(&m_errBuffer)
    , m_watch(nullptr)
{
}

BwaFcgiRequest::~BwaFcgiRequest()
{
    finish();
    if (m_watch) {
        m_watch->m_request = nullptr;
    }
}

BwaFcgiRequest::Watch::Watch(BwaFcgiRequest* request)
    : m_request(request)
{
    request->m_watch = this;
}

BwaFcgiRequest::Watch::~Watch()
{
    if (m_request) {
        m_request->m_watch = nullptr;
    }
}

// Completes the exchange and frees all that belongs to it.
void BwaFcgiRequest::finish()
{
    if (!m_request) {
        return;
    }
    m_cgiRequest.reset();
    m_input.reset();
    finishAndDelete(m_request);
    m_request = nullptr;
}

// Finishes while somebody may still hold the request: the streams take nothing any more.
void BwaFcgiRequest::abandon()
{
    finish();
    for (std::ostream* stream : {&m_out, &m_err}) {
        stream->exceptions(std::ios::goodbit);
        stream->rdbuf(nullptr);
    }
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
    const QString code = QString::number(statusCode);
    try {
        const QString title = code + QLatin1String(" - ") + reasonPhrase;
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
    } catch (const std::exception& exception) {
        const BwaCgiEnvironment& environment = m_cgiRequest->environment();
        m_err << QString::fromLatin1("Error while sending HTTP error %1 (%2) for request to script "
                                     "\"%3\" with path info \"%4\": %5")
                     .arg(code, reasonPhrase, environment.scriptName(), environment.pathInfo(),
                          QString::fromLatin1(exception.what()));
    }
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
        m_err << QString::fromLatin1("Error while sending static file \"%1\" for request to script "
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

// Few of the variables are ever asked for: the bytes are copied in one go, and turned into text
// when they are.
BwaFcgiRequest::BwaFcgiInput::BwaFcgiInput(FCGX_Request* request)
    : m_request(request)
{
    int textSize = 0;
    int count = 0;
    for (char** entry = request->envp; *entry; ++entry) {
        textSize += static_cast<int>(std::strlen(*entry));
        ++count;
    }
    m_text.reserve(textSize);
    m_variables.reserve(count);
    for (char** entry = request->envp; *entry; ++entry) {
        const int size = static_cast<int>(std::strlen(*entry));
        const char* const name = m_text.constData() + m_text.size();
        m_text.append(*entry, size);
        const void* const equals = std::memchr(name, '=', static_cast<std::size_t>(size));
        if (equals) {
            const int nameSize = static_cast<int>(static_cast<const char*>(equals) - name);
            m_variables.append({name, nameSize, name + nameSize + 1, size - nameSize - 1});
        }
    }
}

BwaFcgiRequest::BwaFcgiInput::~BwaFcgiInput() = default;

QByteArray BwaFcgiRequest::BwaFcgiInput::read(unsigned int size)
{
    return growingRead(size, [this](char* buffer, int length) {
        return FCGX_GetStr(buffer, length, m_request->in);
    });
}

QString BwaFcgiRequest::BwaFcgiInput::getenv(const QString& name)
{
    for (int i = m_variables.size() - 1; i >= 0; --i) { // from the last: it counts
        const Variable& variable = m_variables.at(i);
        if (variable.nameSize == name.size() &&
            name == QLatin1String(variable.name, variable.nameSize)) {
            return QString::fromLatin1(variable.value, variable.valueSize);
        }
    }
    return QString();
}
