// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "fcgi/BwaFcgiRecords_p.h"

#include <algorithm>
#include <cstring>

namespace BwaFcgiRecords {

namespace {

std::size_t byteAt(const char* bytes, std::size_t index)
{
    return static_cast<unsigned char>(bytes[index]);
}

// How many bytes the length of a name or a value takes in a record: one or four.
std::size_t sizeOfLength(const char* bytes)
{
    return byteAt(bytes, 0) > 127 ? 4 : 1;
}

std::size_t lengthAt(const char* bytes)
{
    return sizeOfLength(bytes) == 1 ? byteAt(bytes, 0)
                                    : (byteAt(bytes, 0) & 127U) << 24U | byteAt(bytes, 1) << 16U |
            byteAt(bytes, 2) << 8U | byteAt(bytes, 3);
}

QByteArray recordOf(char type, const QByteArray& content)
{
    const char header[headerSize] = {1, type, 0, 0, 0, static_cast<char>(content.size()), 0, 0};
    return QByteArray(header, sizeof header) + content;
}

// Whether @a name is among the names and values in the content of a record. Each pair is two
// lengths and two texts. A length above 127 takes four bytes. No name that is searched for is that
// long, so the search ends at such a pair.
bool hasName(const char* content, std::size_t size, const char* name)
{
    std::size_t position = 0;
    while (position + 2 <= size) {
        const std::size_t nameSize = byteAt(content, position);
        const std::size_t valueSize = byteAt(content, position + 1);
        position += 2;
        if (nameSize > 127 || valueSize > 127 || nameSize + valueSize > size - position) {
            return false;
        }
        if (QByteArray::fromRawData(content + position, static_cast<int>(nameSize)) == name) {
            return true;
        }
        position += nameSize + valueSize;
    }
    return false;
}

QByteArray pairOf(const char* name, const QByteArray& value)
{
    const QByteArray text(name);
    return QByteArray(1, static_cast<char>(text.size())) + static_cast<char>(value.size()) + text +
        value;
}

} // namespace

Record::Record(const char* bytes)
    : version(static_cast<int>(byteAt(bytes, 0)))
    , type(static_cast<int>(byteAt(bytes, 1)))
    , requestId(static_cast<int>(byteAt(bytes, 2) << 8U | byteAt(bytes, 3)))
    , contentSize(byteAt(bytes, 4) << 8U | byteAt(bytes, 5))
    , paddingSize(byteAt(bytes, 6))
{
}

bool LengthScan::scan(const char* bytes, std::size_t size)
{
    std::size_t position = m_textLeft;
    std::size_t longest = 0;
    while (position < size && longest <= mostHeaderSize) {
        m_lengths[m_lengthsSize++] = bytes[position++];
        if (areLengthsWhole()) {
            const std::size_t name = lengthAt(m_lengths);
            const std::size_t value = lengthAt(m_lengths + sizeOfLength(m_lengths));
            longest = std::max(name, value);
            position += name + value;
            m_lengthsSize = 0;
        }
    }
    m_textLeft = position - std::min(position, size);
    return longest <= mostHeaderSize;
}

// Each of the two lengths has one byte, or four, of which the first has its highest bit set.
bool LengthScan::areLengthsWhole() const
{
    const std::size_t nameEnd = sizeOfLength(m_lengths);
    return m_lengthsSize > nameEnd && m_lengthsSize == nameEnd + sizeOfLength(m_lengths + nameEnd);
}

Verdict HeaderScan::scan(const char* bytes, std::size_t size)
{
    m_position = 0;
    while (m_position < size && !m_isBroken && !isComplete()) {
        m_position += take(bytes + m_position, size - m_position);
    }
    return m_isBroken ? Verdict::Broken : isComplete() ? Verdict::Complete : Verdict::Incomplete;
}

// Takes bytes of one kind (content, padding or a record's header), and returns how many.
std::size_t HeaderScan::take(const char* bytes, std::size_t size)
{
    if (m_contentLeft > 0) {
        const std::size_t content = std::min(m_contentLeft, size);
        m_contentLeft -= content;
        m_isBroken = m_areParameters && !m_lengths.scan(bytes, content);
        return content;
    }
    if (m_paddingLeft > 0) {
        const std::size_t padding = std::min(m_paddingLeft, size);
        m_paddingLeft -= padding;
        return padding;
    }
    const std::size_t header = std::min(headerSize - m_headerSize, size);
    std::memcpy(m_header + m_headerSize, bytes, header);
    m_headerSize += header;
    if (m_headerSize == headerSize) {
        takeHeader();
    }
    return header;
}

// A record with the id 0 concerns the connection, and may come only between requests. Within a
// request it is refused, because libfcgi would write the answer beyond the end of a buffer.
void HeaderScan::takeHeader()
{
    const Record record(m_header);
    m_headerSize = 0;
    m_contentLeft = record.contentSize;
    m_paddingLeft = record.paddingSize;
    m_areParameters = record.type == Params;
    m_isLastRecord = m_areParameters && record.contentSize == 0;
    m_endsInPadding = m_isLastRecord && record.paddingSize > 0;
    m_isBroken = record.version != 1 || record.requestId == 0;
}

bool isWholeInput(const char* bytes, std::size_t size, int requestId)
{
    std::size_t position = 0;
    while (size - position >= headerSize) {
        const Record record(bytes + position);
        if (record.type != Stdin || record.requestId != requestId ||
            record.size() > size - position) {
            return false;
        }
        position += record.size();
        if (record.contentSize == 0) {
            return position == size;
        }
    }
    return false;
}

QByteArray answerToManagement(const Record& record, const char* content, int mostRequests)
{
    if (record.type != GetValues) { // the answer has the type UNKNOWN_TYPE
        return recordOf(11, QByteArray(1, static_cast<char>(record.type)) + QByteArray(7, '\0'));
    }
    QByteArray values;
    for (const char* const name : {"FCGI_MAX_CONNS", "FCGI_MAX_REQS"}) {
        if (hasName(content, record.contentSize, name)) {
            values += pairOf(name, QByteArray::number(mostRequests));
        }
    }
    if (hasName(content, record.contentSize, "FCGI_MPXS_CONNS")) {
        values += pairOf("FCGI_MPXS_CONNS", "0"); // one request at a time on each connection
    }
    return recordOf(10, values); // GET_VALUES_RESULT
}

} // namespace BwaFcgiRecords
