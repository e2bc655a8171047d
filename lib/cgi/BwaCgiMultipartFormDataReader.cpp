// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// How the reader stays linear: consumed bytes stay at the front of the lookahead until they are
// half of it, so that consuming moves no bytes; and each pattern has a search that remembers where
// it was found or up to where it is known to be absent. As the reader only moves forward, a match
// ahead stays the first one, and a failed search resumes where more bytes have been appended.
//
// The boundary is the client's choice, and may be long and repeat its own beginning. So its search
// looks at each byte once (Knuth, Morris and Pratt): where a match breaks off, the longest border
// of the bytes matched, which ends them and begins the pattern, is what still matches.

#include "cgi/BwaCgiMultipartFormDataReader.h"

#include "cgi/BwaCgiRequest.h"
#include "cgi/BwaHeaderValueParser_p.h"

#include <QString>

#include <algorithm>
#include <cstring>
#include <limits>

namespace {

const unsigned int chunkSize = 4096; // bytes

const QByteArray& emptyLine()
{
    static const QByteArray text("\r\n\r\n");
    return text;
}

const QByteArray& dispositionName()
{
    static const QByteArray text("Content-Disposition: ");
    return text;
}

BwaSize indexIn(const QByteArray& data, const QByteArray& pattern, BwaSize from)
{
    const char* const begin = data.constData();
    const void* const match =
        ::memmem(begin + from, static_cast<std::size_t>(data.size() - from), pattern.constData(),
                 static_cast<std::size_t>(pattern.size()));
    return match ? static_cast<BwaSize>(static_cast<const char*>(match) - begin) : -1;
}

// For each number of bytes at the front of @a pattern, the length of their longest border.
QVector<int> bordersOf(const QByteArray& pattern)
{
    QVector<int> borders = {0, 0};
    for (int size = 1; size < pattern.size(); ++size) {
        int border = borders.at(size);
        while (border > 0 && pattern.at(border) != pattern.at(size)) {
            border = borders.at(border);
        }
        borders.append(pattern.at(border) == pattern.at(size) ? border + 1 : 0);
    }
    return borders;
}

// The smaller of two positions, of which -1 is none.
BwaSize firstOf(BwaSize first, BwaSize second)
{
    return first < 0 || second < 0 ? std::max(first, second) : std::min(first, second);
}

// The value of a header line that starts at @a begin, up to the line's end.
QByteArray lineFrom(const QByteArray& header, BwaSize begin)
{
    const BwaSize end = header.indexOf("\r\n", begin);
    return header.mid(begin, end < 0 ? -1 : end - begin);
}

bool isOfFormData(const QString& parameter)
{
    return parameter == QLatin1String("name") || parameter == QLatin1String("filename");
}

QByteArray boundaryOf(const BwaCgiRequest* request)
{
    if (!request) {
        return QByteArray();
    }
    const auto contentType =
        BwaCgiEnvironment::parseContentType(request->environment().contentType());
    return contentType.second.value(QString::fromLatin1("boundary")).toLatin1();
}

} // namespace

BwaCgiMultipartFormDataReader::BwaCgiMultipartFormDataReader(BwaCgiRequest* request)
    : m_request(request)
    , m_delimiterStart("\r\n--" + boundaryOf(request))
    , m_delimiter(m_delimiterStart + "\r\n")
    , m_closeDelimiter(m_delimiterStart + "--\r\n")
    , m_borders(bordersOf(m_delimiterStart))
    , m_lookahead("\r\n") // stands for the line break in front of the first delimiter
    , m_failed(false)
    , m_consumed(0)
    , m_removed(0)
    , m_scanned(0)
    , m_matched(0)
    , m_refusedDisposition(-1)
{
}

BwaCgiMultipartFormDataReader::~BwaCgiMultipartFormDataReader() = default;

bool BwaCgiMultipartFormDataReader::nextPart(QString& name, QString& filename, QString& contentType)
{
    if (!isUsable()) {
        return false;
    }
    while (true) {
        skipEndOfPart();
        if (m_failed || lookaheadHas("--\r\n", m_delimiterStart.size())) {
            return false;
        }
        consume(m_delimiter.size());
        if (!completePartHeader()) {
            m_failed = true;
            return false;
        }
        if (takePartHeader(name, filename, contentType)) {
            return true;
        }
    }
}

QByteArray BwaCgiMultipartFormDataReader::readFromPart(unsigned int size)
{
    const auto most = static_cast<unsigned int>(std::numeric_limits<int>::max());
    QByteArray content;
    appendFromPart(content, static_cast<int>(std::min(size, most)));
    return content;
}

QByteArray BwaCgiMultipartFormDataReader::readAllFromPart()
{
    QByteArray content;
    while (isUsable() && !isAtEndOfPart()) {
        appendFromPart(content, chunkSize);
    }
    return content;
}

bool BwaCgiMultipartFormDataReader::isAtEndOfPart()
{
    if (!isUsable()) {
        return false;
    }
    const BwaSize missing = m_closeDelimiter.size() - lookaheadSize();
    if (missing > 0) {
        refill(static_cast<unsigned int>(missing));
        m_failed = lookaheadSize() < m_delimiter.size();
    }
    return indexOfDelimiter() == 0;
}

void BwaCgiMultipartFormDataReader::skipEndOfPart()
{
    do {
        const BwaSize delimiter = indexOfDelimiter();
        if (delimiter >= 0) {
            consume(delimiter);
            return;
        }
        // The tail may be the start of a delimiter that the next refill completes.
        consume(std::max<BwaSize>(0, lookaheadSize() - (m_closeDelimiter.size() - 1)));
    } while (refill(chunkSize));
    m_failed = true;
}

BwaSize BwaCgiMultipartFormDataReader::indexOfFirstBoundaryDelimiter(const QByteArray& data) const
{
    return firstOf(indexIn(data, m_delimiter, 0), indexIn(data, m_closeDelimiter, 0));
}

bool BwaCgiMultipartFormDataReader::processPartHeader(const QByteArray& header, QString& name,
                                                      QString& filename, QString& contentType) const
{
    const BwaSize disposition = header.indexOf(dispositionName());
    if (disposition < 0) {
        return false;
    }
    const QByteArray value = lineFrom(header, disposition + dispositionName().size());
    const QString text = QString::fromUtf8(value.constData(), value.size());
    const auto element = BwaHeaderValueParser(text, isOfFormData).takeElement();
    const auto nameParameter = element.second.constFind(QString::fromLatin1("name"));
    if (element.first != QLatin1String("form-data") || nameParameter == element.second.constEnd()) {
        return false;
    }
    name = nameParameter.value();
    // Settled: only the file name is URL-decoded; that also makes an empty one null.
    filename = BwaCgiRequest::urlDecode(element.second.value(QString::fromLatin1("filename")));

    const QByteArray typeName("Content-Type: ");
    const BwaSize type = header.indexOf(typeName);
    contentType =
        QString::fromLatin1(type < 0 ? "" : lineFrom(header, type + typeName.size()).constData());
    return true;
}

bool BwaCgiMultipartFormDataReader::lookaheadHas(const char* text, BwaSize position) const
{
    const std::size_t size = std::strlen(text);
    return static_cast<std::size_t>(lookaheadSize() - position) >= size &&
        std::memcmp(m_lookahead.constData() + m_consumed + position, text, size) == 0;
}

// The position in the lookahead of the first match, or -1.
BwaSize BwaCgiMultipartFormDataReader::indexOf(const QByteArray& pattern, Search& search) const
{
    const qint64 front = m_removed + m_consumed;
    if (!search.found || search.position < front) {
        const qint64 from = std::max(search.position, front);
        const BwaSize match = indexIn(m_lookahead, pattern, static_cast<BwaSize>(from - m_removed));
        const qint64 firstUnknown = m_removed + m_lookahead.size() - (pattern.size() - 1);
        search.found = match >= 0;
        search.position = search.found ? m_removed + match : std::max(from, firstUnknown);
    }
    return search.found ? static_cast<BwaSize>(search.position - front) : -1;
}

// Scans on to the end of the next match of what both delimiters begin with; false without one.
bool BwaCgiMultipartFormDataReader::findDelimiterStart()
{
    const char* read = m_lookahead.constData() + (m_scanned - m_removed);
    const char* const end = m_lookahead.constData() + m_lookahead.size();
    const char* const pattern = m_delimiterStart.constData();
    while (m_matched < m_delimiterStart.size() && read != end) {
        if (m_matched == 0) { // mostly, and the C library finds the first byte fastest
            const void* const found =
                std::memchr(read, *pattern, static_cast<std::size_t>(end - read));
            read = found ? static_cast<const char*>(found) + 1 : end;
            m_matched = found ? 1 : 0;
        } else if (*read == pattern[m_matched]) {
            ++m_matched;
            ++read;
        } else {
            m_matched = m_borders.at(m_matched);
        }
    }
    m_scanned = m_removed + (read - m_lookahead.constData());
    return m_matched == m_delimiterStart.size();
}

// What begins as both delimiters do may be neither, which is known only when as many bytes have
// come as the longer has.
BwaSize BwaCgiMultipartFormDataReader::indexOfDelimiter()
{
    const qint64 front = m_removed + m_consumed;
    if (m_scanned - m_matched < front) { // what matches so far has been consumed
        m_scanned = front;
        m_matched = 0;
    }
    while (findDelimiterStart()) {
        const auto end = static_cast<BwaSize>(m_scanned - front);
        const BwaSize start = end - m_delimiterStart.size();
        if (lookaheadHas("\r\n", end) || lookaheadHas("--\r\n", end)) {
            return start;
        }
        if (lookaheadSize() - start < m_closeDelimiter.size()) {
            return -1;
        }
        m_matched = m_borders.at(m_matched);
    }
    return -1;
}

void BwaCgiMultipartFormDataReader::consume(BwaSize size)
{
    m_consumed += size;
}

// Appends up to @a size bytes of the body to the lookahead; false when none are left.
bool BwaCgiMultipartFormDataReader::refill(unsigned int size)
{
    const QByteArray bytes = m_request ? m_request->readFromBody(size) : QByteArray();
    if (m_consumed > m_lookahead.size() / 2) {
        m_lookahead.remove(0, m_consumed);
        m_removed += m_consumed;
        m_consumed = 0;
    }
    m_lookahead.append(bytes);
    return !bytes.isEmpty();
}

// Appends the next @a size bytes of the part to @a content; fewer at the part's end or on failure.
void BwaCgiMultipartFormDataReader::appendFromPart(QByteArray& content, BwaSize size)
{
    BwaSize missing = size;
    if (!isUsable() || isAtEndOfPart()) {
        return;
    }
    while (true) {
        const BwaSize delimiter = indexOfDelimiter();
        // Without a delimiter, its start may be among the last bytes.
        const BwaSize safe = delimiter >= 0 ? delimiter : lookaheadSize() - m_closeDelimiter.size();
        const BwaSize taken = std::min(std::max<BwaSize>(safe, 0), missing);
        content.append(m_lookahead.constData() + m_consumed, taken);
        consume(taken);
        missing -= taken;
        if (isAtEndOfPart() || missing == 0) {
            return;
        }
        if (!refill(chunkSize)) {
            m_failed = true;
            return;
        }
    }
}

// Reads on until the lookahead holds the empty line that ends the part's header.
bool BwaCgiMultipartFormDataReader::completePartHeader()
{
    while (indexOf(emptyLine(), m_emptyLineSearch) < 0) {
        if (!refill(chunkSize)) {
            return false;
        }
    }
    return true;
}

// Consumes the header in front if it is one of form data. A header without an empty line of its
// own reaches over many delimiters, each of which asks again: hence the two early answers.
bool BwaCgiMultipartFormDataReader::takePartHeader(QString& name, QString& filename,
                                                   QString& contentType)
{
    const BwaSize size = indexOf(emptyLine(), m_emptyLineSearch) + 2;
    const BwaSize disposition = indexOf(dispositionName(), m_dispositionSearch);
    const qint64 dispositionPosition = m_dispositionSearch.position;
    if (disposition < 0 || disposition + dispositionName().size() > size ||
        dispositionPosition == m_refusedDisposition) {
        return false;
    }
    const QByteArray header = QByteArray::fromRawData(m_lookahead.constData() + m_consumed, size);
    if (!processPartHeader(header, name, filename, contentType)) {
        m_refusedDisposition = dispositionPosition;
        return false;
    }
    consume(size + 2);
    return true;
}

BwaCgiMultipartFormDataReader::StreamBuffer::StreamBuffer(BwaCgiMultipartFormDataReader* reader)
    : m_reader(reader)
{
    setg(m_chunk.data(), m_chunk.data(), m_chunk.data());
}

BwaCgiMultipartFormDataReader::StreamBuffer::~StreamBuffer() = default;

bool BwaCgiMultipartFormDataReader::StreamBuffer::loadInternalBuffer()
{
    m_chunk = m_reader->readFromPart(chunkSize);
    setg(m_chunk.data(), m_chunk.data(), m_chunk.data() + m_chunk.size());
    return !m_chunk.isEmpty();
}

std::streamsize BwaCgiMultipartFormDataReader::StreamBuffer::xsgetn(char* s, std::streamsize n)
{
    std::streamsize copied = 0;
    while (copied < n && (gptr() < egptr() || loadInternalBuffer())) {
        const std::streamsize piece = std::min<std::streamsize>(n - copied, egptr() - gptr());
        std::memcpy(s + copied, gptr(), static_cast<std::size_t>(piece));
        gbump(static_cast<int>(piece));
        copied += piece;
    }
    return copied;
}

std::streambuf::int_type BwaCgiMultipartFormDataReader::StreamBuffer::underflow()
{
    if (gptr() == egptr() && !loadInternalBuffer()) {
        return traits_type::eof();
    }
    return traits_type::to_int_type(*gptr());
}
