// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAJSON_H
#define BWAJSON_H

#include "BwaGlobal.h"

#include <QByteArray>
#include <QStringList>
#include <QVariant>

/**
 * Turns JSON texts (RFC 8259) into variants and back. A value that parse() has returned has, after
 * write() and parse(), the same types again. Any thread may call both.
 */
class BWA_EXPORT BwaJson
{
public:
    /**
     * The value of @a text, which is UTF-8 without a byte order mark.
     *
     * An object becomes a QVariantMap (of a repeated key the last value counts), an array a
     * QVariantList, a string a QString that is never null, an integer a qulonglong, or a
     * qlonglong when it is negative, any other number a double, null an invalid variant.
     *
     * A text that is no JSON is refused. So is a JSON text with an integer of more than 64 bits, a
     * number beyond what a double can hold such as 1e400, an escaped surrogate without its pair, or
     * more than 1024 containers within each other.
     *
     * @a ok, which may be null, becomes false when the text is refused. The result is then invalid.
     */
    static QVariant parse(const QByteArray& text, bool* ok = nullptr);
    /**
     * The same, and tells where an object has a key twice: @a repeated, which may be null, becomes
     * the path to one such member, made of keys and, for array elements, of indexes from 0 on. It
     * becomes empty when there is no such member and when the text is refused.
     */
    static QVariant parse(const QByteArray& text, bool* ok, QStringList* repeated);

    /**
     * @a value as a JSON text in UTF-8, without blanks and line ends.
     *
     * A QVariantMap becomes an object with sorted keys, a QVariantList or QStringList an array, a
     * QString a string, even when it is null. A number of a Qt or C++ integer type other than char
     * is written exactly. A float or double is written in the fewest digits that read back as the
     * same number, with a fraction or an exponent, as in 3.0; NaN and infinity become null, as do
     * invalid variants and null pointers. In strings quotes, backslashes and characters below
     * U+0020 are escaped, and a surrogate without its pair becomes U+FFFD.
     *
     * @a ok, which may be null, becomes false when a value is of another type, or when more than
     * 1024 containers are within each other. The result is then null.
     */
    static QByteArray write(const QVariant& value, bool* ok = nullptr);
};

#endif
