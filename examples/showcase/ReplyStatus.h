// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef REPLYSTATUS_H
#define REPLYSTATUS_H

#include <QByteArray>

#include <ostream>
#include <streambuf>

/**
 * Passes on what is written to a reply and reads its status from the first line. It must be there
 * as long as something may be written, and outlives the request, so it can still be asked then.
 */
class ReplyStatus : public std::streambuf
{
public:
    /** Puts itself between @a reply and its buffer. */
    explicit ReplyStatus(std::ostream& reply);
    ~ReplyStatus() override;

    /** 200 for a reply without a status line; 500, which the web server says, for none at all. */
    int code() const;

protected:
    int overflow(int character) override;
    int sync() override;
    std::streamsize xsputn(const char* text, std::streamsize size) override;

private:
    void readAlong(const char* text, std::streamsize size);

    std::streambuf* m_buffer; // not owned; gone with the request
    QByteArray m_firstLine;   // with its end, once that has come
};

#endif
