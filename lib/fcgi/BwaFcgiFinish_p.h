// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAFCGIFINISH_P_H
#define BWAFCGIFINISH_P_H

#include <fcgiapp.h>

/**
 * Completes the exchange of @a request with the web server, closes the connection whatever the web
 * server would like, and deletes the request, which must come from plain new.
 *
 * The memory may be kept until freeFinishedRequests() is called.
 */
void finishAndDelete(FCGX_Request* request);

/**
 * Frees the memory of requests that have been finished. The accepting thread calls it before it
 * allocates the next request: memory that the same thread allocates and frees is cheaper.
 */
void freeFinishedRequests();

/**
 * How long, in milliseconds, a finished connection waits at most for the web server to close its
 * side: LIBFCGI_OS_CLOSE_POLL_TIMEOUT of the environment, else 200.
 */
int lingerTime();

#endif
