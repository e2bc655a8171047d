// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWASESSIONCREDENTIALS_H
#define BWASESSIONCREDENTIALS_H

#include <QUuid>

/**
 * What a client presents to prove its session, null where it presents none. A text that QUuid reads
 * as a UUID may lack braces and go on with other text; any other one is null.
 */
struct BwaSessionCredentials {
    QUuid sessionId; /**< The id of the session. */
    QUuid token;     /**< The token of the session. */
};

#endif
