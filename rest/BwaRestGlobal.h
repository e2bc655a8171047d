// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWARESTGLOBAL_H
#define BWARESTGLOBAL_H

#include "BwaGlobal.h"

/** Marks what this library offers; everything else in it is hidden. */
#ifdef BWA_REST_LIBRARY
#define BWA_REST_EXPORT Q_DECL_EXPORT
#else
#define BWA_REST_EXPORT Q_DECL_IMPORT
#endif

#endif
