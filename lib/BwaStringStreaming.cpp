// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "BwaStringStreaming.h"

#include <QString>

#include <ostream>

std::ostream& operator<<(std::ostream& stream, const QString& text)
{
    return stream << text.toLatin1().constData();
}
