// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef TEXTS_H
#define TEXTS_H

#include <QByteArray>
#include <QList>
#include <QString>

/**
 * The texts that @a bytes may reach a parser as: every one in Latin-1, as variables do, and in
 * UTF-8, as the headers within a multipart body do, where that differs. NULs are kept.
 */
inline QList<QString> textsOf(const QByteArray& bytes)
{
    QList<QString> texts = {QString::fromLatin1(bytes.constData(), bytes.size())};
    const QString wide = QString::fromUtf8(bytes.constData(), bytes.size());
    if (wide != texts.first()) {
        texts.append(wide);
    }
    return texts;
}

/** What a variable of that value gives: Latin-1 up to the first NUL. */
inline QString variableText(const QByteArray& bytes)
{
    return QString::fromLatin1(bytes.constData());
}

#endif
