// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef MULTIPARTBODY_H
#define MULTIPARTBODY_H

#include <QByteArray>

#include <algorithm>
#include <numeric>
#include <random>

// An input of the multipart fuzzers is only a body, so that bodies from elsewhere can be tried. The
// boundary and all choices are derived from it.

/** The boundary in the first line of @a body; "B" when there is none. */
inline QByteArray boundaryOf(const QByteArray& body)
{
    const QByteArray line = body.left(body.indexOf("\r\n"));
    const auto isPlain = [](char character) {
        return character > 0 && character != '"' && character != '\\';
    };
    const bool isUsable =
        line.startsWith("--") && line.size() < 80 && std::all_of(line.begin(), line.end(), isPlain);
    return isUsable ? line.mid(2) : QByteArray("B");
}

/** A generator for choices; the same for the same body. */
inline std::minstd_rand choicesFor(const QByteArray& body)
{
    const auto withByte = [](unsigned int sum, char byte) {
        return 31 * sum + static_cast<unsigned char>(byte);
    };
    return std::minstd_rand(std::accumulate(body.begin(), body.end(), 0U, withByte));
}

inline unsigned int below(unsigned int limit, std::minstd_rand& choices)
{
    return static_cast<unsigned int>(choices()) % limit;
}

#endif
