// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef FAULTFIXTURE_H
#define FAULTFIXTURE_H

#include "support/ListenerFixture.h"

#include <functional>

/** How often a fault is tried: BWA_FAULT_ROUNDS of the environment, or 20. */
int faultRounds();

/** Waits until the other end has taken everything that @a client has sent; Unix sockets only. */
void waitUntilRead(const FcgiClient& client);

/** A listener on a Unix socket whose service /api answers with the number of form fields. */
class FaultFixture : public ListenerFixture
{
public:
    FaultFixture();

protected:
    static FcgiParameters formRequest(const QByteArray& body);
    /** To be called from the thread of the web server. */
    void expectGoodAnswer() const;
    static void expectGoodAnswer(FcgiClient& client);
};

#endif
