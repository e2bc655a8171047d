// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWATESTSTREAM_H
#define BWATESTSTREAM_H

#include <QByteArray>
#include <QMap>

#include <memory>

class BwaAbstractFcgiService;

/**
 * A reply that a test reads while the service sends it, such as a stream of events. It comes from
 * BwaTestRequest::open().
 *
 *     BwaTestStream stream = BwaTestRequest("GET", "/events").open(service);
 *     stream.waitFor("\n\n"); // the header block
 *     topic.send(7);
 *     // stream.waitFor("\n\n") ends with "data: 7\n\n"
 *
 * It receives whenever the event loop runs; the functions that wait run it. When it is destroyed,
 * it closes the connection: to the service, the client has gone.
 */
class BwaTestStream
{
public:
    ~BwaTestStream();
    /** Takes the reply over. @a other may then only be destroyed. */
    BwaTestStream(BwaTestStream&& other) noexcept;
    /** Takes the reply over. @a other may then only be destroyed. */
    BwaTestStream& operator=(BwaTestStream&& other) noexcept;

    /**
     * Waits for @a text, and returns the reply, header block and body, up to the end of that text.
     * The next call goes on after it. @a timeout is in milliseconds.
     * @throws std::runtime_error when the text does not arrive in time, or the reply ends first
     */
    QByteArray waitFor(const QByteArray& text, int timeout = 10000);
    /** The rest of the reply. @throws std::runtime_error when it does not end in time */
    QByteArray waitForEnd(int timeout = 10000);
    /**
     * Receives nothing more until the next call of waitFor() or waitForEnd(). Once the service has
     * sent some 50 KB more, it finds that it cannot write.
     */
    void stopReading();
    /**
     * Closes the connection, as a client that goes away does. waitFor() still returns what has
     * arrived by then.
     */
    void disconnect();

private:
    friend class BwaTestRequest;

    struct Connection;

    BwaTestStream(BwaAbstractFcgiService& service, const QMap<QByteArray, QByteArray>& variables,
                  const QByteArray& body);

    std::unique_ptr<Connection> m_connection;
};

#endif
