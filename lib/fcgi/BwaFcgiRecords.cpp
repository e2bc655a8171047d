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

QByteArray recordOf(char type, const QByteArray& content)
{
    const char header[headerSize] = {1, type, 0, 0, 0, static_cast<char>(content.size()), 0, 0};
    return QByteArray(header, sizeof header) + content;
}

// The names and values of a record: each pair is two lengths and two texts. A length above 127
// bytes has four bytes; no name that is known here is as long, so such a pair ends the reading.
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

Verdict HeaderScan::scan(const char* bytes, std::size_t size)
{
    m_position = 0;
    while (m_position < size && !isComplete()) {
        const std::size_t wanted = m_left > 0 ? m_left : headerSize - m_headerSize;
        const std::size_t come = std::min(wanted, size - m_position);
        if (m_left > 0) {
            m_left -= come;
        } else {
            std::memcpy(m_header + m_headerSize, bytes + m_position, come);
            m_headerSize += come;
        }
        m_position += come;
        if (m_headerSize == headerSize && !takeHeader()) {
            return Verdict::Broken;
        }
    }
    return isComplete() ? Verdict::Complete : Verdict::Incomplete;
}

// Records that concern the connection, with the id 0, are for the gaps between requests: to one in
// a request libfcgi writes its answer beyond the end of a buffer.
bool HeaderScan::takeHeader()
{
    const Record record(m_header);
    m_headerSize = 0;
    m_left = record.contentSize + record.paddingSize;
    m_isLastRecord = record.type == Params && record.contentSize == 0;
    m_endsInPadding = m_isLastRecord && record.paddingSize > 0;
    return record.version == 1 && record.requestId != 0;
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
    if (record.type != GetValues) {
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
    return recordOf(10, values);
}

} // namespace BwaFcgiRecords
