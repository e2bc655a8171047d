// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAGLOBAL_H
#define BWAGLOBAL_H

#include <QByteArray>

/** Marks what the shared library offers; everything else in it is hidden. */
#ifdef BWA_LIBRARY
#define BWA_EXPORT Q_DECL_EXPORT
#else
#define BWA_EXPORT Q_DECL_IMPORT
#endif

/** What Qt counts bytes, characters and elements in: int up to Qt 5, as wide as a pointer in Qt 6.
 */
using BwaSize = decltype(QByteArray().size());

#endif
