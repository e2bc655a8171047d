// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "support/ListenerFixture.h"

#include "BwaStringStreaming.h"
#include "cgi/BwaCgiRequest.h"

#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <thread>

#include <arpa/inet.h>
#include <fcntl.h>
#include <linux/sockios.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

namespace {

const int patience = 10000;        // milliseconds
const int highestDescriptor = 300; // no test opens that many

bool hasInput(int descriptor)
{
    pollfd entry = {descriptor, POLLIN, 0};
    return poll(&entry, 1, 0) == 1;
}

extern "C" void endProcess(int)
{
    static const char text[] = "An operation did not return in time.\n";
    const ssize_t written = write(STDERR_FILENO, text, sizeof(text) - 1);
    _exit(written < 0 ? 3 : 2);
}

} // namespace

Watchdog::Watchdog(unsigned int seconds)
{
    signal(SIGALRM, endProcess);
    alarm(seconds);
}

Watchdog::~Watchdog()
{
    alarm(0);
}

void waitUntil(const std::function<bool()>& condition)
{
    QElapsedTimer timer;
    timer.start();
    while (!condition()) {
        if (timer.elapsed() > patience) {
            ADD_FAILURE() << "what was waited for has not come";
            return;
        }
        poll(nullptr, 0, 1); // until the next look, 1 ms
    }
}

void serveWhile(const std::function<void()>& work)
{
    std::atomic<bool> isDone(false);
    std::thread webServer([&] {
        work();
        isDone = true;
    });
    QTimer tick;
    tick.start(10);
    while (!isDone) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    webServer.join();
}

int openDescriptors()
{
    int count = 0;
    for (int descriptor = 0; descriptor < highestDescriptor; ++descriptor) {
        count += fcntl(descriptor, F_GETFD) >= 0 ? 1 : 0;
    }
    return count;
}

int connectedSockets()
{
    int count = 0;
    for (int descriptor = 0; descriptor < highestDescriptor; ++descriptor) {
        sockaddr_storage address = {};
        socklen_t size = sizeof(address);
        if (getpeername(descriptor, reinterpret_cast<sockaddr*>(&address), &size) == 0) {
            ++count;
        }
    }
    return count;
}

int listeningSocket()
{
    for (int descriptor = 0; descriptor < highestDescriptor; ++descriptor) {
        int listening = 0;
        socklen_t size = sizeof(listening);
        getsockopt(descriptor, SOL_SOCKET, SO_ACCEPTCONN, &listening, &size);
        if (listening) {
            return descriptor;
        }
    }
    return -1;
}

QList<QByteArray> threadNames()
{
    QList<QByteArray> names;
    const QDir folder(QStringLiteral("/proc/self/task"));
    const QStringList tasks = folder.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString& task : tasks) {
        QFile name(folder.filePath(task + QLatin1String("/comm")));
        if (name.open(QIODevice::ReadOnly)) {
            names.append(name.readAll().trimmed());
        }
    }
    return names;
}

int unreadBytes(const FcgiClient& client)
{
    int bytes = -1;
    ioctl(client.descriptor(), SIOCOUTQ, &bytes);
    return bytes;
}

QString loopbackAddress(quint16 port)
{
    return QLatin1String("127.0.0.1:") + QString::number(port);
}

qint64 millisecondsOf(const std::function<void()>& work)
{
    QElapsedTimer timer;
    timer.start();
    work();
    return timer.elapsed();
}

QByteArray receivedBytes(const FcgiClient& client, int count)
{
    const timeval time = {patience / 1000, 0};
    setsockopt(client.descriptor(), SOL_SOCKET, SO_RCVTIMEO, &time, sizeof(time));
    QByteArray bytes(count, '\0');
    const ssize_t size =
        recv(client.descriptor(), bytes.data(), static_cast<size_t>(bytes.size()), MSG_WAITALL);
    return bytes.left(static_cast<int>(std::max<ssize_t>(size, 0)));
}

QByteArray recordOf(int requestId, int type, const QByteArray& content, int padding)
{
    QByteArray header("\1\0\0\0\0\0\0\0", 8);
    header[1] = static_cast<char>(type);
    header[2] = static_cast<char>(requestId >> 8);
    header[3] = static_cast<char>(requestId);
    header[4] = static_cast<char>(content.size() >> 8);
    header[5] = static_cast<char>(content.size());
    header[6] = static_cast<char>(padding);
    return header + content + QByteArray(padding, 'p');
}

StandardInput::StandardInput(int descriptor)
    : m_saved(fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 10))
{
    close(STDIN_FILENO);
    if (descriptor >= 0) {
        dup2(descriptor, STDIN_FILENO);
        close(descriptor);
    }
}

StandardInput::~StandardInput()
{
    dup2(m_saved, STDIN_FILENO);
    close(m_saved);
}

bool StandardInput::isOpen()
{
    return fcntl(STDIN_FILENO, F_GETFD) >= 0;
}

ListenerFixture::~ListenerFixture()
{
    const Watchdog watchdog(10);
    destroyListener();
}

FunctionService* ListenerFixture::serve(const char* scriptName,
                                        const FunctionService::Answer& answer)
{
    m_ownedServices.push_back(std::make_unique<FunctionService>(answer));
    m_services.insert(QString::fromLatin1(scriptName), m_ownedServices.back().get());
    return m_ownedServices.back().get();
}

BwaFcgiListener& ListenerFixture::listener()
{
    if (!m_listener) {
        m_listener = std::make_unique<BwaFcgiListener>(m_services);
        QObject::connect(m_listener.get(), &BwaFcgiListener::listeningError,
                         [this] { ++listeningErrors; });
    }
    return *m_listener;
}

void ListenerFixture::start()
{
    listener().listen(QString::fromLatin1(path()));
}

quint16 ListenerFixture::startOnPort()
{
    const quint16 port = freePort();
    listener().listen(loopbackAddress(port));
    return port;
}

FcgiReply ListenerFixture::replyTo(FcgiClient& client)
{
    runEventLoopUntil([&] { return hasInput(client.descriptor()); });
    return client.readReply();
}

FcgiReply ListenerFixture::replyTo(const FcgiParameters& parameters, const QByteArray& body)
{
    FcgiClient client(path());
    client.sendRequest(parameters, body);
    client.shutDownSending();
    return replyTo(client);
}

void TransportFixture::startListening()
{
    if (GetParam()) {
        m_port = startOnPort();
    } else {
        start();
    }
}

std::unique_ptr<FcgiClient> TransportFixture::connectedClient() const
{
    return GetParam() ? FcgiClient::onPort(m_port) : std::make_unique<FcgiClient>(path());
}

void keep(BwaFcgiRequest* request)
{
    static auto* const kept = new QList<BwaFcgiRequest*>;
    kept->append(request);
}

void answerPathInfo(BwaFcgiRequest* request)
{
    request->out() << request->cgiRequest()->environment().pathInfo();
    delete request;
}

FcgiParameters apiRequest(const QByteArray& pathInfo)
{
    return {{"SCRIPT_NAME", "/api"}, {"PATH_INFO", pathInfo}};
}
