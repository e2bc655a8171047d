// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAJSONUTILITIES_H
#define BWAJSONUTILITIES_H

#include "BwaGlobal.h"

#include <QByteArray>
#include <QString>
#include <QVariant>

/**
 * Reads typed, range-checked values from a JSON body.
 *
 * For example, a body has a title, and a priority that may be missing:
 *
 *     QString title;
 *     int priority = 0;
 *     const bool isTask = BwaJsonUtilities::stringValue(body, QStringLiteral("title"), title) &&
 *         BwaJsonUtilities::integerValue(body, QStringLiteral("priority"), priority, 3);
 *
 * Each extractor has three forms: the first reads a value, the second the member @a key of an
 * object, the third a member that may be missing, in which case it stores the default. Each returns
 * false, and leaves the output untouched, when the value is of another JSON type, null included, or
 * out of the target's range; the second does so when the member is missing, too. Nothing is
 * converted between JSON types: "1" is no number, and 1 is no boolean. Keys are compared exactly.
 */
class BWA_EXPORT BwaJsonUtilities
{
public:
    /** The member @a key, or an invalid variant when it is missing. */
    static QVariant fieldValue(const QVariantMap& object, const QString& key);
    /** Whether the member @a key exists and is null. */
    static bool isNullValue(const QVariantMap& object, const QString& key);

    /** A number that is written without fraction and exponent. @{ */
    static bool integerValue(const QVariant& value, unsigned char& out);
    static bool integerValue(const QVariantMap& object, const QString& key, unsigned char& out);
    static bool integerValue(const QVariantMap& object, const QString& key, unsigned char& out,
                             const unsigned char& defaultValue);
    static bool integerValue(const QVariant& value, signed char& out);
    static bool integerValue(const QVariantMap& object, const QString& key, signed char& out);
    static bool integerValue(const QVariantMap& object, const QString& key, signed char& out,
                             const signed char& defaultValue);
    static bool integerValue(const QVariant& value, unsigned short& out);
    static bool integerValue(const QVariantMap& object, const QString& key, unsigned short& out);
    static bool integerValue(const QVariantMap& object, const QString& key, unsigned short& out,
                             const unsigned short& defaultValue);
    static bool integerValue(const QVariant& value, short& out);
    static bool integerValue(const QVariantMap& object, const QString& key, short& out);
    static bool integerValue(const QVariantMap& object, const QString& key, short& out,
                             const short& defaultValue);
    static bool integerValue(const QVariant& value, unsigned int& out);
    static bool integerValue(const QVariantMap& object, const QString& key, unsigned int& out);
    static bool integerValue(const QVariantMap& object, const QString& key, unsigned int& out,
                             const unsigned int& defaultValue);
    static bool integerValue(const QVariant& value, int& out);
    static bool integerValue(const QVariantMap& object, const QString& key, int& out);
    static bool integerValue(const QVariantMap& object, const QString& key, int& out,
                             const int& defaultValue);
    static bool integerValue(const QVariant& value, unsigned long long& out);
    static bool integerValue(const QVariantMap& object, const QString& key,
                             unsigned long long& out);
    static bool integerValue(const QVariantMap& object, const QString& key, unsigned long long& out,
                             const unsigned long long& defaultValue);
    static bool integerValue(const QVariant& value, long long& out);
    static bool integerValue(const QVariantMap& object, const QString& key, long long& out);
    static bool integerValue(const QVariantMap& object, const QString& key, long long& out,
                             const long long& defaultValue);
    static bool integerValue(const QVariant& value, float& out);
    static bool integerValue(const QVariantMap& object, const QString& key, float& out);
    static bool integerValue(const QVariantMap& object, const QString& key, float& out,
                             const float& defaultValue);
    static bool integerValue(const QVariant& value, double& out);
    static bool integerValue(const QVariantMap& object, const QString& key, double& out);
    static bool integerValue(const QVariantMap& object, const QString& key, double& out,
                             const double& defaultValue);
    static bool integerValue(const QVariant& value, long double& out);
    static bool integerValue(const QVariantMap& object, const QString& key, long double& out);
    static bool integerValue(const QVariantMap& object, const QString& key, long double& out,
                             const long double& defaultValue);
    /** @} */

    /**
     * Any number. A float takes no number beyond its largest finite one. NaN and infinity are
     * always refused: no JSON text has them, but a variant may.
     * @{
     */
    static bool realNumberValue(const QVariant& value, float& out);
    static bool realNumberValue(const QVariantMap& object, const QString& key, float& out);
    static bool realNumberValue(const QVariantMap& object, const QString& key, float& out,
                                const float& defaultValue);
    static bool realNumberValue(const QVariant& value, double& out);
    static bool realNumberValue(const QVariantMap& object, const QString& key, double& out);
    static bool realNumberValue(const QVariantMap& object, const QString& key, double& out,
                                const double& defaultValue);
    static bool realNumberValue(const QVariant& value, long double& out);
    static bool realNumberValue(const QVariantMap& object, const QString& key, long double& out);
    static bool realNumberValue(const QVariantMap& object, const QString& key, long double& out,
                                const long double& defaultValue);
    /** @} */

    /** True or false. @{ */
    static bool booleanValue(const QVariant& value, bool& out);
    static bool booleanValue(const QVariantMap& object, const QString& key, bool& out);
    static bool booleanValue(const QVariantMap& object, const QString& key, bool& out,
                             const bool& defaultValue);
    /** @} */
    /** A string, completely decoded; it may hold U+0000. @{ */
    static bool stringValue(const QVariant& value, QString& out);
    static bool stringValue(const QVariantMap& object, const QString& key, QString& out);
    static bool stringValue(const QVariantMap& object, const QString& key, QString& out,
                            const QString& defaultValue);
    /** @} */
    /**
     * A string of padded base64 (RFC 4648, section 4), without line breaks or blanks; may be empty.
     * @{
     */
    static bool base64EncodedByteArrayValue(const QVariant& value, QByteArray& out);
    static bool base64EncodedByteArrayValue(const QVariantMap& object, const QString& key,
                                            QByteArray& out);
    static bool base64EncodedByteArrayValue(const QVariantMap& object, const QString& key,
                                            QByteArray& out, const QByteArray& defaultValue);
    /** @} */
    /** A string of an even number of hexadecimal digits of either case; may be empty. @{ */
    static bool hexEncodedByteArrayValue(const QVariant& value, QByteArray& out);
    static bool hexEncodedByteArrayValue(const QVariantMap& object, const QString& key,
                                         QByteArray& out);
    static bool hexEncodedByteArrayValue(const QVariantMap& object, const QString& key,
                                         QByteArray& out, const QByteArray& defaultValue);
    /** @} */
    /** An array. @{ */
    static bool listValue(const QVariant& value, QVariantList& out);
    static bool listValue(const QVariantMap& object, const QString& key, QVariantList& out);
    static bool listValue(const QVariantMap& object, const QString& key, QVariantList& out,
                          const QVariantList& defaultValue);
    /** @} */
    /** An object. @{ */
    static bool objectValue(const QVariant& value, QVariantMap& out);
    static bool objectValue(const QVariantMap& object, const QString& key, QVariantMap& out);
    static bool objectValue(const QVariantMap& object, const QString& key, QVariantMap& out,
                            const QVariantMap& defaultValue);
    /** @} */
};

#endif
