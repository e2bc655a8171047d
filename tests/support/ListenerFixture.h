// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef LISTENERFIXTURE_H
#define LISTENERFIXTURE_H

#include "fcgi/BwaFcgiListener.h"
#include "fcgi/BwaFcgiRequest.h"
#include "support/Application.h"
#include "support/FcgiClient.h"
#include "support/FreePort.h"
#include "support/FunctionService.h"

#include <QList>
#include <QMap>
#include <QString>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <vector>

/**
 * Ends the process when it is not destroyed in time: what is watched would else block for ever.
 */
class Watchdog
{
public:
    explicit Watchdog(unsigned int seconds);
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;
    ~Watchdog();
};

/** Puts another file on descriptor 0 as long as it lives. */
class StandardInput
{
public:
    /** Moves @a descriptor, if it is one, to descriptor 0, which is closed else. */
    explicit StandardInput(int descriptor);
    StandardInput(const StandardInput&) = delete;
    StandardInput& operator=(const StandardInput&) = delete;
    ~StandardInput();

    static bool isOpen();

private:
    int m_saved;
};

/** Waits, without an event loop, until @a condition holds; a failure after 10 s. */
void waitUntil(const std::function<bool()>& condition);
/** Serves while another thread, a web server, does @a work. */
void serveWhile(const std::function<void()>& work);
/** The next @a count bytes that the client is sent; fewer at the end of the connection. */
QByteArray receivedBytes(const FcgiClient& client, int count);
/** One record of the FastCGI protocol; a management record has the request id 0. */
QByteArray recordOf(int requestId, int type, const QByteArray& content, int padding = 0);
/** How many descriptors the process has open. */
int openDescriptors();
/** How many of them are connections; one between two sockets of the process counts twice. */
int connectedSockets();
/** The descriptor of a listening socket of this process; -1 when there is none. */
int listeningSocket();
/** The names that the system shows for the threads of this process. */
QList<QByteArray> threadNames();
/** The bytes that the client has sent and nobody has read; on a port, that have not arrived. */
int unreadBytes(const FcgiClient& client);
/** The address of 127.0.0.1 at @a port. */
QString loopbackAddress(quint16 port);
/** Milliseconds that @a work takes. */
qint64 millisecondsOf(const std::function<void()>& work);

/**
 * A listener on a Unix socket of its own, in the thread of the test.
 *
 * Stopping a listener shuts the FastCGI library of the process down for good, so these tests need
 * a process each, which CTest gives them.
 */
class ListenerFixture : public testing::Test
{
public:
    ~ListenerFixture() override;

protected:
    /** Adds a service, before the listener is first used. */
    FunctionService* serve(const char* scriptName, const FunctionService::Answer& answer);
    BwaFcgiListener& listener();
    /** Listens on path(). */
    void start();
    /** Listens on a port of 127.0.0.1, which it returns. */
    quint16 startOnPort();
    void destroyListener() { m_listener.reset(); }
    QByteArray path() const { return m_folder.path().toLatin1() + "/socket"; }
    QString folder() const { return m_folder.path(); }

    /** Serves until the reply to the whole request that @a client has sent can be read. */
    FcgiReply replyTo(FcgiClient& client);
    /** Sends a request to path() and serves until its reply has come. */
    FcgiReply replyTo(const FcgiParameters& parameters, const QByteArray& body = QByteArray());

    int listeningErrors = 0;

private:
    Application m_application;
    QTemporaryDir m_folder;
    std::vector<std::unique_ptr<FunctionService>> m_ownedServices;
    QMap<QString, BwaAbstractFcgiService*> m_services;
    std::unique_ptr<BwaFcgiListener> m_listener;
};

/** A listener on a port of 127.0.0.1 when the parameter is true, on a Unix socket otherwise. */
class TransportFixture
    : public ListenerFixture
    , public testing::WithParamInterface<bool>
{
protected:
    void startListening();
    /** A client of that listener. */
    std::unique_ptr<FcgiClient> connectedClient() const;

private:
    quint16 m_port = 0;
};

/** Holds what a service had when it threw: nobody may delete it then, so it stays until the end. */
void keep(BwaFcgiRequest* request);
/** Answers with the path info. */
void answerPathInfo(BwaFcgiRequest* request);
/** A request to /api with that path info. */
FcgiParameters apiRequest(const QByteArray& pathInfo = QByteArray());

#endif
