// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// The reader takes linear time because it remembers, for each text that it searches for, the last
// match, or up to which position there is none. As it only moves forward, a match that is still
// ahead is still the first one. After a search that found nothing, the next one looks only at the
// bytes that have been appended since.
//
// The boundary is the client's choice, and may be long and repeat its own beginning. So its search
// looks at each byte once (Knuth, Morris and Pratt). An example is the search for "abac" in
// "ababac": it matches "aba" and then meets "b" instead of "c". The "a" at the end of "aba" may
// still begin a match, so the search goes on as if it had matched just that "a". A text that a
// longer text both begins and ends with, as "aba" does with "a", is called a border of the longer
// one.

#include "cgi/BwaCgiMultipartFormDataReader.h"

#include "cgi/BwaCgiRequest.h"
#include "cgi/BwaHeaderValueParser_p.h"
#include "cgi/BwaLookahead_p.h"

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

// At each index n, the size of the longest border of the first n bytes of @a pattern.
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

// The smaller of two positions, each of which may be -1 for none.
qint64 firstOf(qint64 first, qint64 second)
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
    // A delimiter begins with a line break. The first one in a body need not have it, so a line
    // break is put in front of the body.
    , m_lookahead(std::make_unique<BwaLookahead>("\r\n"))
    , m_failed(false)
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
        if (m_failed || isAtCloseDelimiter()) {
            return false;
        }
        m_lookahead->consumeUpTo(m_lookahead->begin() + m_delimiter.size());
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
    appendFromPart(content, std::min(size, most));
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
    const BwaSize missing = m_closeDelimiter.size() - m_lookahead->size();
    if (missing > 0) {
        refill(static_cast<unsigned int>(missing));
        m_failed = m_lookahead->size() < m_delimiter.size();
    }
    return findDelimiter() == m_lookahead->begin();
}

void BwaCgiMultipartFormDataReader::skipEndOfPart()
{
    do {
        const qint64 delimiter = findDelimiter();
        if (delimiter >= 0) {
            m_lookahead->consumeUpTo(delimiter);
            return;
        }
        // The last bytes may be the start of a delimiter that the next refill completes.
        const qint64 lastBytes = m_lookahead->end() - (m_closeDelimiter.size() - 1);
        m_lookahead->consumeUpTo(std::max(m_lookahead->begin(), lastBytes));
    } while (refill(chunkSize));
    m_failed = true;
}

BwaSize BwaCgiMultipartFormDataReader::indexOfFirstBoundaryDelimiter(const QByteArray& data) const
{
    const BwaLookahead bytes(data);
    return static_cast<BwaSize>(
        firstOf(bytes.indexOf(m_delimiter, 0), bytes.indexOf(m_closeDelimiter, 0)));
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

QByteArray BwaCgiMultipartFormDataReader::lookahead() const
{
    return QByteArray(m_lookahead->from(m_lookahead->begin()), m_lookahead->size());
}

// Whether the delimiter at the front of the lookahead is the one that ends the last part.
bool BwaCgiMultipartFormDataReader::isAtCloseDelimiter() const
{
    return m_lookahead->has("--\r\n", m_lookahead->begin() + m_delimiterStart.size());
}

// The first position of @a text in the lookahead, or -1.
qint64 BwaCgiMultipartFormDataReader::find(const QByteArray& text, Search& search) const
{
    if (!search.found || search.position < m_lookahead->begin()) {
        const qint64 from = std::max(search.position, m_lookahead->begin());
        const qint64 match = m_lookahead->indexOf(text, from);
        const qint64 firstUnknown = m_lookahead->end() - (text.size() - 1);
        search.found = match >= 0;
        search.position = search.found ? match : std::max(from, firstUnknown);
    }
    return search.found ? search.position : -1;
}

// Scans up to the end of the next match of m_delimiterStart, or to the end of the lookahead;
// returns whether there is a match.
bool BwaCgiMultipartFormDataReader::findDelimiterStart()
{
    const char* const begin = m_lookahead->from(m_scanned);
    const char* const end = m_lookahead->from(m_lookahead->end());
    const char* const pattern = m_delimiterStart.constData();
    const char* read = begin;
    while (m_matched < m_delimiterStart.size() && read != end) {
        if (m_matched == 0) { // the usual case, in which the C library is fastest
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
    m_scanned += read - begin;
    return m_matched == m_delimiterStart.size();
}

// The position of the next delimiter of either kind, or -1. A match of m_delimiterStart may turn
// out to begin neither kind. That is certain once as many bytes have been read as the longer kind
// has.
qint64 BwaCgiMultipartFormDataReader::findDelimiter()
{
    if (m_scanned - m_matched < m_lookahead->begin()) { // what matches so far has been consumed
        m_scanned = m_lookahead->begin();
        m_matched = 0;
    }
    while (findDelimiterStart()) {
        const qint64 start = m_scanned - m_delimiterStart.size();
        if (m_lookahead->has("\r\n", m_scanned) || m_lookahead->has("--\r\n", m_scanned)) {
            return start;
        }
        if (m_lookahead->end() - start < m_closeDelimiter.size()) {
            return -1;
        }
        m_matched = m_borders.at(m_matched);
    }
    return -1;
}

// Appends up to @a size bytes of the body to the lookahead; false when none are left.
bool BwaCgiMultipartFormDataReader::refill(unsigned int size)
{
    const QByteArray bytes = m_request ? m_request->readFromBody(size) : QByteArray();
    m_lookahead->append(bytes);
    return !bytes.isEmpty();
}

// Appends the next @a size bytes of the part to @a content; fewer at the part's end or on failure.
void BwaCgiMultipartFormDataReader::appendFromPart(QByteArray& content, qint64 size)
{
    qint64 missing = size;
    if (!isUsable() || isAtEndOfPart()) {
        return;
    }
    while (true) {
        const qint64 begin = m_lookahead->begin();
        const qint64 delimiter = findDelimiter();
        // When no delimiter is found, the last bytes may be the start of one.
        const qint64 partEnd =
            delimiter >= 0 ? delimiter : m_lookahead->end() - m_closeDelimiter.size();
        const qint64 taken = std::min(std::max<qint64>(partEnd - begin, 0), missing);
        content.append(m_lookahead->from(begin), static_cast<BwaSize>(taken));
        m_lookahead->consumeUpTo(begin + taken);
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
    while (find(emptyLine(), m_emptyLineSearch) < 0) {
        if (!refill(chunkSize)) {
            return false;
        }
    }
    return true;
}

// Consumes the header at the front of the lookahead if it is one of form data. A part without an
// empty line has a header that goes on to the empty line of a later part, and each delimiter
// between the two leads to a call of this function. To read such a header only once, this returns
// early when it has no disposition, or when the first one in it has been refused already.
bool BwaCgiMultipartFormDataReader::takePartHeader(QString& name, QString& filename,
                                                   QString& contentType)
{
    const qint64 begin = m_lookahead->begin();
    const qint64 end = find(emptyLine(), m_emptyLineSearch) + 2; // after the last line's end
    const qint64 disposition = find(dispositionName(), m_dispositionSearch);
    if (disposition < 0 || disposition + dispositionName().size() > end ||
        disposition == m_refusedDisposition) {
        return false;
    }
    const QByteArray header =
        QByteArray::fromRawData(m_lookahead->from(begin), static_cast<BwaSize>(end - begin));
    if (!processPartHeader(header, name, filename, contentType)) {
        m_refusedDisposition = disposition;
        return false;
    }
    m_lookahead->consumeUpTo(end + 2);
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
