// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWARESTLATER_H
#define BWARESTLATER_H

#include "rest/BwaRestGlobal.h"

#include <functional>
#include <memory>

class BwaRestLaterState;
class BwaRestReply;

/**
 * The right to answer a call after its handler has returned. Copies share it; any thread may use
 * them.
 *
 *     api.get("/temperature", [&](const BwaRestCall& call) -> BwaRestReply {
 *         const BwaRestLater later = call.later();
 *         sensor.read([later](double value) { later.reply(QVariantMap{{"celsius", value}}); });
 *         return later;
 *     });
 *
 * The first reply is sent. A call whose last copy goes without one is answered with 500, which is
 * logged; one whose deadline passes, or whose service goes, with 503.
 */
class BWA_REST_EXPORT BwaRestLater
{
public:
    /** Has the listener's thread send @a reply. False, and without effect, when it comes too late.
     */
    bool reply(const BwaRestReply& reply) const;
    /** Nobody has replied, and somebody still waits. */
    bool isOpen() const;
    /**
     * Calls @a function once, in the listener's thread, when the call ends without a reply by this:
     * the client has gone, the deadline is over, the service goes, or the handler has answered in
     * another way. When that has been so already, it is called soon. It must throw nothing.
     */
    void onGone(const std::function<void()>& function) const;

private:
    friend class BwaRestCall;
    friend class BwaRestEvents;
    friend class BwaRestReply;

    explicit BwaRestLater(const std::shared_ptr<BwaRestLaterState>& state);

    std::shared_ptr<BwaRestLaterState> m_state; // never null
};

#endif
