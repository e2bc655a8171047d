// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWARESTEVENTS_H
#define BWARESTEVENTS_H

#include "rest/BwaRestGlobal.h"
#include "rest/BwaRestReply.h"

#include <QString>
#include <QVariant>

#include <memory>

class BwaRestCall;

/**
 * A topic, to which clients listen with an EventSource: server-sent events (HTML standard, 9.2).
 *
 *     BwaRestEvents temperatures(BwaRestEvents::LatestWins);
 *     api.get("/temperatures", [&](const BwaRestCall& call) { return temperatures.join(call); });
 *     sensor.onValue([&](double value) { temperatures.send(QVariantMap{{"celsius", value}}); });
 *
 * An event is written as text once, for all clients. Its data is one line of JSON, its id a text
 * that no other event has. The last events are kept, once for all clients: a client that takes
 * nothing for a while finds them afterwards, and so does one that comes back with Last-Event-ID.
 *
 * To be made, joined and destroyed in the listener's thread. The streams end with the topic, and
 * when their service is stopping.
 */
class BWA_REST_EXPORT BwaRestEvents
{
    Q_DISABLE_COPY(BwaRestEvents)

public:
    /** What becomes of a client that has not taken an event as soon as the next one is sent. */
    enum Slow {
        LatestWins, /**< Gets the last event alone: for states, such as a temperature. */
        DropOldest, /**< Misses those that are not kept any more: for news. */
        EndSlow     /**< Its stream ends when it would miss one; browsers come back by themselves,
                         and get what is kept. */
    };

    /**
     * @a mostWaiting events are kept, 1 at least. After @a heartbeat milliseconds, and again and
     * again, an empty comment tells web servers and clients that the stream lives; 0: never.
     */
    explicit BwaRestEvents(Slow slow, int mostWaiting = 16, int heartbeat = 15000);
    /** Ends the streams. */
    ~BwaRestEvents();

    /**
     * Answers @a call with the events that are sent from now on, and before them with those that
     * are kept and behind its Last-Event-ID. An id that is not kept, such as that of another
     * process, is before all of them. The reply may still get headers and cookies; HEAD gets these
     * alone.
     */
    BwaRestReply join(const BwaRestCall& call);
    /**
     * Sends an event; an empty @a name is "message" for an EventSource. CR, LF and NUL in a name
     * are left out. From any thread; in that of the topic at once, otherwise soon.
     * @throws std::logic_error when @a json is none: see BwaJson::write()
     */
    void send(const QVariant& json, const QString& name = QString());

private:
    class Topic;

    std::unique_ptr<Topic> m_topic;
};

#endif
