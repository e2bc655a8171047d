// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "cgi/BwaStandardCgiInput.h"

#include "cgi/BwaReadInPieces_p.h"

#include <QByteArray>
#include <QString>

#include <iostream>

namespace {

// After std::ios::sync_with_stdio(false), std::cin has a buffer that throws when the descriptor
// cannot be read. That counts as the end of the input.
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
    return BwaReadInPieces::read(size, readPiece);
}

QString BwaStandardCgiInput::getenv(const QString& name)
{
    const QByteArray value = qgetenv(name.toLatin1().constData());
    return QString::fromLatin1(value.constData());
}
