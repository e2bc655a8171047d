// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef DOCUMENTTABLE_H
#define DOCUMENTTABLE_H

#include <QFile>
#include <QString>
#include <QStringList>

#include <gtest/gtest.h>

/** The rows of the table of a document in docs/site that begins with the cells @a heading. */
inline QList<QStringList> tableOf(const char* document, const QString& heading)
{
    QFile file(QStringLiteral(BWA_SITE_DIR "/") + QLatin1String(document));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << document;
    const QString text = QString::fromUtf8(file.readAll());
    const auto begin = text.indexOf(QStringLiteral("\n| ") + heading);
    EXPECT_GE(begin, 0) << document << " has no such table";
    const auto end = text.indexOf(QStringLiteral("\n\n"), begin);
    QList<QStringList> rows;
    const QStringList lines =
        text.mid(begin + 1, end - begin - 1).trimmed().split(QLatin1Char('\n'));
    for (const QString& line : lines.mid(2)) { // below the heading and its rule
        rows.append(line.mid(2, line.size() - 4).split(QStringLiteral(" | ")));
    }
    return rows;
}

/** What a cell holds between its backticks. */
inline QString codeOf(const QString& cell)
{
    return cell.section(QLatin1Char('`'), 1, 1);
}

#endif
