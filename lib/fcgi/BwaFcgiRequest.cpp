// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "fcgi/BwaFcgiRequest.h"

#include "BwaRecentTexts_p.h"
#include "BwaStringStreaming.h"
#include "cgi/BwaCgiRequest.h"
#include "cgi/BwaGrowingRead_p.h"
#include "fcgi/BwaFcgiFinish_p.h"
#include "fcgi/BwaFcgiOpenRequests_p.h"
#include "html/BwaHtmlClosingPairedTag.h"
#include "html/BwaHtmlDoctype.h"
#include "html/BwaHtmlElement.h"
#include "html/BwaHtmlOpeningPairedTag.h"
#include "http/BwaHttpReplyHeader.h"
#include "http/BwaHttpStatusHeader.h"

#include <algorithm>
#include <cstring>
#include <limits>

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

// The names of CGI differ in their size, their middle and their end.
template <typename Character>
unsigned int hashOf(const Character* name, BwaSize size)
{
    const auto middle = static_cast<unsigned char>(size > 0 ? name[size / 2] : 0);
    const auto last = static_cast<unsigned char>(size > 0 ? name[size - 1] : 0);
    return static_cast<unsigned int>(size) + 2U * middle + 12U * last;
}

template <std::size_t Size>
bool startsWith(BwaLatin1 name, const char (&prefix)[Size])
{
    const std::size_t length = Size - 1;
    return static_cast<std::size_t>(name.size()) >= length &&
        std::memcmp(name.data(), prefix, length) == 0;
}

// What a client chooses may be secret. It is not kept, and not compared with what others sent.
bool isTextOfClient(BwaLatin1 name)
{
    return startsWith(name, "HTTP_") || startsWith(name, "QUERY_") || startsWith(name, "PATH_");
}

// The values of the web server: most are the same in each request.
QString textOf(BwaLatin1 value)
{
    thread_local BwaRecentTexts values;
    return values.textOf(value);
}

const unsigned int smallRead = 4096; // bytes

// What small reads go into, and share with whoever they are for; the next one may have it when it
// has been let go. For each new array above 1 KiB malloc would join all small pieces that are free,
// and have to split them again for the strings of the request.
QByteArray& keptBuffer()
{
    thread_local QByteArray buffer = [] {
        QByteArray bytes;
        bytes.reserve(smallRead);
        return bytes;
    }();
    return buffer;
}

} // namespace

BwaFcgiRequest::BwaFcgiRequest(FCGX_Request* request)
    : m_request(request)
    , m_input(new BwaFcgiInput(request))
    , m_cgiRequest(new BwaCgiRequest(m_input.get()))
    , m_outBuffer(request->out)
    , m_out(&m_outBuffer)
    , m_watch(nullptr)
{
}

BwaFcgiRequest::~BwaFcgiRequest()
{
    finish();
    for (Watch* watch = m_watch; watch; watch = watch->m_outer) {
        watch->m_request = nullptr;
    }
}

BwaFcgiRequest::ErrorStream::ErrorStream(FCGX_Stream* errors)
    : buffer(errors)
    , stream(&buffer)
{
}

BwaFcgiRequest::Watch::Watch(BwaFcgiRequest* request)
    : m_request(request)
    , m_outer(request->m_watch)
{
    request->m_watch = this;
}

BwaFcgiRequest::Watch::~Watch()
{
    if (m_request) {
        m_request->m_watch = m_outer;
    }
}

void BwaFcgiRequest::logException(const std::exception& exception)
{
    try {
        const QString what = QString::fromLatin1(exception.what());
        qDebug("An exception occurs while processing a FastCGI request: %s",
               what.toUtf8().constData());
    } catch (const std::exception&) {
        // Without memory there is no line, but serving goes on.
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
    if (m_openRequests) {
        m_openRequests->finished();
    }
}

std::ostream& BwaFcgiRequest::err()
{
    if (!m_err) {
        m_err.emplace(m_request->err);
    }
    return m_err->stream;
}

// Finishes while somebody may still hold the request: the streams take nothing any more.
void BwaFcgiRequest::abandon()
{
    std::ostream* const streams[] = {&out(), &err()};
    finish();
    for (std::ostream* stream : streams) {
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
    try {
        const ReplyBuffer::FlushHolder holder(m_outBuffer);
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

BwaFcgiRequest::ReplyBuffer::ReplyBuffer(FCGX_Stream* stream)
    : fcgi_streambuf(stream)
    , m_progress(Progress::InHeader)
    , m_isLineEmpty(true)
    , m_isHolding(false)
{
}

BwaFcgiRequest::ReplyBuffer::~ReplyBuffer() = default;

// A single character, such as that of std::endl, which flushes next.
int BwaFcgiRequest::ReplyBuffer::overflow(int character)
{
    if (character == traits_type::eof()) {
        return fcgi_streambuf::overflow(character);
    }
    const char text = traits_type::to_char_type(character);
    const Progress before = m_progress;
    follow(&text, 1);
    if (before == Progress::InHeader && m_progress == Progress::InBody) {
        m_progress = Progress::AtEndOfHeader;
    }
    return fcgi_streambuf::overflow(character);
}

int BwaFcgiRequest::ReplyBuffer::sync()
{
    if (m_isHolding || m_progress == Progress::InHeader) {
        return 0;
    }
    if (m_progress == Progress::AtEndOfHeader) {
        m_progress = Progress::InBody;
        return 0;
    }
    return fcgi_streambuf::sync();
}

std::streamsize BwaFcgiRequest::ReplyBuffer::xsputn(const char* text, std::streamsize size)
{
    follow(text, size);
    const std::streamsize most = std::numeric_limits<int>::max(); // libfcgi counts with int
    std::streamsize written = 0;
    std::streamsize last = 1;
    while (written < size && last > 0) {
        last = fcgi_streambuf::xsputn(text + written, std::min(size - written, most));
        written += std::max<std::streamsize>(last, 0);
    }
    return written;
}

// The body begins behind the first empty line; a carriage return does not make a line less empty.
void BwaFcgiRequest::ReplyBuffer::follow(const char* text, std::streamsize size)
{
    if (m_progress == Progress::AtEndOfHeader && size > 0) {
        m_progress = Progress::InBody;
    }
    for (const char* const end = text + size; m_progress == Progress::InHeader && text < end;
         ++text) {
        if (*text == '\n') {
            m_progress = m_isLineEmpty ? Progress::InBody : Progress::InHeader;
            m_isLineEmpty = true;
        } else if (*text != '\r') {
            m_isLineEmpty = false;
        }
    }
}

// Few of the variables are ever asked for: the bytes are copied in one go, and turned into text
// when they are.
BwaFcgiRequest::BwaFcgiInput::BwaFcgiInput(FCGX_Request* request)
    : m_request(request)
    , m_buckets()
{
    std::size_t textSize = 0;
    int count = 0;
    for (char** entry = request->envp; *entry; ++entry) {
        textSize += std::strlen(*entry) + 1;
        ++count;
    }
    m_text = QByteArray(static_cast<BwaSize>(textSize), Qt::Uninitialized);
    m_variables.reserve(count);
    std::fill_n(m_buckets, bucketCount, -1);
    char* name = m_text.data();
    for (char** entry = request->envp; *entry; ++entry) {
        char* const end = ::stpcpy(name, *entry);
        const void* const equals = std::memchr(name, '=', static_cast<std::size_t>(end - name));
        if (equals) {
            const int nameSize = static_cast<int>(static_cast<const char*>(equals) - name);
            const int valueSize = static_cast<int>(end - name) - nameSize - 1;
            int& bucket = m_buckets[hashOf(name, nameSize) % bucketCount];
            m_variables.append(
                {static_cast<int>(name - m_text.constData()), nameSize, valueSize, bucket});
            bucket = static_cast<int>(m_variables.size()) - 1;
        }
        name = end + 1;
    }
}

BwaFcgiRequest::BwaFcgiInput::~BwaFcgiInput() = default;

QByteArray BwaFcgiRequest::BwaFcgiInput::read(unsigned int size)
{
    QByteArray& kept = keptBuffer();
    if (size <= smallRead && kept.isDetached()) {
        kept.resize(static_cast<int>(size));
        kept.resize(FCGX_GetStr(kept.data(), static_cast<int>(size), m_request->in));
        return kept;
    }
    return growingRead(size, [this](char* buffer, int length) {
        return FCGX_GetStr(buffer, length, m_request->in);
    });
}

QString BwaFcgiRequest::BwaFcgiInput::getenv(const QString& name)
{
    int index = m_buckets[hashOf(name.utf16(), name.size()) % bucketCount];
    while (index >= 0) { // from the last to the first: the last counts
        const Variable& variable = m_variables.at(index);
        const BwaLatin1 variableName(m_text.constData() + variable.position, variable.nameSize);
        if (name == variableName) {
            const BwaLatin1 value(variableName.data() + variable.nameSize + 1, variable.valueSize);
            return isTextOfClient(variableName) ? QString(value) : textOf(value);
        }
        index = variable.next;
    }
    return QString();
}
