// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef SHOWNTEXT_H
#define SHOWNTEXT_H

#include <QHash>
#include <QList>
#include <QMultiHash>
#include <QPair>
#include <QString>

#include <algorithm>
#include <string>
#include <utility>

// Parsed values as one readable text, so that a test compares a whole result at once. A null text
// is shown as <null>; whatever is not printable ASCII as \uXXXX.

inline std::string shown(const QString& text)
{
    if (text.isNull()) {
        return "<null>";
    }
    std::string result;
    for (const QChar character : text) {
        const int code = character.unicode();
        if (code >= 0x20 && code < 0x7f) {
            result += static_cast<char>(code);
        } else {
            result += QString::asprintf("\\u%04X", static_cast<unsigned int>(code)).toStdString();
        }
    }
    return result;
}

/** A name, for which null and empty are the same. */
inline std::string shownName(const QString& name)
{
    return name.isEmpty() ? std::string() : shown(name);
}

/** The variables sorted by name, each with its values last first: "a=2,1 b=". */
inline std::string shownVariables(const QMultiHash<QString, QString>& variables)
{
    QList<QString> names = variables.uniqueKeys();
    std::sort(names.begin(), names.end());
    std::string result;
    for (const QString& name : std::as_const(names)) {
        result += (result.empty() ? "" : " ") + shownName(name) + "=";
        const QList<QString> values = variables.values(name);
        for (int index = 0; index < values.size(); ++index) {
            result += (index == 0 ? "" : ",") + shown(values.at(index));
        }
    }
    return result;
}

/** One element of a header value, with its parameters sorted by name:
 * "text/html{charset=utf-8;q=1}". */
inline std::string shownElement(const QPair<QString, QHash<QString, QString>>& element)
{
    QList<QString> names = element.second.keys();
    std::sort(names.begin(), names.end());
    std::string result;
    for (const QString& name : std::as_const(names)) {
        result +=
            (result.empty() ? "" : ";") + shownName(name) + "=" + shown(element.second.value(name));
    }
    return shownName(element.first) + "{" + result + "}";
}

inline std::string shownElements(const QList<QPair<QString, QHash<QString, QString>>>& elements)
{
    std::string result;
    for (const auto& element : elements) {
        result += shownElement(element);
    }
    return result;
}

#endif
