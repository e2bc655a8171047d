// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAFCGILIBRARY_P_H
#define BWAFCGILIBRARY_P_H

/** Sets libfcgi up and shuts it down, for the whole process. */
namespace BwaFcgiLibrary {

/**
 * Sets libfcgi up at the first call. libfcgi would install handlers for SIGTERM and SIGUSR1, and
 * SIGTERM would no longer end the process. This keeps the dispositions of both signals as they
 * were; a signal that arrives meanwhile is not lost.
 */
void initialize();

/** Shuts libfcgi down, for good: no listener of this process can accept any more. */
void shutDown();
/** Whether shutDown() has been called. */
bool isShutDown();

} // namespace BwaFcgiLibrary

#endif
