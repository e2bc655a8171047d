// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "ReplyStatus.h"

#include <algorithm>

// A stream keeps a pointer for others at a place of theirs, and tells them when it ends.
void ReplyStatus::follow(std::ostream& reply, const Receiver& receiver)
{
    auto* const status = new ReplyStatus(reply.rdbuf(), receiver);
    reply.pword(place()) = status;
    reply.register_callback(streamChanges, place());
    reply.rdbuf(status);
}

ReplyStatus::ReplyStatus(std::streambuf* buffer, const Receiver& receiver)
    : m_buffer(buffer)
    , m_receiver(receiver)
{
}

ReplyStatus::~ReplyStatus() = default;

int ReplyStatus::place()
{
    static const int place = std::ios_base::xalloc();
    return place;
}

void ReplyStatus::streamChanges(std::ios_base::event event, std::ios_base& stream, int place)
{
    if (event == std::ios_base::erase_event) {
        const auto* const status = static_cast<ReplyStatus*>(stream.pword(place));
        status->m_receiver(status->code());
        delete status;
    }
}

int ReplyStatus::code() const
{
    if (!m_firstLine.endsWith('\n')) {
        return 500;
    }
    if (!m_firstLine.startsWith("Status: ") && !m_firstLine.startsWith("HTTP/")) {
        return 200;
    }
    return m_firstLine.mid(m_firstLine.indexOf(' ') + 1, 3).toInt();
}

int ReplyStatus::overflow(int character)
{
    if (traits_type::eq_int_type(character, traits_type::eof())) {
        return traits_type::not_eof(character);
    }
    const char written = traits_type::to_char_type(character);
    readAlong(&written, 1);
    return m_buffer->sputc(written);
}

int ReplyStatus::sync()
{
    return m_buffer->pubsync();
}

std::streamsize ReplyStatus::xsputn(const char* text, std::streamsize size)
{
    readAlong(text, size);
    return m_buffer->sputn(text, size);
}

void ReplyStatus::readAlong(const char* text, std::streamsize size)
{
    if (!m_firstLine.endsWith('\n')) {
        const char* const end = std::find(text, text + size, '\n');
        m_firstLine.append(text, static_cast<int>(end - text + (end == text + size ? 0 : 1)));
    }
}
