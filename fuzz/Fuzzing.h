// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef FUZZING_H
#define FUZZING_H

#include <QByteArray>

/**
 * One run of a fuzzer; each fuzzer defines this function. It does something with @a input and
 * checks the result by GoogleTest's expectations. One that fails throws, which ends the run as a
 * crash does.
 */
void fuzz(const QByteArray& input);

#endif
