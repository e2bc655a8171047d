// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef JSONDESCRIPTION_H
#define JSONDESCRIPTION_H

#include <QVariant>

#include <cstdio>
#include <string>

inline std::string description(const QVariant& value);

// Tells -0 from 0.
inline std::string doubleText(double number)
{
    char text[32];
    std::snprintf(text, sizeof(text), "%.17g", number);
    return text;
}

inline std::string description(const QVariantList& list)
{
    std::string text;
    for (const QVariant& element : list) {
        text += (text.empty() ? "" : ", ") + description(element);
    }
    return "[" + text + "]";
}

inline std::string description(const QVariantMap& map)
{
    std::string text;
    for (auto entry = map.constBegin(); entry != map.constEnd(); ++entry) {
        text += (text.empty() ? "" : ", ") + entry.key().toStdString() + ": " +
            description(entry.value());
    }
    return "{" + text + "}";
}

/**
 * What a parsed JSON value holds, types included: "{a: qulonglong 1, b: [string x]}". Comparing
 * variants would not do, as it converts: the text "1" equals the number 1.
 */
inline std::string description(const QVariant& value)
{
    switch (value.userType()) {
    case QMetaType::UnknownType:
        return "invalid";
    case QMetaType::Bool:
        return value.toBool() ? "true" : "false";
    case QMetaType::LongLong:
        return "qlonglong " + std::to_string(value.toLongLong());
    case QMetaType::ULongLong:
        return "qulonglong " + std::to_string(value.toULongLong());
    case QMetaType::Double:
        return "double " + doubleText(value.toDouble());
    case QMetaType::QString:
        return (value.toString().isNull() ? "null string " : "string ") +
            value.toString().toStdString();
    case QMetaType::QVariantList:
        return description(value.toList());
    case QMetaType::QVariantMap:
        return description(value.toMap());
    default:
        return std::string("unexpected type ") + value.typeName();
    }
}

#endif
