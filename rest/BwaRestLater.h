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
 * A handle to answer a call after its handler has returned. Copies are handles of the same call;
 * any thread may use them.
 *
 *     api.get("/temperature", [&](const BwaRestCall& call) -> BwaRestReply {
 *         const BwaRestLater later = call.later();
 *         sensor.read([later](double value) { later.reply(QVariantMap{{"celsius", value}}); });
 *         return later;
 *     });
 *
 * The first reply is sent. When the last handle is destroyed without a reply, the call is answered
 * with 500, and that is logged; when the deadline passes or the service is destroyed, with 503.
 */
class BWA_REST_EXPORT BwaRestLater
{
public:
    /**
     * Has the listener's thread send @a reply. Returns false, and has no effect, when the call has
     * ended.
     */
    bool reply(const BwaRestReply& reply) const;
    /** Whether nobody has replied yet and the client still waits. */
    bool isOpen() const;
    /**
     * Has @a function called once, in the listener's thread, when the call ends without a reply
     * through a handle: the client has gone, the deadline is over, the service is destroyed, or the
     * handler has returned another reply. When the call has ended that way already, it is called
     * soon. It must not throw.
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
