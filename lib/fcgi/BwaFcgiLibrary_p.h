// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAFCGILIBRARY_P_H
#define BWAFCGILIBRARY_P_H

/** libfcgi as a whole, of which each process has one. */
namespace BwaFcgiLibrary {

/**
 * Sets libfcgi up, once. It would take SIGTERM and SIGUSR1 for itself, so that the process outlives
 * its SIGTERM: their dispositions stay as they were, and one that comes meanwhile is not lost.
 */
void initialize();

/** Shuts libfcgi down, for good: no listener of this process can accept any more. */
void shutDown();
/** Whether that has been done. */
bool isShutDown();

} // namespace BwaFcgiLibrary

#endif
