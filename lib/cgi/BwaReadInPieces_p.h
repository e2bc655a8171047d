// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAREADINPIECES_P_H
#define BWAREADINPIECES_P_H

#include <QByteArray>

#include <algorithm>
#include <limits>

/**
 * Reads as many bytes as a client has announced, in pieces: the first has 64 kB, each further one
 * as many bytes as have arrived before. So memory grows with the bytes that arrive, not with the
 * number announced.
 */
namespace BwaReadInPieces {

/** The most that read() reads: a byte array of Qt 5 holds fewer than 2^31 bytes. */
const unsigned int mostBytes = static_cast<unsigned int>(std::numeric_limits<int>::max()) - 1024;

/**
 * The next @a size bytes. They are fewer at the end of the data, and when @a size is above
 * mostBytes, because nothing beyond mostBytes is read.
 *
 * @param readPiece called with a buffer and its length; returns the number of bytes that it has
 *        put there, which is less than the length only at the end of the data
 */
template <typename ReadPiece>
QByteArray read(unsigned int size, ReadPiece readPiece)
{
    const unsigned int firstPiece = 64 * 1024; // bytes
    const unsigned int wanted = std::min(size, mostBytes);

    QByteArray bytes;
    unsigned int arrived = 0;
    while (arrived < wanted) {
        const unsigned int piece = std::min(wanted - arrived, std::max(firstPiece, arrived));
        bytes.resize(static_cast<int>(arrived + piece));
        const int filled = readPiece(bytes.data() + arrived, static_cast<int>(piece));
        arrived += static_cast<unsigned int>(filled);
        if (static_cast<unsigned int>(filled) < piece) {
            break;
        }
    }
    bytes.resize(static_cast<int>(arrived));
    return bytes;
}

} // namespace BwaReadInPieces

#endif
