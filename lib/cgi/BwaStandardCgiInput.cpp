// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "cgi/BwaStandardCgiInput.h"

#include "cgi/BwaGrowingRead_p.h"

#include <QByteArray>
#include <QString>

#include <iostream>

namespace {

// A buffer of its own, which std::ios::sync_with_stdio(false) gives std::cin, throws when the
// descriptor cannot be read. Here that is the end of the input.
int readPiece(char* buffer, int length)
{
    try {
        return static_cast<int>(std::cin.rdbuf()->sgetn(buffer, length));
    } catch (const std::ios_base::failure&) {
        return 0;
    }
}

} // namespace

BwaStandardCgiInput::BwaStandardCgiInput() = default;

BwaStandardCgiInput::~BwaStandardCgiInput() = default;

QByteArray BwaStandardCgiInput::read(unsigned int size)
{
    return growingRead(size, readPiece);
}

QString BwaStandardCgiInput::getenv(const QString& name)
{
    const QByteArray value = qgetenv(name.toLatin1().constData());
    return QString::fromLatin1(value.constData());
}
