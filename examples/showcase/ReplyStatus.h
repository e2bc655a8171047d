// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef REPLYSTATUS_H
#define REPLYSTATUS_H

#include <QByteArray>

#include <functional>
#include <ostream>
#include <streambuf>

/**
 * Passes on what is written to a reply and reads its status from the first line. It ends with the
 * stream of the reply, which is when the request is deleted: at once, or later if it was kept.
 */
class ReplyStatus : public std::streambuf
{
public:
    using Receiver = std::function<void(int code)>;

    /**
     * Puts itself between @a reply and its buffer. @a receiver must not throw; it gets 200 for a
     * reply without a status line, and for none at all 500, which the web server says then.
     */
    static void follow(std::ostream& reply, const Receiver& receiver);
    ~ReplyStatus() override;

protected:
    int overflow(int character) override;
    int sync() override;
    std::streamsize xsputn(const char* text, std::streamsize size) override;

private:
    ReplyStatus(std::streambuf* buffer, const Receiver& receiver);

    static int place();
    static void streamChanges(std::ios_base::event event, std::ios_base& stream, int place);
    int code() const;
    void readAlong(const char* text, std::streamsize size);

    std::streambuf* m_buffer; // not owned
    Receiver m_receiver;
    QByteArray m_firstLine; // with its end, once that has come
};

#endif
