// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAGLOBAL_H
#define BWAGLOBAL_H

#include <QByteArray>

/** Marks what the shared library offers to programs; everything else in it is hidden. */
#ifdef BWA_LIBRARY
#define BWA_EXPORT Q_DECL_EXPORT
#else
#define BWA_EXPORT Q_DECL_IMPORT
#endif

/** Marks a private function of an exported class: hidden as well, so that it may change. */
#define BWA_HIDDEN Q_DECL_HIDDEN

/** The type in which Qt counts: int in Qt 5, an integer as wide as a pointer in Qt 6. */
using BwaSize = decltype(QByteArray().size());

#endif
