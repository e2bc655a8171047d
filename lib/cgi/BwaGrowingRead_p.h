// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAGROWINGREAD_P_H
#define BWAGROWINGREAD_P_H

#include <QByteArray>

#include <algorithm>
#include <limits>

/** What growingRead() reads at most: a byte array of Qt 5 holds fewer than 2^31 bytes. */
const unsigned int mostBytesOfARead =
    static_cast<unsigned int>(std::numeric_limits<int>::max()) - 1024;

/**
 * Reads up to @a size bytes in pieces that double with what has come, so that a length which is
 * only announced costs nothing. What lies beyond mostBytesOfARead is not read, which the caller
 * sees as a short result.
 *
 * @param readPiece called with a buffer and its length; returns the number of bytes it has filled
 *        in, fewer than asked at the end of the data
 */
template <typename ReadPiece>
QByteArray growingRead(unsigned int size, ReadPiece readPiece)
{
    const unsigned int firstPiece = 64 * 1024; // bytes
    const unsigned int wanted = std::min(size, mostBytesOfARead);

    QByteArray bytes;
    unsigned int come = 0;
    while (come < wanted) {
        const unsigned int piece = std::min(wanted - come, std::max(firstPiece, come));
        bytes.resize(static_cast<int>(come + piece));
        const int filled = readPiece(bytes.data() + come, static_cast<int>(piece));
        come += static_cast<unsigned int>(filled);
        if (static_cast<unsigned int>(filled) < piece) {
            break;
        }
    }
    bytes.resize(static_cast<int>(come));
    return bytes;
}

#endif
