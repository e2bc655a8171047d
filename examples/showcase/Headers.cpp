// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "Headers.h"

BwaRestReply guarded(BwaRestReply reply, const QByteArray& copies)
{
    return reply.header("Cache-Control", copies)
        .header("Content-Security-Policy",
                "default-src 'none'; connect-src 'self'; img-src 'self' data:; script-src 'self'; "
                "style-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'")
        .header("Referrer-Policy", "no-referrer")
        .header("X-Content-Type-Options", "nosniff");
}
