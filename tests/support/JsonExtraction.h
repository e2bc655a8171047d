// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef JSONEXTRACTION_H
#define JSONEXTRACTION_H

#include "json/BwaJsonUtilities.h"

#include <QDebug>

#include <cstdio>
#include <string>
#include <type_traits>

/** The three forms of one extractor. */
template <typename Target>
struct JsonExtractor {
    bool (*fromValue)(const QVariant&, Target&);
    bool (*fromMember)(const QVariantMap&, const QString&, Target&);
    bool (*fromMemberOr)(const QVariantMap&, const QString&, Target&, const Target&);
};

/** What an output holds before an extraction; no test extracts it. */
template <typename Target>
Target canary()
{
    if constexpr (std::is_arithmetic_v<Target>) {
        return static_cast<Target>(99);
    } else if constexpr (std::is_same_v<Target, QVariantList>) {
        return QVariantList() << QString::fromLatin1("canary");
    } else if constexpr (std::is_same_v<Target, QVariantMap>) {
        return QVariantMap{{QString::fromLatin1("canary"), true}};
    } else {
        return Target("canary", 6);
    }
}

template <>
inline bool canary<bool>()
{
    return true;
}

template <>
inline QString canary<QString>()
{
    return QString::fromLatin1("canary");
}

/** A number in decimal, exactly enough for its type; everything else as Qt's debug stream has it.
 */
template <typename Target>
std::string textOf(const Target& value)
{
    if constexpr (std::is_same_v<Target, bool>) {
        return value ? "true" : "false";
    } else if constexpr (std::is_integral_v<Target>) {
        return std::to_string(value);
    } else if constexpr (std::is_floating_point_v<Target>) {
        char text[64];
        const int digits = std::is_same_v<Target, float> ? 9 : 17;
        std::snprintf(text, sizeof text, "%.*Lg", digits, static_cast<long double>(value));
        return text;
    } else {
        QString text;
        QDebug(&text).nospace() << value;
        return text.toStdString();
    }
}

/** The value that an extraction has stored, or "refused". */
template <typename Target>
std::string outcomeText(bool accepted, const Target& out, const Target& before)
{
    if (accepted) {
        return textOf(out);
    }
    return out == before ? "refused" : "refused, but wrote " + textOf(out);
}

/** What all three forms make of a value that is there, or what each makes of it if they differ. */
template <typename Target>
std::string extracted(const JsonExtractor<Target>& extractor, const QVariant& value,
                      const Target& before = canary<Target>())
{
    const QString key = QString::fromLatin1("key");
    const QVariantMap object{{key, value}};
    Target first = before;
    Target second = before;
    Target third = before;

    std::string fromValue = outcomeText(extractor.fromValue(value, first), first, before);
    const std::string fromMember =
        outcomeText(extractor.fromMember(object, key, second), second, before);
    const std::string fromMemberOr =
        outcomeText(extractor.fromMemberOr(object, key, third, Target()), third, before);

    if (fromValue == fromMember && fromValue == fromMemberOr) {
        return fromValue;
    }
    return "value: " + fromValue + ", member: " + fromMember + ", member or: " + fromMemberOr;
}

template <typename Target>
constexpr JsonExtractor<Target> integerExtractor{&BwaJsonUtilities::integerValue,
                                                 &BwaJsonUtilities::integerValue,
                                                 &BwaJsonUtilities::integerValue};

template <typename Target>
constexpr JsonExtractor<Target> realNumberExtractor{&BwaJsonUtilities::realNumberValue,
                                                    &BwaJsonUtilities::realNumberValue,
                                                    &BwaJsonUtilities::realNumberValue};

constexpr JsonExtractor<bool> booleanExtractor{&BwaJsonUtilities::booleanValue,
                                               &BwaJsonUtilities::booleanValue,
                                               &BwaJsonUtilities::booleanValue};

constexpr JsonExtractor<QString> stringExtractor{
    &BwaJsonUtilities::stringValue, &BwaJsonUtilities::stringValue, &BwaJsonUtilities::stringValue};

constexpr JsonExtractor<QByteArray> base64Extractor{&BwaJsonUtilities::base64EncodedByteArrayValue,
                                                    &BwaJsonUtilities::base64EncodedByteArrayValue,
                                                    &BwaJsonUtilities::base64EncodedByteArrayValue};

constexpr JsonExtractor<QByteArray> hexExtractor{&BwaJsonUtilities::hexEncodedByteArrayValue,
                                                 &BwaJsonUtilities::hexEncodedByteArrayValue,
                                                 &BwaJsonUtilities::hexEncodedByteArrayValue};

constexpr JsonExtractor<QVariantList> listExtractor{
    &BwaJsonUtilities::listValue, &BwaJsonUtilities::listValue, &BwaJsonUtilities::listValue};

constexpr JsonExtractor<QVariantMap> objectExtractor{
    &BwaJsonUtilities::objectValue, &BwaJsonUtilities::objectValue, &BwaJsonUtilities::objectValue};

#endif
