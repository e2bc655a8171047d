// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// Most requests arrive in one piece. The loop peeks at the connection (MSG_PEEK) and finds the
// header and the whole input; then libfcgi reads both with a single read of up to 8192 bytes.
//
// The header of any other request arrives in several pieces, or is followed by a part of the body.
// The loop collects such a header and has libfcgi read it from a file in memory. From the
// connection, libfcgi would wait for the rest of the header, or read bytes of the body.

#include "BwaGlobal.h"
#include "fcgi/BwaFcgiAcceptLoop_p.h"
#include "fcgi/BwaFcgiClock_p.h"
#include "fcgi/BwaFcgiExchange_p.h"
#include "fcgi/BwaFcgiRecords_p.h"
#include "fcgi/BwaFcgiSocket_p.h"

#include <QThread>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <exception>
#include <iterator>
#include <memory>
#include <utility>

#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using BwaFcgiRecords::Record;
using BwaFcgiRecords::Verdict;

const std::size_t readSize = 8192;    // bytes that libfcgi reads at a time
const unsigned long moment = 20;      // ms until a shortage may have passed
const qint64 longestShortage = 30000; // ms
const auto mostHeaderSize = static_cast<BwaSize>(BwaFcgiRecords::mostHeaderSize);

bool isShortage(int error)
{
    return error == EMFILE || error == ENFILE || error == ENOBUFS || error == ENOMEM;
}

// Whether the listening socket still works: only the new connection has failed, or another process
// has accepted it (accept(2), "Error handling").
bool isPassing(int error)
{
    static const int errors[] = {EAGAIN,      EINTR,        ECONNABORTED, ECONNRESET, ETIMEDOUT,
                                 EPROTO,      ENOPROTOOPT,  EPERM,        ENETDOWN,   ENONET,
                                 ENETUNREACH, EHOSTUNREACH, EHOSTDOWN};
    return std::find(std::begin(errors), std::end(errors), error) != std::end(errors);
}

ssize_t receive(int connection, char* bytes, std::size_t size, int flags)
{
    ssize_t result = 0;
    do {
        result = ::recv(connection, bytes, size, flags | MSG_DONTWAIT);
    } while (result < 0 && errno == EINTR);
    return result;
}

bool send(int connection, const QByteArray& bytes)
{
    const auto size = static_cast<std::size_t>(bytes.size());
    return ::send(connection, bytes.constData(), size, MSG_DONTWAIT | MSG_NOSIGNAL) ==
        static_cast<ssize_t>(size);
}

int newHeaderFile()
{
    return ::memfd_create("header", MFD_CLOEXEC);
}

} // namespace

BwaFcgiAcceptLoop::BwaFcgiAcceptLoop(int listening, BwaFcgiConnections* connections,
                                     const Orders& orders,
                                     const std::function<void(FCGX_Request*)>& handOver)
    : m_listening(listening)
    , m_connections(connections)
    , m_orders(orders)
    , m_handOver(handOver)
    , m_webServers(qgetenv("FCGI_WEB_SERVER_ADDRS"))
    , m_headerFile(newHeaderFile())
{
}

BwaFcgiAcceptLoop::~BwaFcgiAcceptLoop()
{
    if (m_headerFile >= 0) {
        ::close(m_headerFile);
    }
}

void BwaFcgiAcceptLoop::run()
{
    if (!m_connections->open(m_listening)) {
        fail("cannot wait for connections", errno);
    }
    while (goesOn()) {
        try {
            work();
        } catch (const std::exception&) {
            QThread::msleep(moment); // memory is short
        }
    }
    m_connections->close();
}

bool BwaFcgiAcceptLoop::goesOn()
{
    return m_failure.isNull() && !m_orders.stop && !(m_isDraining && m_connections->isIdle());
}

void BwaFcgiAcceptLoop::work()
{
    if (m_orders.drain && !m_isDraining) {
        drain();
        return;
    }
    for (const int descriptor : m_connections->wait()) {
        m_connections->waitForRoom(m_orders.stop);
        handle(descriptor);
    }
}

// Catches exceptions, so that the caller goes on with the other descriptors: epoll will not report
// those again.
void BwaFcgiAcceptLoop::handle(int descriptor)
{
    try {
        if (descriptor == m_listening) {
            acceptConnection();
        } else if (m_connections->isWaiting(descriptor)) {
            readRequest(descriptor);
        } else {
            m_connections->discardInput(descriptor);
        }
    } catch (const std::exception&) {
        QThread::msleep(moment); // memory is short
    }
}

// Accepts the connections that are waiting already, so that their requests are served. If the
// socket was handed over, later connections wait for the next process that receives it.
void BwaFcgiAcceptLoop::drain()
{
    while (!m_orders.stop && acceptConnection()) { }
    m_isDraining = true;
    m_connections->stopKeeping(m_listening);
    m_listening = -1;
    whenDraining();
}

// Accepts one connection. Returns whether another one may be waiting.
bool BwaFcgiAcceptLoop::acceptConnection()
{
    const int connection = BwaFcgiSocket::accept(m_listening, m_webServers);
    if (connection < 0) {
        return handleAcceptError(-connection);
    }
    m_shortSince = 0;
    try {
        m_connections->add(connection);
    } catch (const std::exception&) {
        ::close(connection);
        throw;
    }
    readRequest(connection);
    return true;
}

// Returns whether to try the next connection in spite of the error.
bool BwaFcgiAcceptLoop::handleAcceptError(int error)
{
    if (isShortage(error)) {
        handleShortage(error);
        return m_failure.isNull();
    }
    m_shortSince = 0; // accept() takes a descriptor before anything else can fail
    if (!isPassing(error)) {
        fail("cannot accept connections", error);
    } else if (m_connections->listeningHasEnded()) {
        fail("the listening socket has been shut down", 0);
    }
    return m_failure.isNull() && error != EAGAIN;
}

void BwaFcgiAcceptLoop::handleShortage(int error)
{
    if (m_connections->closeOldest()) {
        return;
    }
    m_shortSince = m_shortSince == 0 ? BwaFcgiClock::now() : m_shortSince;
    if (BwaFcgiClock::now() - m_shortSince > longestShortage) {
        fail("cannot accept connections", error);
    }
    QThread::msleep(moment);
}

void BwaFcgiAcceptLoop::readRequest(int connection)
{
    try {
        readRecords(connection);
    } catch (const std::exception&) {
        m_connections->closeNow(connection); // epoll will not report it again
        throw;
    }
}

void BwaFcgiAcceptLoop::readRecords(int connection)
{
    if (m_connections->header(connection)) {
        takeHeader(connection);
        return;
    }
    char bytes[readSize];
    const ssize_t result = receive(connection, bytes, sizeof bytes, MSG_PEEK);
    if (result == 0 || (result < 0 && errno != EAGAIN)) {
        m_connections->closeNow(connection);
        return;
    }
    const auto size = static_cast<std::size_t>(result);
    if (result < 0) {
        m_connections->watchInput(connection);
    } else if (size < BwaFcgiRecords::headerSize) {
        m_connections->expectHeader(connection);
    } else if (Record(bytes).type != BwaFcgiRecords::BeginRequest || Record(bytes).requestId == 0) {
        takeForeignRecord(connection, bytes, size);
    } else {
        BwaFcgiRecords::HeaderScan scan;
        const Verdict verdict = scan.scan(bytes, size);
        const std::size_t end = scan.position();
        if (verdict == Verdict::Complete && !scan.endsInPadding() &&
            BwaFcgiRecords::isWholeInput(bytes + end, size - end, Record(bytes).requestId)) {
            acceptRequest(connection, nullptr);
        } else {
            takeHeader(connection);
        }
    }
}

// Handles a record that comes before a request. It concerns the whole connection, or a request that
// has ended already, as a late ABORT_REQUEST does.
void BwaFcgiAcceptLoop::takeForeignRecord(int connection, char* bytes, std::size_t size)
{
    const Record record(bytes);
    const bool isValid = record.version == 1 && record.size() <= readSize;
    if (isValid && size < record.size()) {
        m_connections->expectHeader(connection);
    } else if (isValid && receive(connection, bytes, record.size(), 0) > 0 &&
               (record.requestId != 0 ||
                send(connection,
                     answerToManagement(record, bytes + BwaFcgiRecords::headerSize,
                                        m_connections->mostWaiting())))) {
        // epoll will report what follows, after other connections have had their turn.
        m_connections->watchInput(connection);
    } else {
        m_connections->closeNow(connection);
    }
}

// Takes the bytes of a header that have come, and nothing after the header.
void BwaFcgiAcceptLoop::takeHeader(int connection)
{
    auto& header = m_connections->header(connection);
    if (!header) {
        header = std::make_unique<BwaFcgiConnections::Header>();
    }
    Verdict verdict = Verdict::Incomplete;
    bool isOpen = true;
    while (isOpen && verdict == Verdict::Incomplete && header->bytes.size() <= mostHeaderSize) {
        char bytes[readSize];
        const ssize_t size = receive(connection, bytes, sizeof bytes, MSG_PEEK);
        if (size < 0 && errno == EAGAIN) {
            m_connections->expectHeader(connection);
            return;
        }
        isOpen = size > 0;
        if (isOpen) {
            verdict = header->scan.scan(bytes, static_cast<std::size_t>(size));
            receive(connection, bytes, header->scan.position(), 0);
            header->bytes.append(bytes, static_cast<int>(header->scan.position()));
        }
    }
    if (verdict == Verdict::Complete) {
        acceptRequest(connection, &header->bytes);
    } else {
        m_connections->closeNow(connection);
    }
}

// Makes libfcgi read the complete header: from @a header, or, when that is null, from the
// connection, on which all the input of the request has arrived as well.
void BwaFcgiAcceptLoop::acceptRequest(int connection, const QByteArray* header)
{
    m_connections->deleteEnded();
    auto request = std::make_unique<FCGX_Request>();
    FCGX_InitRequest(request.get(), m_listening, 0);
    // These fields make libfcgi take the descriptor for a kept connection and read from it. If it
    // had a socket to accept from, it would wait for another connection after a header that it
    // refuses.
    request->ipcFd = header ? fillHeaderFile(*header) : connection;
    request->keepConnection = 1;
    request->listen_sock = -1;
    request->detached = 1; // libfcgi closes the descriptor at once if it refuses the header
    const int result = FCGX_Accept_r(request.get());
    if (result != 0) {
        if (header) {
            m_headerFile = -1; // closed by libfcgi
            m_connections->closeNow(connection);
        } else {
            m_connections->forget(connection);
        }
        return;
    }
    request->ipcFd = connection;
    request->listen_sock = m_listening;
    request->detached = 0;
    if (FCGX_GetError(request->in) != 0) {
        BwaFcgiExchange::drop(request.release(), m_connections); // a parameter is incomplete
    } else {
        giveAway(connection, request.release(), !header);
    }
}

// Writes @a header to the file from which libfcgi will read it, and returns the file; when that
// fails, closes the file and returns -1. The constructor creates the file, so that requests can be
// read even when descriptors have run out.
int BwaFcgiAcceptLoop::fillHeaderFile(const QByteArray& header)
{
    if (m_headerFile < 0) {
        m_headerFile = newHeaderFile();
    }
    const auto size = static_cast<std::size_t>(header.size());
    if (m_headerFile >= 0 &&
        (::ftruncate(m_headerFile, 0) != 0 || ::lseek(m_headerFile, 0, SEEK_SET) != 0 ||
         ::pwrite(m_headerFile, header.constData(), size, 0) != header.size())) {
        ::close(std::exchange(m_headerFile, -1));
    }
    return m_headerFile;
}

void BwaFcgiAcceptLoop::giveAway(int connection, FCGX_Request* request, bool inputIsWhole)
{
    try {
        m_connections->serve(connection, request, inputIsWhole);
        m_handOver(request);
    } catch (const std::exception&) {
        m_connections->take(request);
        BwaFcgiExchange::drop(request, m_connections);
        throw;
    }
}

void BwaFcgiAcceptLoop::fail(const char* what, int error)
{
    m_failure = QString::fromLatin1(what);
    if (error != 0) {
        m_failure += QLatin1String(": ") + QString::fromLocal8Bit(std::strerror(error));
    }
}
