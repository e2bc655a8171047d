// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef LITERALURLENCODING_H
#define LITERALURLENCODING_H

#include <QMultiHash>
#include <QRegExp>
#include <QString>

// URL decoding as plainly as its rules read, without regard to speed. The library must agree.

/** The text from @a from up to @a to, or up to the end when @a to is negative. */
inline QString literalSlice(const QString& text, int from, int to)
{
    return to < 0 ? text.mid(from) : text.mid(from, to - from);
}

inline QString literalUrlDecode(const QString& text)
{
    QString decoded;
    int position = 0;
    while (position < text.size()) {
        const QChar character = text.at(position);
        bool isEscape = false;
        ushort code = 0;
        if (character == QLatin1Char('%') && position + 2 < text.size()) {
            code = text.mid(position + 1, 2).toUShort(&isEscape, 16);
        }
        if (isEscape) {
            decoded.append(QChar(code));
            position += 3;
        } else {
            decoded.append(character == QLatin1Char('+') ? QLatin1Char(' ') : character);
            position += 1;
        }
    }
    return decoded;
}

inline QMultiHash<QString, QString> literalUrlEncodedVariables(const QString& text)
{
    const QRegExp nameEnd(QStringLiteral("[=&;]"));
    const QRegExp valueEnd(QStringLiteral("[&;]"));
    QMultiHash<QString, QString> variables;
    int position = 0;
    while (true) {
        int match = nameEnd.indexIn(text, position);
        const QString name = literalUrlDecode(literalSlice(text, position, match));
        QString value = QString::fromLatin1("");
        if (match >= 0 && text.at(match) == QLatin1Char('=')) {
            const int start = match + 1;
            match = valueEnd.indexIn(text, start);
            value = literalUrlDecode(literalSlice(text, start, match));
        }
        variables.insert(name, value);
        if (match < 0) {
            return variables;
        }
        position = match + 1;
    }
}

#endif
