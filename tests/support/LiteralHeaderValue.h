// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef LITERALHEADERVALUE_H
#define LITERALHEADERVALUE_H

#include "support/LiteralUrlEncoding.h"

#include <QHash>
#include <QList>
#include <QPair>
#include <QRegExp>
#include <QString>

// Header values parsed as plainly as the rules read, without regard to speed. The library must
// agree.

/** The next match at or after @a from; -1 when there is none, also for positions past the end. */
inline int literalFind(const char* pattern, const QString& text, int from)
{
    return from >= text.size() ? -1 : QRegExp(QString::fromLatin1(pattern)).indexIn(text, from);
}

/** Empty text that is not null stays so, whatever it was cut from. */
inline QString literalTrimmed(const QString& text)
{
    return text.isEmpty() ? QString::fromLatin1("") : text.trimmed();
}

/**
 * Reads a quoted string whose opening quote stands before @a position.
 *
 * @return the position of the match that ends the parameter; -1 at the end of the text.
 */
inline int literalQuotedValue(const QString& text, int position, QString* value)
{
    while (true) {
        const int match = literalFind("[\\\\\"]", text, position);
        if (match < 0) {
            value->append(position < text.size() ? text.mid(position) : QString());
            return -1;
        }
        value->append(text.mid(position, match - position));
        if (text.at(match) == QLatin1Char('"')) {
            return literalFind("[;,]", text, match + 1);
        }
        value->append(match + 1 < text.size() ? text.at(match + 1) : QChar(0));
        position = match + 2;
    }
}

/** Reads a value that stands at @a position; returns as literalQuotedValue() does. */
inline int literalParameterValue(const QString& text, int position, QString* value)
{
    *value = QString::fromLatin1("");
    if (position < text.size() && text.at(position) == QLatin1Char('"')) {
        return literalQuotedValue(text, position + 1, value);
    }
    const int match = literalFind("[;,]", text, position);
    *value = literalTrimmed(literalSlice(text, position, match));
    return match;
}

/** Reads the parameters behind the semicolon at @a match; returns as literalQuotedValue() does. */
inline int literalParameters(const QString& text, int match, QHash<QString, QString>* parameters)
{
    while (match >= 0 && text.at(match) == QLatin1Char(';')) {
        const int start = match + 1;
        match = literalFind("[=;,]", text, start);
        const QString name = literalTrimmed(literalSlice(text, start, match));
        QString value;
        if (match >= 0 && text.at(match) == QLatin1Char('=')) {
            match = literalParameterValue(text, match + 1, &value);
        }
        parameters->insert(name, value);
    }
    return match;
}

inline QList<QPair<QString, QHash<QString, QString>>> literalHeaderValue(const QString& text)
{
    QList<QPair<QString, QHash<QString, QString>>> elements;
    int position = 0;
    while (true) {
        int match = literalFind("[;,]", text, position);
        const QString mainValue = literalTrimmed(literalSlice(text, position, match));
        QHash<QString, QString> parameters;
        match = literalParameters(text, match, &parameters);
        elements.append(qMakePair(mainValue, parameters));
        if (match < 0) {
            return elements;
        }
        position = match + 1;
    }
}

#endif
