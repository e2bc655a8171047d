// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAJSONPARSER_P_H
#define BWAJSONPARSER_P_H

#include "BwaGlobal.h"

#include <QByteArray>
#include <QVariant>

/** The seam to the JSON parser (RFC 8259). Exported for the tests only. */
namespace BwaJsonParser {

/**
 * The value of @a text, which is UTF-8 without a byte order mark.
 *
 * An object becomes a QVariantMap (of a repeated key the last value counts), an array a
 * QVariantList, a string a QString that is never null, an integer a qulonglong from 0 on and a
 * qlonglong below, any other number a double, null an invalid variant.
 *
 * @param ok not null; false, with an invalid variant, when the text is no JSON, holds an integer of
 *        more than 64 bits or a number that no double can hold, or is nested more than 1024 deep
 */
BWA_EXPORT QVariant parse(const QByteArray& text, bool* ok);

} // namespace BwaJsonParser

#endif
