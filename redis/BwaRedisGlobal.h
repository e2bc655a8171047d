// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAREDISGLOBAL_H
#define BWAREDISGLOBAL_H

#include "BwaGlobal.h"

/** Marks what this library offers; everything else in it is hidden. */
#ifdef BWA_REDIS_LIBRARY
#define BWA_REDIS_EXPORT Q_DECL_EXPORT
#else
#define BWA_REDIS_EXPORT Q_DECL_IMPORT
#endif

#endif
