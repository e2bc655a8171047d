// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWACGIMULTIPARTFORMDATAREADER_H
#define BWACGIMULTIPARTFORMDATAREADER_H

#include "BwaGlobal.h"

#include <QByteArray>
#include <QVector>

#include <streambuf>

class BwaCgiRequest;
class QString;

/**
 * Reads a multipart/form-data body (RFC 7578) part by part, straight from the request.
 *
 * Call nextPart(), read the part, and so on until nextPart() returns false; then failed() tells
 * whether the body was complete. Of a part's content only a small lookahead is held; its header
 * is held whole. The time taken is linear in the body, whatever it holds.
 */
class BWA_EXPORT BwaCgiMultipartFormDataReader
{
    Q_DISABLE_COPY(BwaCgiMultipartFormDataReader)

public:
    class StreamBuffer;

    /** Reads the body of @a request, which must outlive this; a null request has no parts. */
    explicit BwaCgiMultipartFormDataReader(BwaCgiRequest* request);
    ~BwaCgiMultipartFormDataReader();

    /**
     * Moves to the next part, past what is unread of this one. Parts that are not form data or have
     * no name are passed over.
     *
     * @param name the field's name
     * @param filename the client's file name, null for a plain form field
     * @param contentType as sent, or empty
     * @return false at the end of the body and when it has failed; the texts are then meaningless
     */
    bool nextPart(QString& name, QString& filename, QString& contentType);
    /** The next @a size bytes of the part; fewer at its end and when the body fails. */
    QByteArray readFromPart(unsigned int size);
    /** The rest of the part; what has come of it when the body fails. */
    QByteArray readAllFromPart();
    /**
     * Whether all of the part has been read. May read a few bytes of the body to tell; the body
     * fails when too few are left.
     *
     * Once the body has failed this is false for ever, so a loop asks failed(), too:
     *
     *     while (!reader.isAtEndOfPart() && !reader.failed()) {
     *         file.write(reader.readFromPart(64 * 1024));
     *     }
     */
    bool isAtEndOfPart();
    /** Leaves the lookahead at the next delimiter, or fails when the body ends first. */
    void skipEndOfPart();
    /** The first position of either delimiter in @a data, or -1. */
    BwaSize indexOfFirstBoundaryDelimiter(const QByteArray& data) const;
    /**
     * Reads a part's header lines, each ended by CR LF. When the part is to be passed over, the
     * result is false and the texts are untouched.
     */
    bool processPartHeader(const QByteArray& header, QString& name, QString& filename,
                           QString& contentType) const;

    /** The request that is read; not owned, may be null. */
    BwaCgiRequest* request() const { return m_request; }
    /** What stands between two parts: "--" and the boundary, with the line ends around. */
    QByteArray delimiter() const { return m_delimiter; }
    /** What ends the last part. */
    QByteArray closeDelimiter() const { return m_closeDelimiter; }
    /** The bytes taken from the body and not yet consumed. */
    QByteArray lookahead() const { return m_lookahead.mid(m_consumed); }
    /** The body ended before its closing delimiter; nothing more can be read. */
    bool failed() const { return m_failed; }

private:
    // Where a pattern was searched for last. Positions count from the start of the body.
    struct Search {
        qint64 position = 0; // of the match; without one, no match starts before it
        bool found = false;
    };

    bool isUsable() const { return m_request && !m_failed; }
    BwaSize lookaheadSize() const { return m_lookahead.size() - m_consumed; }
    bool lookaheadHas(const char* text, BwaSize position) const;
    BwaSize indexOf(const QByteArray& pattern, Search& search) const;
    bool findDelimiterStart();
    BwaSize indexOfDelimiter();
    void consume(BwaSize size);
    bool refill(unsigned int size);
    void appendFromPart(QByteArray& content, BwaSize size);
    bool takePartHeader(QString& name, QString& filename, QString& contentType);
    bool completePartHeader();

    BwaCgiRequest* m_request;    // not owned
    QByteArray m_delimiterStart; // what both delimiters begin with
    QByteArray m_delimiter;
    QByteArray m_closeDelimiter;
    QVector<int> m_borders; // of the first bytes of m_delimiterStart
    QByteArray m_lookahead; // with consumed bytes still in front
    bool m_failed;
    BwaSize m_consumed; // bytes at the front of m_lookahead
    qint64 m_removed;   // bytes that have left the front of m_lookahead
    qint64 m_scanned;   // up to where delimiters were searched for, from the start of the body
    int m_matched;      // bytes before m_scanned that m_delimiterStart begins with
    Search m_emptyLineSearch;
    Search m_dispositionSearch;
    qint64 m_refusedDisposition; // position of the one refused last, or -1
};

/** The current part of a reader as a stream buffer, for reading it through a std::istream. */
class BWA_EXPORT BwaCgiMultipartFormDataReader::StreamBuffer : public std::streambuf
{
    Q_DISABLE_COPY(StreamBuffer)

public:
    /** @a reader must outlive this, and not be used otherwise while this reads. */
    explicit StreamBuffer(BwaCgiMultipartFormDataReader* reader);
    ~StreamBuffer() override;

    /** Makes the next bytes of the part the get area; false at its end. */
    bool loadInternalBuffer();

protected:
    /** Reads @a n bytes at most, fewer at the end of the part. */
    std::streamsize xsgetn(char* s, std::streamsize n) override;
    /** The next byte, or the end-of-file value at the end of the part. */
    int_type underflow() override;

private:
    BwaCgiMultipartFormDataReader* m_reader; // not owned
    QByteArray m_chunk;                      // holds the get area
};

#endif
