// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWASESSIONCREDENTIALS_H
#define BWASESSIONCREDENTIALS_H

#include <QUuid>

/**
 * What a client presents to prove its session. A part is null when the client sends none, or a text
 * that is no UUID. As QUuid reads them, UUIDs may lack their braces, and other text may follow
 * them.
 */
struct BwaSessionCredentials {
    QUuid sessionId; /**< The id of the session. */
    QUuid token;     /**< The token of the session. */
};

#endif
