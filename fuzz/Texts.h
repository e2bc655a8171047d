// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef TEXTS_H
#define TEXTS_H

#include <QByteArray>
#include <QList>
#include <QString>

/**
 * The texts that a parser may get for @a bytes: decoded from Latin-1, as variables are, and from
 * UTF-8, as headers in a multipart body are, if that differs. NULs are kept.
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

/** The text of a variable with that value: Latin-1 up to the first NUL. */
inline QString variableText(const QByteArray& bytes)
{
    return QString::fromLatin1(bytes.constData());
}

#endif
