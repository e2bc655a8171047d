// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef HOSTILEBODIES_H
#define HOSTILEBODIES_H

#include <QByteArray>

// Multipart bodies of about @a size bytes, with the boundary B, that cost a careless reader most.

inline QByteArray repeated(const char* bytes, int totalSize)
{
    return QByteArray(bytes).repeated(totalSize / static_cast<int>(qstrlen(bytes)));
}

// Every second line is a delimiter with a header that reaches to the end.
inline QByteArray delimitersBeforeOneEmptyLine(int size)
{
    return repeated("--B\r\n", size) + "\r\n\r\n--B--\r\n";
}

inline QByteArray delimitersBeforeOneLongRefusedDisposition(int size)
{
    return repeated("--B\r\n", size / 2) + "Content-Disposition: attachment" +
        repeated("; name=\"a\"", size / 2) + "\r\n\r\n\r\n--B--\r\n";
}

// Names that have the same hash where it is h = 31 * h + character: "Aa" and "BB" have.
inline QByteArray collidingParameters(int size)
{
    QByteArray header = "--B\r\nContent-Disposition: form-data; name=a";
    for (int i = 0; header.size() < size; ++i) {
        header += ';';
        for (int bit = 0; bit < 16; ++bit) {
            header += (i >> bit) % 2 == 0 ? "Aa" : "BB";
        }
    }
    return header + "\r\n\r\n1\r\n--B--\r\n";
}

inline QByteArray delimitersBeforeOneField(int size)
{
    return repeated("--B\r\n", size) +
        "Content-Disposition: form-data; name=a\r\n\r\n1\r\n--B--\r\n";
}

// Each header is refused for its own disposition, and all of them reach to the end.
inline QByteArray refusedDispositionsBeforeOneEmptyLine(int size)
{
    return repeated("--B\r\nContent-Disposition: attachment\r\n", size) + "\r\n\r\n--B--\r\n";
}

inline QByteArray oneEndlessHeader(int size)
{
    return "--B\r\nX: " + QByteArray(size, 'x');
}

inline QByteArray oneLongHeader(int size)
{
    return "--B\r\nX: " + repeated("\r\n\r", size) +
        "Content-Disposition: form-data; name=a\r\n\r\n1\r\n--B--\r\n";
}

inline QByteArray tinyParts(int size)
{
    return repeated("--B\r\nContent-Disposition: form-data; name=a\r\n\r\n1\r\n", size) +
        "--B--\r\n";
}

inline QByteArray tinyRefusedParts(int size)
{
    return repeated("--B\r\n\r\n\r\n", size) + "--B--\r\n";
}

inline QByteArray nearlyDelimiters(int size)
{
    return "--B\r\nContent-Disposition: form-data; name=a\r\n\r\n" + repeated("\r\n--B\r", size) +
        "\r\n--B--\r\n";
}

// A boundary that repeats what each delimiter begins with: at every fifth byte of the content one
// begins that only its very end shows to be none.
inline QByteArray repeatingBoundary(int size)
{
    return repeated("x\r\n--", size / 8);
}

inline QByteArray nearlyRepeatingDelimiters(int size)
{
    const QByteArray boundary = repeatingBoundary(size);
    return "--" + boundary + "\r\nContent-Disposition: form-data; name=a\r\n\r\n" +
        repeated("\r\n--x", size) + "\r\n--" + boundary + "--\r\n";
}

inline QByteArray lineBreaksOnly(int size)
{
    return "--B\r\nContent-Disposition: form-data; name=a\r\n\r\n" + repeated("\r", size) +
        "\r\n--B--\r\n";
}

#endif
