// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// All streams of a process share one listener for each script name. It is never destroyed, because
// libfcgi cannot be used any more, by this test or the next, once the last listener is destroyed.

#include "testing/BwaTestStream.h"

#include "fcgi/BwaFcgiListener.h"
#include "fcgi/BwaFcgiRequest.h"
#include "services/BwaAbstractFcgiService.h"

#include <QCoreApplication>
#include <QEvent>
#include <QEventLoop>
#include <QSocketNotifier>
#include <QTemporaryDir>
#include <QTimer>
#include <QtEndian>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <functional>
#include <list>
#include <map>
#include <stdexcept>
#include <string>
#include <utility>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

const char serviceVariable[] = "BWA_TEST_SERVICE"; // the number of the service that answers
const int largestContent = 65528;                  // bytes of a record
const int headerSize = 8;                          // bytes
const int sendTimeout = 10000;                     // milliseconds
enum RecordType { BeginRequest = 1, EndRequest = 3, Parameters = 4, Input = 5, Output = 6 };

std::runtime_error failure(const std::string& what)
{
    return std::runtime_error("BwaTestStream: " + what);
}

} // namespace

/** Hands requests to the service that their client has named. */
class BwaTestStreamServer : public BwaAbstractFcgiService
{
public:
    BwaTestStreamServer(const QString& scriptName, const QTemporaryDir& folder)
        : m_folder(folder)
        , m_listener({{scriptName, this}})
    {
        m_listener.listen(QString::fromLocal8Bit(path()));
    }

    static BwaTestStreamServer& of(const QByteArray& scriptName)
    {
        static auto& servers = *new std::map<QByteArray, BwaTestStreamServer*>;
        static std::list<QTemporaryDir> folders; // which are removed when the process exits
        BwaTestStreamServer*& server = servers[scriptName];
        if (!server) {
            server =
                new BwaTestStreamServer(QString::fromLatin1(scriptName), folders.emplace_back());
        }
        return *server;
    }

    QByteArray path() const { return m_folder.path().toLocal8Bit() + "/socket"; }
    void add(const QByteArray& number, BwaAbstractFcgiService* service)
    {
        m_services[number] = service;
    }
    void remove(const QByteArray& number) { m_services.erase(number); }

    void processRequest(BwaFcgiRequest* request) override
    {
        const QString number = request->input()->getenv(QLatin1String(serviceVariable));
        const auto service = m_services.find(number.toLatin1());
        if (service == m_services.end()) {
            delete request; // its stream has been destroyed already
            return;
        }
        service->second->processRequest(request);
    }

private:
    const QTemporaryDir& m_folder;                            // not owned
    std::map<QByteArray, BwaAbstractFcgiService*> m_services; // not owned
    BwaFcgiListener m_listener;
};

namespace {

QByteArray record(RecordType type, const QByteArray& content)
{
    quint8 header[headerSize] = {1, static_cast<quint8>(type), 0, 1};
    qToBigEndian(static_cast<quint16>(content.size()), header + 4);
    return QByteArray(reinterpret_cast<const char*>(header), sizeof header) + content;
}

// All records of a stream, the empty one at its end included.
QByteArray records(RecordType type, const QByteArray& content)
{
    QByteArray bytes;
    for (int position = 0; position < content.size(); position += largestContent) {
        bytes += record(type, content.mid(position, largestContent));
    }
    return bytes + record(type, QByteArray());
}

QByteArray lengthOf(const QByteArray& text)
{
    const quint32 size = qToBigEndian(static_cast<quint32>(text.size()) | 0x80000000U);
    return QByteArray(reinterpret_cast<const char*>(&size), sizeof size);
}

QByteArray requestBytes(const QMap<QByteArray, QByteArray>& variables, const QByteArray& body)
{
    QByteArray pairs;
    for (auto variable = variables.begin(); variable != variables.end(); ++variable) {
        pairs += lengthOf(variable.key()) + lengthOf(variable.value()) + variable.key() +
            variable.value();
    }
    const QByteArray responder("\0\1\0\0\0\0\0\0", 8);
    return record(BeginRequest, responder) + records(Parameters, pairs) + records(Input, body);
}

// Waits for the listener, which opens its socket in a thread of its own.
int connectedTo(const QByteArray& path)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.constData(), sizeof address.sun_path - 1);
    const int connection = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    for (int attempt = 0; attempt < 10000; ++attempt) {
        if (::connect(connection, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0) {
            return connection;
        }
        if (errno != ENOENT && errno != ECONNREFUSED) {
            break;
        }
        ::poll(nullptr, 0, 1); // waits 1 ms before it tries again
    }
    const std::string reason = std::strerror(errno);
    ::close(connection);
    throw failure("cannot connect: " + reason);
}

} // namespace

struct BwaTestStream::Connection {
    explicit Connection(BwaTestStreamServer& streamServer)
        : server(streamServer)
        , descriptor(connectedTo(streamServer.path()))
        , reader(*this)
    {
    }
    ~Connection()
    {
        server.remove(number);
        end();
    }
    Q_DISABLE_COPY(Connection)

    // Receives what has arrived. Overridden, because the signal for it differs between Qt 5 and 6.
    struct Reader : public QSocketNotifier {
        explicit Reader(Connection& readConnection)
            : QSocketNotifier(readConnection.descriptor, QSocketNotifier::Read)
            , connection(readConnection)
        {
        }
        bool event(QEvent* event) override
        {
            const bool isInput = event->type() == QEvent::SockAct;
            return isInput ? connection.receive() : QSocketNotifier::event(event);
        }

        Connection& connection;
    };

    void end();
    void send(const QByteArray& bytes);
    void wait(int timeout, const std::function<bool()>& isDone);
    bool receive();
    void takeRecords();

    BwaTestStreamServer& server;
    int descriptor; // owned; -1 once closed
    Reader reader;
    QByteArray number;
    QByteArray received; // records; the last one may be incomplete
    QByteArray out;      // the reply as far as it has arrived
    bool hasEnded = false;
};

void BwaTestStream::Connection::end()
{
    hasEnded = true;
    reader.setEnabled(false);
    if (descriptor >= 0) {
        ::close(descriptor);
        descriptor = -1;
    }
}

void BwaTestStream::Connection::wait(int timeout, const std::function<bool()>& isDone)
{
    QTimer timer;
    timer.setSingleShot(true);
    timer.start(timeout);
    reader.setEnabled(!hasEnded);
    while (!isDone()) {
        if (!timer.isActive()) {
            throw failure("nothing more has come in time behind: " + out.toStdString());
        }
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
}

// Sends in pieces, because a body may be larger than the connection accepts at once.
void BwaTestStream::Connection::send(const QByteArray& bytes)
{
    QSocketNotifier writable(descriptor, QSocketNotifier::Write);
    BwaSize sent = 0;
    wait(sendTimeout, [&] {
        const ssize_t size =
            ::send(descriptor, bytes.constData() + sent,
                   static_cast<std::size_t>(bytes.size() - sent), MSG_DONTWAIT | MSG_NOSIGNAL);
        sent += static_cast<BwaSize>(std::max<ssize_t>(size, 0));
        const bool isRefused = size < 0 && errno != EAGAIN && errno != EINTR;
        return isRefused || sent == bytes.size(); // the reply tells of a refusal
    });
}

// Receives what has arrived, without waiting.
bool BwaTestStream::Connection::receive()
{
    char piece[65536];
    const ssize_t size = ::recv(descriptor, piece, sizeof piece, MSG_DONTWAIT);
    received.append(piece, static_cast<int>(std::max<ssize_t>(size, 0)));
    takeRecords();
    if (hasEnded || size == 0 || (size < 0 && errno != EAGAIN && errno != EINTR)) {
        end();
    }
    return true;
}

void BwaTestStream::Connection::takeRecords()
{
    const auto byte = [this](int index) { return static_cast<quint8>(received.at(index)); };
    while (received.size() >= headerSize) {
        const int content = byte(4) << 8 | byte(5);
        const int end = headerSize + content + byte(6);
        if (received.size() < end) {
            return;
        }
        if (byte(1) == Output) {
            out += received.mid(headerSize, content);
        }
        hasEnded = hasEnded || byte(1) == EndRequest;
        received.remove(0, end);
    }
}

BwaTestStream::BwaTestStream(BwaAbstractFcgiService& service,
                             const QMap<QByteArray, QByteArray>& variables, const QByteArray& body)
    : m_connection(new Connection(BwaTestStreamServer::of(variables.value("SCRIPT_NAME"))))
{
    static int count = 0;
    m_connection->number = QByteArray::number(++count);
    m_connection->server.add(m_connection->number, &service);
    QMap<QByteArray, QByteArray> sent = variables;
    sent.insert(serviceVariable, m_connection->number);
    m_connection->send(requestBytes(sent, body));
}

BwaTestStream::~BwaTestStream() = default;
BwaTestStream::BwaTestStream(BwaTestStream&& other) noexcept = default;
BwaTestStream& BwaTestStream::operator=(BwaTestStream&& other) noexcept = default;

QByteArray BwaTestStream::waitFor(const QByteArray& text, int timeout)
{
    const Connection& connection = *m_connection;
    m_connection->wait(timeout,
                       [&] { return connection.out.contains(text) || connection.hasEnded; });
    const BwaSize position = connection.out.indexOf(text);
    if (position < 0) {
        throw failure("the reply has ended behind: " + connection.out.toStdString());
    }
    QByteArray come = connection.out.left(position + text.size());
    m_connection->out.remove(0, come.size());
    return come;
}

QByteArray BwaTestStream::waitForEnd(int timeout)
{
    m_connection->wait(timeout, [this] { return m_connection->hasEnded; });
    return std::exchange(m_connection->out, QByteArray());
}

void BwaTestStream::stopReading()
{
    m_connection->reader.setEnabled(false);
}

void BwaTestStream::disconnect()
{
    m_connection->end();
}
