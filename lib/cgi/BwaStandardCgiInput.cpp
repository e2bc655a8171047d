// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "cgi/BwaStandardCgiInput.h"

#include "cgi/BwaGrowingRead_p.h"

#include <QByteArray>
#include <QString>

#include <iostream>

BwaStandardCgiInput::BwaStandardCgiInput() = default;

BwaStandardCgiInput::~BwaStandardCgiInput() = default;

QByteArray BwaStandardCgiInput::read(unsigned int size)
{
    return growingRead(size, [](char* buffer, int length) {
        return static_cast<int>(std::cin.rdbuf()->sgetn(buffer, length));
    });
}

QString BwaStandardCgiInput::getenv(const QString& name)
{
    const QByteArray value = qgetenv(name.toLatin1().constData());
    return QString::fromLatin1(value.constData());
}
