// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAGLOBAL_H
#define BWAGLOBAL_H

#include <QtGlobal>

/** Marks what the shared library offers; everything else in it is hidden. */
#ifdef BWA_LIBRARY
#define BWA_EXPORT Q_DECL_EXPORT
#else
#define BWA_EXPORT Q_DECL_IMPORT
#endif

#endif
