// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAFCGIFINISH_P_H
#define BWAFCGIFINISH_P_H

#include <fcgiapp.h>

/**
 * Completes the exchange of @a request with the web server, closes the connection whatever the web
 * server would like, and deletes the request, which must come from plain new.
 */
void finishAndDelete(FCGX_Request* request);

/** The same for a request that nobody has answered: the connection is closed at once. */
void closeAndDelete(FCGX_Request* request);

/**
 * Frees what the request that was finished last has left: its parameters. For the accepting thread,
 * which has allocated them; it does so before it waits for the next request.
 */
void freeFinishedRequest();

/**
 * How long, in milliseconds, a finished connection waits at most for the web server to close its
 * side: LIBFCGI_OS_CLOSE_POLL_TIMEOUT of the environment, else 200.
 */
int lingerTime();

#endif
