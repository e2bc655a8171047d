// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// The core's multipart reader reads from the connection and waits until it has what it needs. Here
// pieces of any size arrive while other requests are served. Bytes that may belong to a delimiter
// stay in the buffer until the next piece shows what they are.

#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiRequest.h"
#include "rest/BwaRestCall.h"
#include "rest/BwaRestExchange_p.h"
#include "rest/BwaRestHeldCalls_p.h"
#include "rest/BwaRestOutcome_p.h"
#include "rest/BwaRestProblem.h"
#include "rest/BwaRestReception_p.h"
#include "rest/BwaRestText_p.h"

#include <algorithm>
#include <stdexcept>

namespace {

const quint64 pieceSize = 65536;  // bytes
const int mostHeaderBytes = 8192; // of a part
const int mostFieldBytes = 65536;
const int mostDelimiterBytes = 76; // a boundary has 70 at most (RFC 2046, section 5.1.1)

bool isForm(const QByteArray& contentType)
{
    const auto parsed = BwaCgiEnvironment::parseContentType(QString::fromLatin1(contentType));
    return parsed.first.toLower() == QLatin1String("multipart/form-data");
}

// The value of the header line @a name, in lower case; null when there is none.
QString headerOf(const QString& header, QLatin1String name)
{
    for (const QString& line : header.split(QString::fromLatin1("\r\n"))) {
        const BwaSize colon = line.indexOf(QLatin1Char(':'));
        if (line.left(colon).toLower() == name) {
            return line.mid(colon + 1).trimmed();
        }
    }
    return QString();
}

// Browsers write exactly these three characters of a name as escapes (HTML standard).
QString withoutEscapes(QString text)
{
    return text.replace(QLatin1String("%22"), QLatin1String("\""))
        .replace(QLatin1String("%0D"), QLatin1String("\r"))
        .replace(QLatin1String("%0A"), QLatin1String("\n"));
}

BwaRestPart partOf(const QString& header)
{
    const QString disposition = headerOf(header, QLatin1String("content-disposition"));
    const auto parsed = BwaCgiRequest::parseGenericHeader(disposition).first();
    const QString name = QString::fromLatin1("name");
    if (parsed.first != QLatin1String("form-data") || !parsed.second.contains(name)) {
        BwaRestOutcome::refuse(400, "A part of the form has no name");
    }
    BwaRestPart part;
    part.name = withoutEscapes(parsed.second.value(name));
    const QString fileName = parsed.second.value(QString::fromLatin1("filename"));
    part.fileName = fileName.isEmpty() ? QString() : withoutEscapes(fileName);
    part.contentType = headerOf(header, QLatin1String("content-type"));
    return part;
}

} // namespace

BwaRestReception::BwaRestReception(const BwaRestUpload& upload, BwaRestExchange& exchange,
                                   const std::shared_ptr<BwaRestLaterState>& state)
    : m_upload(upload)
    , m_exchange(exchange)
    , m_state(state)
    , m_size(exchange.checkBodySize(static_cast<quint64>(upload.m_mostBytes)))
    , m_isForm(isForm(exchange.header("Content-Type")))
    , m_form(exchange.request().cgiRequest())
    , m_buffer("\r\n") // stands for the line break in front of the first delimiter
{
    const BwaSize delimiterSize = m_form.delimiter().size();
    if (m_isForm && (delimiterSize < 7 || delimiterSize > mostDelimiterBytes)) {
        BwaRestOutcome::refuse(400, "The form has no valid boundary");
    }
    if (!m_isForm) {
        BwaRestPart whole;
        whole.contentType = QString::fromLatin1(exchange.header("Content-Type"));
        m_buffer.clear();
        beginPart(whole, true);
    }
}

void BwaRestReception::begin(const std::shared_ptr<BwaRestReception>& self)
{
    self->m_state->onGone([self] { self->m_files.clear(); });
    nextTurn(self);
}

void BwaRestReception::nextTurn(const std::shared_ptr<BwaRestReception>& self)
{
    self->m_exchange.settings().calls->inNextTurn([self] { self->step(self); });
}

void BwaRestReception::step(const std::shared_ptr<BwaRestReception>& self)
{
    if (!m_state->isOpen()) {
        return; // the exchange may have been destroyed
    }
    const auto most = static_cast<unsigned int>(std::min(m_size - m_received, pieceSize));
    const QByteArray piece = m_exchange.request().readAvailable(most);
    bool isTaken = false;
    const BwaRestReply refusal = BwaRestOutcome::of([&] {
        take(piece);
        isTaken = true;
        return BwaRestReply::empty();
    });
    if (!isTaken) {
        m_files.clear();
        m_state->reply(refusal);
    } else if (m_received == m_size) {
        finish(self);
    } else if (piece.isEmpty()) {
        m_exchange.whenReady(QSocketNotifier::Read, [self] { self->step(self); });
    } else {
        nextTurn(self);
    }
}

// Answers in another turn of the event loop, because the application's function may destroy the
// service and, with it, the exchange that step() uses.
void BwaRestReception::finish(const std::shared_ptr<BwaRestReception>& self)
{
    m_state->replyWith(m_state, [self] {
        BwaRestReply reply = BwaRestOutcome::of([&] { return self->answer(); });
        self->m_files.clear();
        return reply;
    });
}

BwaRestReply BwaRestReception::answer()
{
    if (!m_state->isOpen() || !m_upload.m_done) {
        return BwaRestReply::empty();
    }
    return m_upload.m_done(BwaRestCall(m_exchange), m_parts);
}

void BwaRestReception::take(const QByteArray& piece)
{
    m_received += static_cast<quint64>(piece.size());
    m_buffer += piece;
    const bool isWhole = m_received == m_size;
    if (!isWhole && piece.isEmpty() && m_exchange.request().bodyIsOver()) {
        BwaRestOutcome::refuse(400, "The body ends early");
    }
    if (!m_isForm) {
        add(m_buffer);
        m_buffer.clear();
        if (isWhole) {
            endPart();
        }
        return;
    }
    if (isWhole) {
        m_buffer += "\r\n"; // some clients leave it out after the last delimiter
    }
    while (m_progress == Header ? takeHeader() : takeContent()) { }
    if (isWhole && m_progress != Over) {
        BwaRestOutcome::refuse(400, "The form ends early");
    }
}

// Takes the header of a part from the buffer; false when it has not arrived completely.
bool BwaRestReception::takeHeader()
{
    const BwaSize size = m_buffer.indexOf("\r\n\r\n");
    if (size > mostHeaderBytes || (size < 0 && m_buffer.size() > mostHeaderBytes)) {
        BwaRestOutcome::refuse(400, "The header of a part is too long");
    }
    if (size < 0) {
        return false;
    }
    const BwaRestPart part = partOf(BwaRestText::fromUtf8(m_buffer.left(size)));
    m_buffer.remove(0, size + 4);
    beginPart(part, !part.fileName.isNull());
    m_progress = Content;
    return true;
}

// Takes content up to the next delimiter from the buffer; false when more input is needed.
bool BwaRestReception::takeContent()
{
    if (m_progress == Over) {
        m_buffer.clear();
        return false;
    }
    const BwaSize delimiter = m_form.indexOfFirstBoundaryDelimiter(m_buffer);
    const BwaSize unsure = m_form.closeDelimiter().size() - 1; // may be the start of a delimiter
    const BwaSize size = delimiter < 0 ? std::max<BwaSize>(m_buffer.size() - unsure, 0) : delimiter;
    if (m_progress == Content) {
        add(m_buffer.left(size));
    }
    m_buffer.remove(0, size);
    if (delimiter < 0) {
        return false;
    }
    if (m_progress == Content) {
        endPart();
    }
    m_progress = m_buffer.startsWith(m_form.delimiter()) ? Header : Over;
    m_buffer.remove(0, m_form.delimiter().size()); // the rest of a close delimiter is ignored
    return true;
}

void BwaRestReception::beginPart(const BwaRestPart& part, bool isFile)
{
    if (m_parts.size() >= m_upload.m_mostParts) {
        const QString detail = QString::fromLatin1("A form may have %1 parts here");
        throw BwaRestProblem(413, detail.arg(m_upload.m_mostParts));
    }
    m_isFile = isFile;
    m_parts.append(part);
    if (!isFile) {
        m_parts.last().value = "";
    } else if (!m_upload.m_folder.isNull()) {
        const QString pattern = m_upload.m_folder + QString::fromLatin1("/upload-XXXXXX");
        m_files.push_back(std::make_unique<QTemporaryFile>(pattern));
        if (!m_files.back()->open()) {
            throw std::runtime_error("No file can be made in " + m_upload.m_folder.toStdString());
        }
        m_parts.last().path = m_files.back()->fileName();
    }
}

void BwaRestReception::add(const QByteArray& content)
{
    if (content.isEmpty()) {
        return;
    }
    BwaRestPart& part = m_parts.last();
    part.size += content.size();
    if (!m_isFile) {
        part.value += content;
        if (part.size > mostFieldBytes) {
            throw BwaRestProblem(
                413, QString::fromLatin1("A field may have %1 bytes").arg(mostFieldBytes));
        }
        return;
    }
    if (m_upload.m_data) {
        m_upload.m_data(part, content);
        if (!m_state->isOpen()) {
            BwaRestOutcome::refuse(503,
                                   "The service stops"); // not sent: the call has ended
        }
    }
    if (!part.path.isNull() && m_files.back()->write(content) != content.size()) {
        throw std::runtime_error("An upload cannot be written to " + part.path.toStdString());
    }
}

void BwaRestReception::endPart()
{
    const BwaRestPart& part = m_parts.last();
    if (m_isFile && !part.path.isNull() && !m_files.back()->flush()) {
        throw std::runtime_error("An upload cannot be written to " + part.path.toStdString());
    }
}
