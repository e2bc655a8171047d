// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWASTRINGSTREAMING_H
#define BWASTRINGSTREAMING_H

#include "BwaGlobal.h"

#include <iosfwd>

class QString;

/**
 * Writes @a text in Latin-1, as a zero-terminated character string: output stops at the first
 * U+0000, and a character beyond Latin-1 comes out as "?". Never flushes.
 */
BWA_EXPORT std::ostream& operator<<(std::ostream& stream, const QString& text);

#endif
