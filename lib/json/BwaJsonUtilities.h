// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAJSONUTILITIES_H
#define BWAJSONUTILITIES_H

#include "BwaGlobal.h"

#include <QByteArray>
#include <QString>
#include <QVariant>

// The three forms of an extractor for one target type.
// NOLINTBEGIN(bugprone-macro-parentheses): a type takes no parentheses
#define BWA_JSON_EXTRACTOR(name, Type)                                                             \
    static bool name(const QVariant& value, Type& out);                                            \
    static bool name(const QVariantMap& object, const QString& key, Type& out);                    \
    static bool name(const QVariantMap& object, const QString& key, Type& out,                     \
                     const Type& defaultValue);
// NOLINTEND(bugprone-macro-parentheses)

/**
 * Reads typed, range-checked values from a JSON body.
 *
 * Each extractor has three forms: from a value; from the member @a key of an object; and from a
 * member that may be missing, for which the default is then taken. Each returns false, and leaves
 * the output untouched, when the value is of another JSON type, null included, or out of the
 * target's range, and when the member is missing without a default. Nothing is converted between
 * JSON types: "1" is no number, and 1 is no boolean. Keys are compared exactly.
 */
class BWA_EXPORT BwaJsonUtilities
{
public:
    /** The member, or an invalid variant when it is missing. */
    static QVariant fieldValue(const QVariantMap& object, const QString& key);
    /** The member is there and null. */
    static bool isNullValue(const QVariantMap& object, const QString& key);

    /** A number that is written without fraction and exponent. @{ */
    BWA_JSON_EXTRACTOR(integerValue, unsigned char)
    BWA_JSON_EXTRACTOR(integerValue, signed char)
    BWA_JSON_EXTRACTOR(integerValue, unsigned short)
    BWA_JSON_EXTRACTOR(integerValue, short)
    BWA_JSON_EXTRACTOR(integerValue, unsigned int)
    BWA_JSON_EXTRACTOR(integerValue, int)
    BWA_JSON_EXTRACTOR(integerValue, unsigned long long)
    BWA_JSON_EXTRACTOR(integerValue, long long)
    BWA_JSON_EXTRACTOR(integerValue, float)
    BWA_JSON_EXTRACTOR(integerValue, double)
    BWA_JSON_EXTRACTOR(integerValue, long double)
    /** @} */

    /**
     * Any number. For a float, one beyond the largest finite float is out of range. NaN, which no
     * JSON text holds but a variant may, is always refused, as infinity is.
     * @{
     */
    BWA_JSON_EXTRACTOR(realNumberValue, float)
    BWA_JSON_EXTRACTOR(realNumberValue, double)
    BWA_JSON_EXTRACTOR(realNumberValue, long double)
    /** @} */

    /** True or false. @{ */
    BWA_JSON_EXTRACTOR(booleanValue, bool)
    /** @} */
    /** A string, completely decoded; it may hold U+0000. @{ */
    BWA_JSON_EXTRACTOR(stringValue, QString)
    /** @} */
    /**
     * A string of padded base64 (RFC 4648, section 4), without line breaks or blanks; may be empty.
     * @{
     */
    BWA_JSON_EXTRACTOR(base64EncodedByteArrayValue, QByteArray)
    /** @} */
    /** A string of an even number of hexadecimal digits of either case; may be empty. @{ */
    BWA_JSON_EXTRACTOR(hexEncodedByteArrayValue, QByteArray)
    /** @} */
    /** An array. @{ */
    BWA_JSON_EXTRACTOR(listValue, QVariantList)
    /** @} */
    /** An object. @{ */
    BWA_JSON_EXTRACTOR(objectValue, QVariantMap)
    /** @} */
};

#undef BWA_JSON_EXTRACTOR

#endif
