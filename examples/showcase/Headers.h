// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef HEADERS_H
#define HEADERS_H

#include <bwebapi/rest.h>

/**
 * @a reply with what makes browsers careful: they load nothing from elsewhere, run no script within
 * a page, show it in no frame, and guess no types. @a copies says what caches may do with it;
 * what is personal is kept nowhere.
 */
BwaRestReply guarded(BwaRestReply reply, const QByteArray& copies = "no-store");

#endif
