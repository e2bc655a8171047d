// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWATESTSTREAM_H
#define BWATESTSTREAM_H

#include <QByteArray>
#include <QMap>

#include <memory>

class BwaAbstractFcgiService;

/**
 * A reply for tests while it comes, such as a stream of events; from BwaTestRequest::open().
 *
 *     BwaTestStream stream = BwaTestRequest("GET", "/events").open(service);
 *     stream.waitFor("\n\n"); // the header block
 *     topic.send(7);
 *     // stream.waitFor("\n\n") ends with "data: 7\n\n"
 *
 * It takes what comes whenever the event loop runs, as the functions that wait have it do. The
 * client goes away with the stream.
 */
class BwaTestStream
{
public:
    ~BwaTestStream();
    BwaTestStream(BwaTestStream&& other) noexcept;
    BwaTestStream& operator=(BwaTestStream&& other) noexcept;

    /**
     * What has come of the reply, header block and body, up to @a text and with it; what is behind
     * is for the next call. @a timeout in milliseconds.
     * @throws std::runtime_error when the text does not come in time, or the reply ends before
     */
    QByteArray waitFor(const QByteArray& text, int timeout = 10000);
    /** The rest of the reply. @throws std::runtime_error when it does not end in time */
    QByteArray waitForEnd(int timeout = 10000);
    /**
     * Takes nothing more, until the next call of waitFor() or waitForEnd(). Of some 50 KB from then
     * on the service finds that it cannot write.
     */
    void stopReading();
    /** The client goes away. What has come by then is left for waitFor(). */
    void disconnect();

private:
    friend class BwaTestRequest;

    struct Connection;

    BwaTestStream(BwaAbstractFcgiService& service, const QMap<QByteArray, QByteArray>& variables,
                  const QByteArray& body);

    std::unique_ptr<Connection> m_connection;
};

#endif
