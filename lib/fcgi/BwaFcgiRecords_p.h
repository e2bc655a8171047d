// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAFCGIRECORDS_P_H
#define BWAFCGIRECORDS_P_H

#include <QByteArray>

#include <cstddef>

/** The records of the FastCGI specification 1.0, as far as they are read before libfcgi is asked.
 */
namespace BwaFcgiRecords {

const std::size_t headerSize = 8; // bytes of each record's own header

enum Type { BeginRequest = 1, AbortRequest = 2, Params = 4, Stdin = 5, GetValues = 9 };

/** The header of one record. */
struct Record {
    /** Reads headerSize bytes. */
    explicit Record(const char* bytes);

    /** Header, content and padding together, in bytes. */
    std::size_t size() const { return headerSize + contentSize + paddingSize; }

    int version;
    int type;
    int requestId;
    std::size_t contentSize; // bytes
    std::size_t paddingSize; // bytes
};

/** What a HeaderScan has found. */
enum class Verdict { Incomplete, Complete, Broken };

/**
 * Looks for the end of a request's header: of the empty PARAMS record. It is fed piece by piece and
 * starts at the record BEGIN_REQUEST.
 */
class HeaderScan
{
public:
    /** Goes on with the next bytes. */
    Verdict scan(const char* bytes, std::size_t size);
    /** How many of the bytes of the last scan() belong to the header. */
    std::size_t position() const { return m_position; }
    /** Whether the last record has padding, which libfcgi would take for the next record. */
    bool endsInPadding() const { return m_endsInPadding; }

private:
    bool isComplete() const { return m_isLastRecord && m_left == 0; }
    bool takeHeader();

    std::size_t m_position = 0;
    std::size_t m_left = 0;       // bytes of the current record's content and padding
    std::size_t m_headerSize = 0; // bytes of the next record's header that have come
    char m_header[headerSize] = {};
    bool m_isLastRecord = false;
    bool m_endsInPadding = false;
};

/**
 * Whether @a bytes are the whole input of the request @a requestId, from its first STDIN record to
 * the empty one, and nothing else.
 */
bool isWholeInput(const char* bytes, std::size_t size, int requestId);

/**
 * The answer to a record that concerns the connection, not a request: the values that GET_VALUES
 * asks for, and UNKNOWN_TYPE for any other.
 *
 * @param content the contentSize bytes behind the record's header
 * @param mostRequests how many requests the application takes at a time
 */
QByteArray answerToManagement(const Record& record, const char* content, int mostRequests);

} // namespace BwaFcgiRecords

#endif
