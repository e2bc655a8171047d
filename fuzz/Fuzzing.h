// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef FUZZING_H
#define FUZZING_H

#include <QByteArray>

/**
 * One run of a fuzzer, which each of them defines: does something with @a input and states by
 * GoogleTest's expectations what must hold. One that does not hold throws, which ends the run as a
 * crash does.
 */
void fuzz(const QByteArray& input);

#endif
