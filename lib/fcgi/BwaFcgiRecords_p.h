// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAFCGIRECORDS_P_H
#define BWAFCGIRECORDS_P_H

#include <QByteArray>

#include <cstddef>

/** The records of FastCGI 1.0, as far as this library reads them itself. */
namespace BwaFcgiRecords {

const std::size_t headerSize = 8; // bytes of each record's own header
const std::size_t mostHeaderSize = std::size_t{4} * 1024 * 1024; // bytes of a request's header

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

/**
 * Checks the lengths of the names and values in a request's header. libfcgi allocates memory for an
 * announced length at once, and ends the process when it gets none.
 */
class LengthScan
{
public:
    /** Goes on with the next bytes; false when a length is above mostHeaderSize. */
    bool scan(const char* bytes, std::size_t size);

private:
    bool areLengthsWhole() const;

    std::size_t m_textLeft = 0;    // bytes of the current name and value
    std::size_t m_lengthsSize = 0; // bytes of the next two lengths that have come
    char m_lengths[8] = {};
};

/** What a HeaderScan has found. */
enum class Verdict { Incomplete, Complete, Broken };

/**
 * Looks for the end of a request's header, which ends with an empty PARAMS record. It is fed piece
 * by piece, from the record BEGIN_REQUEST on.
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
    bool isComplete() const { return m_isLastRecord && m_contentLeft + m_paddingLeft == 0; }
    std::size_t take(const char* bytes, std::size_t size);
    void takeHeader();

    std::size_t m_position = 0;
    std::size_t m_contentLeft = 0; // bytes of the current record's content
    std::size_t m_paddingLeft = 0; // bytes of its padding
    std::size_t m_headerSize = 0;  // bytes of the next record's header that have come
    char m_header[headerSize] = {};
    LengthScan m_lengths;
    bool m_areParameters = false; // the current record's content
    bool m_isBroken = false;
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
 * @param content the contentSize bytes after the record's header
 * @param mostRequests how many requests the application takes at a time
 */
QByteArray answerToManagement(const Record& record, const char* content, int mostRequests);

} // namespace BwaFcgiRecords

#endif
