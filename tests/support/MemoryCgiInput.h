// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef MEMORYCGIINPUT_H
#define MEMORYCGIINPUT_H

#include "cgi/BwaAbstractCgiInput.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>

#include <algorithm>

/** A request whose variables and body are in memory. It records what is read. */
class MemoryCgiInput : public BwaAbstractCgiInput
{
public:
    MemoryCgiInput() = default;
    /** A POST of @a body with its true length. */
    MemoryCgiInput(const char* contentType, const QByteArray& content)
        : body(content)
    {
        set("CONTENT_TYPE", contentType);
        set("CONTENT_LENGTH", QByteArray::number(content.size()).constData());
    }

    void set(const char* name, const char* value)
    {
        variables.insert(QString::fromLatin1(name), QString::fromLatin1(value));
    }

    QByteArray read(unsigned int size) override
    {
        readSizes.append(size);
        const auto left = static_cast<unsigned int>(body.size() - position);
        QByteArray bytes = body.mid(position, static_cast<int>(std::min(size, left)));
        position += bytes.size();
        return bytes;
    }

    QString getenv(const QString& name) override
    {
        variablesRead.append(name);
        return variables.value(name);
    }

    QHash<QString, QString> variables;
    QByteArray body;
    int position = 0;
    QList<unsigned int> readSizes;
    QList<QString> variablesRead;
};

#endif
