// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef FCGICLIENT_H
#define FCGICLIENT_H

#include <QByteArray>
#include <QList>
#include <QPair>

#include <memory>

/** Name and value of each FastCGI parameter, in the order sent. */
using FcgiParameters = QList<QPair<QByteArray, QByteArray>>;

/** What an application has answered on one connection. */
struct FcgiReply {
    QByteArray out;               // STDOUT content
    QByteArray err;               // STDERR content
    QList<QByteArray> outRecords; // the same STDOUT content, record by record
    bool ended = false;           // an END_REQUEST record has come
    int protocolStatus = -1;      // of END_REQUEST; 0 is REQUEST_COMPLETE
};

/**
 * The front web server's end of one FastCGI connection.
 *
 * Every operation ends after 10 s at the latest; one that could not do its work adds a failure to
 * the running test.
 */
class FcgiClient
{
public:
    /** Connects to the Unix socket at @a path, once somebody listens there. */
    explicit FcgiClient(const QByteArray& path);
    /** Takes over the connected socket @a descriptor. */
    explicit FcgiClient(int descriptor);
    FcgiClient(const FcgiClient&) = delete;
    FcgiClient& operator=(const FcgiClient&) = delete;
    ~FcgiClient();
    /** Connects to @a port on 127.0.0.1, once somebody listens there. */
    static std::unique_ptr<FcgiClient> onPort(quint16 port);

    int descriptor() const { return m_descriptor; }

    /** Sends a whole request with the role RESPONDER. */
    void sendRequest(const FcgiParameters& parameters, const QByteArray& body = QByteArray());
    /** Sends bytes unchanged. */
    void send(const QByteArray& bytes);
    /** Tells the application that nothing more will be sent. */
    void shutDownSending();
    /** Closes the connection with a reset, as a client that has gone does. */
    void abort();
    /** Reads until END_REQUEST or the end of the connection. */
    FcgiReply readReply();
    /** Whether the application ends the connection without sending another byte. */
    bool isClosedByPeer();

    /** The bytes of a request, for tests that cut or damage it. */
    static QByteArray requestBytes(const FcgiParameters& parameters,
                                   const QByteArray& body = QByteArray(),
                                   bool keepConnection = false);
    /** One record, with its content padded to a multiple of eight bytes. */
    static QByteArray record(int type, const QByteArray& content);

private:
    // Exactly count bytes, or fewer at the end of the connection.
    QByteArray readBytes(int count);

    int m_descriptor; // owned; -1 once closed
    bool m_timedOut = false;
};

#endif
