// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAHEADERVALUEPARSER_P_H
#define BWAHEADERVALUEPARSER_P_H

#include "BwaGlobal.h"

#include <QHash>
#include <QList>
#include <QPair>
#include <QString>

/**
 * Parses a header value into its elements. The example has two:
 *
 *     text/html; charset="utf\-8"; q=1, text/plain
 *
 *
 * It scans once, from left to right: m_position is after the separator that was met last, and
 * m_separator says which one that was.
 */
class BwaHeaderValueParser
{
public:
    using Parameters = QHash<QString, QString>;
    using Element = QPair<QString, Parameters>;
    using NameFilter = bool (*)(const QString& name);

    /**
     * @a text must outlive the parser. With a filter, only the parameters whose names it accepts
     * are kept. Give a filter wherever a client may send a long @a text: without one, many names
     * that collide in the hash would take quadratic time.
     */
    explicit BwaHeaderValueParser(const QString& text, NameFilter isWanted = nullptr);

    /** All elements that have not been taken yet; at least one. */
    QList<Element> takeElements();
    /** The next element; what is after it is not scanned. */
    Element takeElement();

private:
    template <char... Separators>
    QString takeUntil();
    Parameters takeParameters();
    QString takeParameterValue();
    QString takeQuotedString();

    const QString& m_text; // not owned
    NameFilter m_isWanted; // null: all names are wanted
    BwaSize m_position;
    QChar m_separator; // null at the end of the text
};

#endif
