// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAFCGIACCEPTLOOP_P_H
#define BWAFCGIACCEPTLOOP_P_H

#include "fcgi/BwaFcgiConnections_p.h"

#include <QByteArray>
#include <QString>

#include <fcgiapp.h>

#include <atomic>
#include <functional>

/**
 * The loop of the accepting thread. It accepts connections, waits until the header of a request is
 * complete, and only then has libfcgi read it, so that no web server can make another one wait.
 */
class BwaFcgiAcceptLoop
{
public:
    /**
     * Flags that other threads set for a running loop. After setting one they call
     * BwaFcgiConnections::wake().
     */
    struct Orders {
        const std::atomic<bool>& stop;  // end at once
        const std::atomic<bool>& drain; // accept no more, and end when no request is open
    };

    /**
     * Accepts from @a listening, a socket, into @a connections; neither is owned.
     *
     * @param handOver takes an accepted request, and owns it unless it throws a std::exception
     */
    BwaFcgiAcceptLoop(int listening, BwaFcgiConnections* connections, const Orders& orders,
                      const std::function<void(FCGX_Request*)>& handOver);
    ~BwaFcgiAcceptLoop();
    BwaFcgiAcceptLoop(const BwaFcgiAcceptLoop&) = delete;
    BwaFcgiAcceptLoop& operator=(const BwaFcgiAcceptLoop&) = delete;

    /** Called when no more connections are accepted, because of Orders::drain. */
    std::function<void()> whenDraining;

    /** Runs until it is told to end or cannot go on; then failure() says why. */
    void run();
    /** Null unless the loop could not go on. */
    QString failure() const { return m_failure; }

private:
    bool goesOn();
    void work();
    void handle(int descriptor);
    void drain();
    bool acceptConnection();
    bool handleAcceptError(int error);
    void handleShortage(int error);
    void readRequest(int connection);
    void readRecords(int connection);
    void takeForeignRecord(int connection, char* bytes, std::size_t size);
    void takeHeader(int connection);
    void acceptRequest(int connection, const QByteArray* header);
    int fillHeaderFile(const QByteArray& header);
    void giveAway(int connection, FCGX_Request* request, bool inputIsWhole);
    void fail(const char* what, int error);

    int m_listening; // not owned
    BwaFcgiConnections* m_connections;
    Orders m_orders;
    std::function<void(FCGX_Request*)> m_handOver;
    const QByteArray m_webServers; // the only IPv4 addresses that may connect; empty: all may
    int m_headerFile;              // a file in memory from which libfcgi reads headers; -1: none
    bool m_isDraining = false;
    qint64 m_shortSince = 0; // ms of the steady clock; 0: no shortage of descriptors
    QString m_failure;
};

#endif
