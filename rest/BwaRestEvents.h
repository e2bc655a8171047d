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
 * that no other event has. The last events are kept, once for all clients: a client that reads
 * nothing for a while gets them afterwards, and so does one that comes back with Last-Event-ID.
 *
 * Construct, join and destroy it in the listener's thread. The streams end when the topic is
 * destroyed and when their service stops.
 */
class BWA_REST_EXPORT BwaRestEvents
{
    Q_DISABLE_COPY(BwaRestEvents)

public:
    /** What a slow client gets: one that has not taken an event when the next one is sent. */
    enum Slow {
        LatestWins, /**< Only the last event: for states, such as a temperature. */
        DropOldest, /**< All events that are still kept; it misses older ones: for news. */
        EndSlow     /**< Its stream ends when it would miss one; browsers come back by themselves,
                         and get what is kept. */
    };

    /**
     * Keeps the last @a mostWaiting events, 1 at least. Every @a heartbeat milliseconds, each
     * stream on which nothing is being sent gets an empty comment, so that web servers and clients
     * know that it is open; 0: never.
     */
    explicit BwaRestEvents(Slow slow, int mostWaiting = 16, int heartbeat = 15000);
    /** Ends the streams. */
    ~BwaRestEvents();

    /**
     * Answers @a call with a stream: first the kept events after its Last-Event-ID, if it has one,
     * then each event that is sent from now on. An id that is not kept, such as one of another
     * process, counts as older than all kept events. You may add headers and cookies to the result.
     * A HEAD request gets the headers only.
     */
    BwaRestReply join(const BwaRestCall& call);
    /**
     * Sends an event; an empty @a name is "message" for an EventSource. CR, LF and NUL in a name
     * are left out. Call it in any thread. In the topic's thread the event is sent at once,
     * otherwise soon.
     * @throws std::logic_error when BwaJson::write() refuses @a json
     */
    void send(const QVariant& json, const QString& name = QString());

private:
    class Topic;

    std::unique_ptr<Topic> m_topic;
};

#endif
