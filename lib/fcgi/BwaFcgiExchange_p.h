// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAFCGIEXCHANGE_P_H
#define BWAFCGIEXCHANGE_P_H

#include "fcgi/BwaFcgiBody_p.h"
#include "fcgi/BwaFcgiConnections_p.h"

#include <QByteArray>
#include <QSharedPointer>

#include <fcgiapp.h>

#include <memory>
#include <optional>

/**
 * The exchange of one request and its reply with the web server: how the body is read, when a write
 * may wait, and what becomes of the connection.
 *
 * For the thread of the request.
 */
class BwaFcgiExchange
{
public:
    /**
     * Takes over @a request, which must come from plain new. Unless join() is called, the
     * connection is not a listener's, and is closed at the end.
     */
    explicit BwaFcgiExchange(FCGX_Request* request);
    /**
     * Gives the connection back to @a connections at the end. To be called before anything is read
     * or written; @a inputIsWhole as BwaFcgiConnections::take() says.
     */
    void join(const QSharedPointer<BwaFcgiConnections>& connections, bool inputIsWhole);

    /**
     * The listener; not owned; null once destroyed, and when the connection is not a listener's.
     */
    BwaFcgiListener* listener() const { return m_connections ? m_connections->listener : nullptr; }

    /**
     * Reads the next @a size bytes of the body into @a buffer and returns how many there were:
     * fewer at the end of the body and when the web server fails.
     */
    int read(char* buffer, int size);
    /**
     * The bytes of the body that have arrived and have not been read, @a most at most. Never waits
     * when the connection is a listener's.
     */
    QByteArray readAvailable(unsigned int most);
    /** Whether readAvailable() will return nothing more. */
    bool bodyIsOver() const;

    /** Lets reads and writes of libfcgi wait for the web server, as long as the listener says. */
    void waitForPeer();
    /** Whether more of the reply can be written without waiting for the web server. */
    bool canWrite() const;
    /** Whether the web server has closed the connection or aborted the request. */
    bool isGone() const;
    /** Has the listener tell @a request, once, when isGone() becomes true. */
    void watch(BwaFcgiRequest* request);

    /**
     * Ends the reply. The connection is kept or closed; when the request's input has not ended yet,
     * it is closed a little later.
     */
    void complete();
    /** Ends a request without a reply, and closes its connection at once. */
    static void drop(FCGX_Request* request, BwaFcgiConnections* connections);

private:
    int readWith(BwaFcgiBody::Wait wait, char* buffer, int size);
    bool inputHasEnded();
    void leaveConnection(bool isReplySent);

    FCGX_Request* m_request;                          // owned
    QSharedPointer<BwaFcgiConnections> m_connections; // null: not a listener's connection
    std::optional<BwaFcgiBody> m_body;                // unless libfcgi reads the input
    bool m_isBlocking = true;
};

#endif
