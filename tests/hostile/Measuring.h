// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef MEASURING_H
#define MEASURING_H

#include <QtGlobal>

#include <functional>

/** What a call took. */
struct Cost {
    double milliseconds = 0; // of processor time
    qint64 bytes = 0;        // of resident memory, at the most, above what there was before
};

/**
 * Calls @a call and keeps what it took, for measuredCost().
 *
 * @throws std::runtime_error when it does not return true: an input that was refused at once, or
 *         taken where it should not be, measures nothing
 */
void measure(const std::function<bool()>& call);

/** What the last call took. */
Cost measuredCost();

#endif
