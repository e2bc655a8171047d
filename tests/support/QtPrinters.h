// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef QTPRINTERS_H
#define QTPRINTERS_H

#include <QByteArray>
#include <QString>

#include <ostream>

// How GoogleTest shows Qt's texts when an expectation fails. Null and empty look different.

inline void PrintTo(const QString& text, std::ostream* stream)
{
    if (text.isNull()) {
        *stream << "null QString";
    } else {
        *stream << '"' << text.toUtf8().constData() << '"';
    }
}

inline void PrintTo(const QByteArray& bytes, std::ostream* stream)
{
    *stream << '"' << bytes.toPercentEncoding(" !\"#$&'()*+,/:;<=>?@[\\]^`{|}").constData() << '"';
}

#endif
