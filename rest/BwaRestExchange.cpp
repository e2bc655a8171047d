// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiRequest.h"
#include "rest/BwaRestExchange_p.h"
#include "rest/BwaRestGroup.h"
#include "rest/BwaRestOutcome_p.h"
#include "rest/BwaRestProblem.h"
#include "rest/BwaRestStatus_p.h"
#include "rest/BwaRestText_p.h"

#include <QEvent>

#include <algorithm>
#include <charconv>

namespace {

const int usualBlockSize = 256;           // bytes of a header block
const int mostCopied = 1024;              // bytes of a body
const quint64 mostBodyBytes = 0xffffffff; // the largest number that the core counts

bool isDigits(const QByteArray& text)
{
    return !text.isEmpty() && std::all_of(text.begin(), text.end(), [](char character) {
        return character >= '0' && character <= '9';
    });
}

[[noreturn]] void refuseSize(quint64 limit)
{
    const QString detail = QString::fromLatin1("A body may have %1 bytes here").arg(limit);
    throw BwaRestProblem(BwaRestProblem(413, detail).with(QString::fromLatin1("limit"), limit));
}

// Most methods are GET, for which a literal saves an allocation.
QByteArray methodOf(BwaFcgiRequest& request)
{
    const QString method = request.cgiRequest()->environment().requestMethod();
    return method == QLatin1String("GET") ? QByteArrayLiteral("GET") : method.toLatin1();
}

template <class Value>
void addLine(QByteArray* block, const char* name, const Value& value)
{
    *block += name;
    *block += ": ";
    *block += value;
    *block += '\n';
}

} // namespace

/**
 * Calls a function once, when the connection is ready. It overrides event(), because the notifier's
 * signal differs between versions of Qt.
 */
class BwaRestExchange::Notifier : public QSocketNotifier
{
public:
    using QSocketNotifier::QSocketNotifier;

    void expect(const std::function<void()>& function)
    {
        m_function = function;
        setEnabled(true);
    }

protected:
    bool event(QEvent* event) override
    {
        if (event->type() != QEvent::SockAct) {
            return QSocketNotifier::event(event);
        }
        setEnabled(false);
        const std::function<void()> function = m_function; // a copy: the call may set another one
        function();
        return true;
    }

private:
    std::function<void()> m_function;
};

BwaRestExchange::BwaRestExchange(BwaFcgiRequest* request, const BwaRestSettings& settings)
    : method(methodOf(*request))
    , m_request(request)
    , m_settings(settings)
{
}

// Destroys the notifier first, because it watches the connection of the request.
BwaRestExchange::~BwaRestExchange()
{
    m_notifier.reset();
    delete m_request;
}

void BwaRestExchange::find(const BwaRestRouter& router, const QString& mount)
{
    m_mount = mount;
    path =
        BwaRestText::fromUtf8(m_request->cgiRequest()->environment().pathInfo().mid(mount.size()));
    if (path.isEmpty()) {
        path = QLatin1Char('/');
    }
    resource = router.find(path, &spans);
    entry = resource ? resource->entry(method) : nullptr;
}

QByteArray BwaRestExchange::variable(const QByteArray& name) const
{
    return m_request->input()->getenv(QString::fromLatin1(name)).toLatin1();
}

QByteArray BwaRestExchange::header(const QByteArray& name) const
{
    const QByteArray variableName = name.toUpper().replace('-', '_');
    const bool isBare = variableName == "CONTENT_TYPE" || variableName == "CONTENT_LENGTH";
    return variable(isBare ? variableName : "HTTP_" + variableName);
}

quint64 BwaRestExchange::bodyLimit() const
{
    return std::min(static_cast<quint64>(entry->route->group()->bodyLimit()), mostBodyBytes);
}

// Whether a body may follow although there is no Content-Length: a chunked one, or one over HTTP/2
// or 3 (RFC 9113, 8.1.1).
bool BwaRestExchange::mayHaveBodyWithoutLength() const
{
    const QByteArray protocol = variable("SERVER_PROTOCOL");
    return !header("Transfer-Encoding").isEmpty() || protocol.startsWith("HTTP/2") ||
        protocol.startsWith("HTTP/3");
}

// Reads the variable itself, because BwaCgiEnvironment::contentLength() is 0 also for a text that
// is no number.
quint64 BwaRestExchange::checkBodySize(quint64 limit) const
{
    const QByteArray length = variable("CONTENT_LENGTH");
    if (length.isEmpty()) {
        if (mayHaveBodyWithoutLength()) {
            BwaRestOutcome::refuse(411, "The body needs a Content-Length");
        }
        return 0;
    }
    if (!isDigits(length)) {
        BwaRestOutcome::refuse(400, "The Content-Length is no number");
    }
    bool ok = false;
    const quint64 size = length.toULongLong(&ok);
    if (!ok || size > limit) {
        refuseSize(limit);
    }
    return size;
}

QByteArray BwaRestExchange::body()
{
    if (!m_body) {
        const auto size = static_cast<unsigned int>(checkBodySize(bodyLimit()));
        const QByteArray bytes = m_request->cgiRequest()->readFromBody(size);
        if (static_cast<unsigned int>(bytes.size()) != size) {
            BwaRestOutcome::refuse(400, "The body ends early");
        }
        m_body = bytes;
    }
    return *m_body;
}

const QList<QPair<QString, QString>>& BwaRestExchange::queryPairs()
{
    if (!m_queryPairs) {
        m_queryPairs =
            BwaRestText::urlEncodedPairs(m_request->cgiRequest()->environment().queryString());
    }
    return *m_queryPairs;
}

void BwaRestExchange::whenGone(const std::function<void()>& function)
{
    m_request->onGone(function);
}

bool BwaRestExchange::hasClientsCopy(const BwaRestReply& reply) const
{
    return reply.m_status == 200 && !reply.m_etag.isNull() &&
        (method == "GET" || method == "HEAD") &&
        BwaRestText::listHasEntityTag(header("If-None-Match"), reply.m_etag);
}

void BwaRestExchange::logComplaints(const BwaRestReply& reply)
{
    for (const QByteArray& complaint : reply.m_complaints) {
        log(complaint);
    }
}

void BwaRestExchange::write(const BwaRestReply& reply)
{
    logComplaints(reply);
    if (m_isStream) {
        return;
    }
    const bool isKnown = hasClientsCopy(reply);
    const bool hasBody = !isKnown && method != "HEAD";
    QByteArray block = headerBlock(reply, isKnown);
    std::ostream& out = m_request->out();
    if (hasBody && reply.m_body.size() <= mostCopied) {
        block += reply.m_body; // one write costs less than two
        out.write(block.constData(), block.size());
        return;
    }
    out.write(block.constData(), block.size());
    if (hasBody) {
        out.write(reply.m_body.constData(), reply.m_body.size());
    }
}

void BwaRestExchange::beginStream(const BwaRestReply& reply)
{
    logComplaints(reply);
    m_isStream = true;
    writePiece(headerBlock(reply, false));
}

void BwaRestExchange::writePiece(const QByteArray& bytes)
{
    m_request->out().write(bytes.constData(), bytes.size()).flush();
}

void BwaRestExchange::whenReady(QSocketNotifier::Type type, const std::function<void()>& function)
{
    if (!m_notifier || m_notifier->type() != type) {
        m_notifier = std::make_unique<Notifier>(m_request->connection(), type);
    }
    m_notifier->expect(function);
}

QByteArray BwaRestExchange::headerBlock(const BwaRestReply& reply, bool isKnown) const
{
    QByteArray block;
    block.reserve(usualBlockSize);
    const int status = isKnown ? 304 : reply.m_status;
    if (status != 200 || !reply.m_headerNames.isEmpty() || reply.m_contentType.isNull()) {
        addLine(&block, "Status", BwaRestStatus::line(status));
    } // otherwise a Content-Type without a Location means 200 (RFC 3875, 6.3.3)
    block += reply.m_lines;
    if (!reply.m_etag.isNull()) {
        addLine(&block, "ETag", reply.m_etag);
    }
    if (!reply.m_createdPath.isNull()) {
        addLine(&block, "Location", location(reply));
    }
    if (!m_settings.origins.isEmpty()) {
        block += crossOriginLines(reply);
    }
    if (!isKnown && !reply.m_contentType.isNull()) {
        addContentLines(&block, reply);
    }
    return block += '\n';
}

QByteArray BwaRestExchange::crossOriginLines(const BwaRestReply& reply) const
{
    QList<QByteArray> names = reply.m_headerNames;
    if (!reply.m_etag.isNull()) {
        names.append("ETag");
    }
    if (!reply.m_createdPath.isNull()) {
        names.append("Location");
    }
    const QByteArray origin = header("Origin");
    QByteArray lines = m_settings.origins.lines(origin, names);
    if (method == "OPTIONS" && resource) {
        lines += m_settings.origins.preflightLines(origin, resource->allow(),
                                                   header("Access-Control-Request-Headers"));
    }
    return lines;
}

void BwaRestExchange::addContentLines(QByteArray* block, const BwaRestReply& reply) const
{
    addLine(block, "Content-Type", reply.m_contentType);
    if (m_isStream) {
        return; // its length is not known
    }
    if (reply.m_filePath.isNull()) {
        char digits[20] = {}; // QByteArray::number() takes longer than finding the route
        std::to_chars(digits, digits + sizeof digits - 1, reply.m_body.size());
        addLine(block, "Content-Length", digits);
    } else {
        addLine(block, m_settings.fileHeader, BwaRestText::encodedPath(reply.m_filePath));
    }
}

QByteArray BwaRestExchange::location(const BwaRestReply& reply) const
{
    const QString above = m_request->cgiRequest()->environment().scriptName() + m_mount;
    return BwaRestText::encodedPath(QString::fromUtf8(above.toLatin1()) + reply.m_createdPath);
}

// A path may contain anything. Replaces control characters, so that a client cannot write a line of
// its own into the log.
void BwaRestExchange::log(const QByteArray& message)
{
    QByteArray line = "Error in REST call " + method + " \"" + m_request->fullPath().toLatin1() +
        "\": " + message;
    std::replace_if(
        line.begin(), line.end(),
        [](char character) { return static_cast<quint8>(character) < ' '; }, '?');
    m_request->err() << line.constData();
}
