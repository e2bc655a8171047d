// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWASTRINGSTREAMING_H
#define BWASTRINGSTREAMING_H

#include "BwaGlobal.h"

#include <iosfwd>

class QString;

/**
 * Writes @a text in Latin-1 up to its first U+0000, with "?" for each character that Latin-1 does
 * not have. Does not flush.
 */
BWA_EXPORT std::ostream& operator<<(std::ostream& stream, const QString& text);

#endif
