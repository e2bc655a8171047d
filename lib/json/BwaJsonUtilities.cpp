// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "json/BwaJsonUtilities.h"

#include <algorithm>
#include <limits>
#include <type_traits>

namespace {

bool isOfType(const QVariant& value, QMetaType::Type type)
{
    return value.userType() == type;
}

template <typename Integer>
bool fits(qulonglong number)
{
    return number <= static_cast<qulonglong>(std::numeric_limits<Integer>::max());
}

template <typename Integer>
bool fits(qlonglong number)
{
    if (number >= 0) {
        return fits<Integer>(static_cast<qulonglong>(number));
    }
    return std::is_signed<Integer>::value &&
        number >= static_cast<qlonglong>(std::numeric_limits<Integer>::min());
}

template <typename Target, typename Number>
bool storeInteger(Number number, Target& out)
{
    if constexpr (std::is_integral<Target>::value) {
        if (!fits<Target>(number)) {
            return false;
        }
    }
    out = static_cast<Target>(number); // every 64-bit integer lies in the range of a float
    return true;
}

template <typename Target>
bool extractInteger(const QVariant& value, Target& out)
{
    if (isOfType(value, QMetaType::ULongLong)) {
        return storeInteger(value.toULongLong(), out);
    }
    return isOfType(value, QMetaType::LongLong) && storeInteger(value.toLongLong(), out);
}

template <typename Target>
bool extractRealNumber(const QVariant& value, Target& out)
{
    if (!isOfType(value, QMetaType::Double)) {
        return extractInteger(value, out);
    }
    using Bounds = std::conditional_t<std::is_same<Target, float>::value, float, double>;
    const double bound = std::numeric_limits<Bounds>::max();
    const double number = value.toDouble();
    if (!(number >= -bound && number <= bound)) {
        return false;
    }
    out = static_cast<Target>(number);
    return true;
}

bool extractBoolean(const QVariant& value, bool& out)
{
    if (!isOfType(value, QMetaType::Bool)) {
        return false;
    }
    out = value.toBool();
    return true;
}

bool extractString(const QVariant& value, QString& out)
{
    if (!isOfType(value, QMetaType::QString)) {
        return false;
    }
    out = value.toString();
    return true;
}

bool extractList(const QVariant& value, QVariantList& out)
{
    if (!isOfType(value, QMetaType::QVariantList)) {
        return false;
    }
    out = value.toList();
    return true;
}

bool extractObject(const QVariant& value, QVariantMap& out)
{
    if (!isOfType(value, QMetaType::QVariantMap)) {
        return false;
    }
    out = value.toMap();
    return true;
}

bool isBetween(QChar character, char first, char last)
{
    return character >= QLatin1Char(first) && character <= QLatin1Char(last);
}

bool isHexDigit(QChar character)
{
    return isBetween(character, '0', '9') || isBetween(character, 'a', 'f') ||
        isBetween(character, 'A', 'F');
}

bool isBase64Character(QChar character)
{
    return isBetween(character, 'A', 'Z') || isBetween(character, 'a', 'z') ||
        isBetween(character, '0', '9') || character == QLatin1Char('+') ||
        character == QLatin1Char('/');
}

bool isHex(const QString& text)
{
    return text.size() % 2 == 0 && std::all_of(text.begin(), text.end(), isHexDigit);
}

// Whether @a text consists of groups of four, of which the last may end in one or two "=".
bool isBase64(const QString& text)
{
    BwaSize size = text.size();
    for (int padding = 0; padding < 2 && size > 0 && text.at(size - 1) == QLatin1Char('=');
         ++padding) {
        --size;
    }
    return text.size() % 4 == 0 &&
        std::all_of(text.begin(), text.begin() + size, isBase64Character);
}

bool extractBase64(const QVariant& value, QByteArray& out)
{
    QString text;
    if (!extractString(value, text) || !isBase64(text)) {
        return false;
    }
    out = QByteArray::fromBase64(text.toLatin1());
    return true;
}

bool extractHex(const QVariant& value, QByteArray& out)
{
    QString text;
    if (!extractString(value, text) || !isHex(text)) {
        return false;
    }
    out = QByteArray::fromHex(text.toLatin1());
    return true;
}

template <typename Target>
using Extract = bool (*)(const QVariant&, Target&);

template <typename Target>
bool extractMember(Extract<Target> extract, const QVariantMap& object, const QString& key,
                   Target& out, const Target* defaultValue)
{
    const auto member = object.constFind(key);
    if (member != object.constEnd()) {
        return extract(member.value(), out);
    }
    if (defaultValue) {
        out = *defaultValue;
    }
    return defaultValue;
}

} // namespace

QVariant BwaJsonUtilities::fieldValue(const QVariantMap& object, const QString& key)
{
    return object.value(key);
}

bool BwaJsonUtilities::isNullValue(const QVariantMap& object, const QString& key)
{
    const auto member = object.constFind(key);
    return member != object.constEnd() && member.value().isNull();
}

// The definitions of the three forms that each extractor has for one target type: from a value,
// from a member that must be there, and from a member that may be missing.
// NOLINTBEGIN(bugprone-macro-parentheses): a type takes no parentheses
#define BWA_DEFINE_EXTRACTOR(name, Type, extract)                                                  \
    bool BwaJsonUtilities::name(const QVariant& value, Type& out)                                  \
    {                                                                                              \
        return extract(value, out);                                                                \
    }                                                                                              \
    bool BwaJsonUtilities::name(const QVariantMap& object, const QString& key, Type& out)          \
    {                                                                                              \
        return extractMember<Type>(extract, object, key, out, nullptr);                            \
    }                                                                                              \
    bool BwaJsonUtilities::name(const QVariantMap& object, const QString& key, Type& out,          \
                                const Type& defaultValue)                                          \
    {                                                                                              \
        return extractMember<Type>(extract, object, key, out, &defaultValue);                      \
    }
// NOLINTEND(bugprone-macro-parentheses)

BWA_DEFINE_EXTRACTOR(integerValue, unsigned char, extractInteger)
BWA_DEFINE_EXTRACTOR(integerValue, signed char, extractInteger)
BWA_DEFINE_EXTRACTOR(integerValue, unsigned short, extractInteger)
BWA_DEFINE_EXTRACTOR(integerValue, short, extractInteger)
BWA_DEFINE_EXTRACTOR(integerValue, unsigned int, extractInteger)
BWA_DEFINE_EXTRACTOR(integerValue, int, extractInteger)
BWA_DEFINE_EXTRACTOR(integerValue, unsigned long long, extractInteger)
BWA_DEFINE_EXTRACTOR(integerValue, long long, extractInteger)
BWA_DEFINE_EXTRACTOR(integerValue, float, extractInteger)
BWA_DEFINE_EXTRACTOR(integerValue, double, extractInteger)
BWA_DEFINE_EXTRACTOR(integerValue, long double, extractInteger)
BWA_DEFINE_EXTRACTOR(realNumberValue, float, extractRealNumber)
BWA_DEFINE_EXTRACTOR(realNumberValue, double, extractRealNumber)
BWA_DEFINE_EXTRACTOR(realNumberValue, long double, extractRealNumber)
BWA_DEFINE_EXTRACTOR(booleanValue, bool, extractBoolean)
BWA_DEFINE_EXTRACTOR(stringValue, QString, extractString)
BWA_DEFINE_EXTRACTOR(base64EncodedByteArrayValue, QByteArray, extractBase64)
BWA_DEFINE_EXTRACTOR(hexEncodedByteArrayValue, QByteArray, extractHex)
BWA_DEFINE_EXTRACTOR(listValue, QVariantList, extractList)
BWA_DEFINE_EXTRACTOR(objectValue, QVariantMap, extractObject)
