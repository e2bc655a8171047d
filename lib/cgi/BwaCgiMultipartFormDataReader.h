// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWACGIMULTIPARTFORMDATAREADER_H
#define BWACGIMULTIPARTFORMDATAREADER_H

#include "BwaGlobal.h"

#include <QByteArray>
#include <QVector>

#include <memory>
#include <streambuf>

class BwaCgiRequest;
class BwaLookahead;
class QString;

/**
 * Reads a multipart/form-data body (RFC 7578) part by part, straight from the request.
 *
 *     BwaCgiMultipartFormDataReader reader(request->cgiRequest());
 *     QString name, fileName, contentType;
 *     while (reader.nextPart(name, fileName, contentType)) {
 *         store(name, reader.readAllFromPart());
 *     }
 *     if (reader.failed()) { // the body was not complete
 *         request->sendHttpError(BwaFcgiRequest::BadRequest);
 *     }
 *
 * The reader holds the whole header of a part in memory, but only a few kilobytes of its content.
 * The time taken is linear in the size of the body, whatever it contains.
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
     * Skips what is unread of the current part and moves to the next one. Parts that are not form
     * data or have no name are skipped as well.
     *
     * @param name the field's name
     * @param filename the client's file name, null for a plain form field
     * @param contentType as sent, or empty
     * @return false at the end of the body and when it has failed; the texts are then meaningless
     */
    bool nextPart(QString& name, QString& filename, QString& contentType);
    /** The next @a size bytes of the part; fewer at its end and when the body ends early. */
    QByteArray readFromPart(unsigned int size);
    /** The rest of the part; when the body ends early, what has arrived of it. */
    QByteArray readAllFromPart();
    /**
     * Whether all of the part has been read. To find out, this may read a few bytes of the body;
     * when too few are left for a delimiter, the reader has failed().
     *
     * Once it has failed, this is false for ever, so a loop asks failed(), too:
     *
     *     while (!reader.isAtEndOfPart() && !reader.failed()) {
     *         file.write(reader.readFromPart(64 * 1024));
     *     }
     */
    bool isAtEndOfPart();
    /** Consumes the bytes up to the next delimiter; fails when the body ends first. */
    void skipEndOfPart();
    /** The first position of either delimiter in @a data, or -1. */
    BwaSize indexOfFirstBoundaryDelimiter(const QByteArray& data) const;
    /**
     * Reads a part's header lines, each of which ends in CR LF. The result is false, and the texts
     * are untouched, when nextPart() is to skip the part.
     */
    bool processPartHeader(const QByteArray& header, QString& name, QString& filename,
                           QString& contentType) const;

    /** The request that is read; not owned, may be null. */
    BwaCgiRequest* request() const { return m_request; }
    /** What is between two parts: "--" and the boundary, with a line end before and after. */
    QByteArray delimiter() const { return m_delimiter; }
    /** What ends the last part. */
    QByteArray closeDelimiter() const { return m_closeDelimiter; }
    /** The bytes taken from the body and not yet consumed; at first a line break before it. */
    QByteArray lookahead() const;
    /** The body ended before its closing delimiter; nothing more can be read. */
    bool failed() const { return m_failed; }

private:
    // Where a text was searched for last.
    struct Search {
        qint64 position = 0; // of the match; without one, where the next search begins
        bool found = false;
    };

    bool isUsable() const { return m_request && !m_failed; }
    BWA_HIDDEN bool isAtCloseDelimiter() const;
    BWA_HIDDEN qint64 find(const QByteArray& text, Search& search) const;
    BWA_HIDDEN bool findDelimiterStart();
    BWA_HIDDEN qint64 findDelimiter();
    BWA_HIDDEN bool refill(unsigned int size);
    BWA_HIDDEN void appendFromPart(QByteArray& content, qint64 size);
    BWA_HIDDEN bool takePartHeader(QString& name, QString& filename, QString& contentType);
    BWA_HIDDEN bool completePartHeader();

    BwaCgiRequest* m_request;    // not owned
    QByteArray m_delimiterStart; // what both delimiters begin with
    QByteArray m_delimiter;
    QByteArray m_closeDelimiter;
    QVector<int> m_borders;                    // of the first bytes of m_delimiterStart
    std::unique_ptr<BwaLookahead> m_lookahead; // all positions below are positions in it
    bool m_failed;
    qint64 m_scanned; // delimiters have been searched for up to here
    int m_matched;    // how many bytes before m_scanned are the first ones of m_delimiterStart
    Search m_emptyLineSearch;
    Search m_dispositionSearch;
    qint64 m_refusedDisposition; // position of the Content-Disposition refused last, or -1
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
