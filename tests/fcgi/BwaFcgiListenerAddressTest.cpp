// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "support/ListenerFixture.h"
#include "support/QtPrinters.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMutex>

#include <fcgiapp.h>
#include <gmock/gmock.h>

#include <atomic>
#include <cstdlib>

#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

using testing::ElementsAre;

class BwaFcgiListenerAddress : public ListenerFixture
{
protected:
    void SetUp() override { serve("/api", answerPathInfo); }

    // What a client that has connected is answered.
    QByteArray answerTo(FcgiClient& client)
    {
        client.sendRequest(apiRequest("/x"));
        client.shutDownSending();
        return replyTo(client).out;
    }

    QByteArray answerAt(const QByteArray& path)
    {
        FcgiClient client(path);
        return answerTo(client);
    }

    QByteArray answerAt(quint16 port) { return answerTo(*FcgiClient::onPort(port)); }

    // Listens in vain, and waits until that is known and the thread has ended.
    void listenInVain(const QString& address)
    {
        listener().listen(address);
        waitForError();
    }

    void waitForError()
    {
        runEventLoopUntil([this] { return listeningErrors > 0; });
        runEventLoopUntil([] { return !threadNames().contains("BwaFcgiListener"); });
    }
};

// Which file a descriptor stands for.
ino_t fileOf(int descriptor)
{
    struct stat status = {};
    fstat(descriptor, &status);
    return status.st_ino;
}

} // namespace

TEST_F(BwaFcgiListenerAddress, GivenPathListensOnAUnixSocket)
{
    start();

    EXPECT_EQ(answerAt(path()), QByteArray("/x"));
}

TEST_F(BwaFcgiListenerAddress, GivenPathOfAnOldSocketReplacesIt)
{
    close(FCGX_OpenSocket(path().constData(), 5));
    ASSERT_TRUE(QFile::exists(QString::fromLatin1(path())));

    start();
    runEventLoopUntil([] { return threadNames().contains("BwaFcgiListener"); });

    EXPECT_EQ(answerAt(path()), QByteArray("/x"));
    EXPECT_EQ(listeningErrors, 0);
}

TEST_F(BwaFcgiListenerAddress, GivenHostAndPortListensOnTcp)
{
    const quint16 port = startOnPort();

    EXPECT_EQ(answerAt(port), QByteArray("/x"));
}

TEST_F(BwaFcgiListenerAddress, GivenColonAndPortListensOnTcp)
{
    const quint16 port = freePort();

    listener().listen(QLatin1Char(':') + QString::number(port));

    EXPECT_EQ(answerAt(port), QByteArray("/x"));
}

TEST_F(BwaFcgiListenerAddress, GivenPathInLatin1OpensThoseBytes)
{
    const QByteArray path = folder().toLatin1() + "/caf\xe9";

    listener().listen(QString::fromLatin1(path));

    EXPECT_EQ(answerAt(path), QByteArray("/x"));
}

TEST_F(BwaFcgiListenerAddress, GivenEmptyPathListensOnANamelessSocket)
{
    listener().listen(QString::fromLatin1(""));
    waitUntil([] { return listeningSocket() >= 0; });

    sockaddr_un address = {};
    socklen_t size = sizeof(address);
    getsockname(listeningSocket(), reinterpret_cast<sockaddr*>(&address), &size);
    ASSERT_EQ(address.sun_family, AF_UNIX);
    EXPECT_EQ(address.sun_path[0], '\0'); // an abstract name that the system has chosen
    const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    ASSERT_EQ(connect(descriptor, reinterpret_cast<const sockaddr*>(&address), size), 0);
    FcgiClient client(descriptor);
    EXPECT_EQ(answerTo(client), QByteArray("/x"));
}

TEST_F(BwaFcgiListenerAddress, GivenEmptyPathSaysThatNobodyFindsTheSocket)
{
    static std::atomic<bool> isSaid(false);
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString& text) {
        isSaid = isSaid ||
            text ==
                QLatin1String(
                    "Listening on an empty address, where no web server can find the socket");
    });
    listener().listen(QString::fromLatin1(""));

    waitUntil([] { return isSaid.load(); });

    qInstallMessageHandler(nullptr);
}

// Ports

namespace {

QMutex messagesMutex;
QList<QByteArray> warnings;

void collectWarning(QtMsgType type, const QMessageLogContext&, const QString& message)
{
    QMutexLocker locker(&messagesMutex);
    if (type == QtWarningMsg) {
        warnings.append(message.toLatin1());
    }
}

class BwaFcgiListenerPort : public BwaFcgiListenerAddress
{
public:
    BwaFcgiListenerPort()
    {
        QDir::setCurrent(folder());
        qInstallMessageHandler(collectWarning);
    }

    ~BwaFcgiListenerPort() override
    {
        qInstallMessageHandler(nullptr);
        QDir::setCurrent(m_before);
    }

private:
    QString m_before = QDir::currentPath();
};

} // namespace

// Settled: the port is not inserted.
TEST_F(BwaFcgiListenerPort, OtherThanZeroListensOnASocketNamedAfterTheUnfilledPattern)
{
    listener().listen(9000);

    EXPECT_EQ(answerAt(":%d"), QByteArray("/x"));
    EXPECT_THAT(QDir(folder()).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot),
                ElementsAre(QStringLiteral(":%d")));
    QMutexLocker locker(&messagesMutex);
    ASSERT_EQ(warnings.size(), 1);
    EXPECT_TRUE(warnings.first().startsWith("QString::arg: Argument missing: "));
}

// Descriptor 0

namespace {

struct InheritedSocket {
    const char* name;
    void (*listen)(BwaFcgiListener& listener);
};

class BwaFcgiListenerInheritedSocket
    : public BwaFcgiListenerAddress
    , public testing::WithParamInterface<InheritedSocket>
{
};

struct OtherInput {
    const char* name;
    int (*open)();
};

class BwaFcgiListenerOtherInput
    : public BwaFcgiListenerAddress
    , public testing::WithParamInterface<OtherInput>
{
};

int openPipe()
{
    int ends[2] = {-1, -1};
    EXPECT_EQ(pipe(ends), 0);
    close(ends[1]);
    return ends[0];
}

int openSocketPair()
{
    int ends[2] = {-1, -1};
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
    close(ends[1]);
    return ends[0];
}

} // namespace

TEST_P(BwaFcgiListenerInheritedSocket, IsServed)
{
    const StandardInput input(FCGX_OpenSocket(path().constData(), 5));

    GetParam().listen(listener());

    EXPECT_EQ(answerAt(path()), QByteArray("/x"));
    EXPECT_EQ(listeningErrors, 0);
    destroyListener();
    EXPECT_FALSE(StandardInput::isOpen());
}

INSTANTIATE_TEST_SUITE_P(
    Cases, BwaFcgiListenerInheritedSocket,
    testing::Values(
        InheritedSocket{"NoArgument", [](BwaFcgiListener& listener) { listener.listen(); }},
        InheritedSocket{"PortZero", [](BwaFcgiListener& listener) { listener.listen(quint16(0)); }},
        InheritedSocket{"NullPath", [](BwaFcgiListener& listener) { listener.listen(QString()); }}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_P(BwaFcgiListenerOtherInput, IsAnErrorAndStaysOpen)
{
    const StandardInput input(GetParam().open());
    const ino_t before = fileOf(STDIN_FILENO);

    listener().listen();
    waitForError();

    EXPECT_EQ(listeningErrors, 1);
    EXPECT_TRUE(StandardInput::isOpen());
    EXPECT_EQ(fileOf(STDIN_FILENO), before);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, BwaFcgiListenerOtherInput,
    testing::Values(OtherInput{"NullDevice", [] { return open("/dev/null", O_RDONLY); }},
                    OtherInput{"File", [] { return open("/proc/self/exe", O_RDONLY); }},
                    OtherInput{"Terminal", [] { return posix_openpt(O_RDWR | O_NOCTTY); }},
                    OtherInput{"Pipe", openPipe}, OtherInput{"ConnectedSocket", openSocketPair},
                    OtherInput{"UnboundSocket", [] { return socket(AF_INET, SOCK_STREAM, 0); }}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(BwaFcgiListenerAddress, GivenClosedInputIsAnError)
{
    const StandardInput input(-1);

    listener().listen();
    waitForError();

    EXPECT_EQ(listeningErrors, 1);
    destroyListener();
}

// Who may connect

namespace {

struct WebServers {
    const char* name;
    const char* addresses;
    bool isServed; // a web server on this machine
};

class BwaFcgiListenerWebServers
    : public BwaFcgiListenerAddress
    , public testing::WithParamInterface<WebServers>
{
protected:
    void SetUp() override
    {
        setenv("FCGI_WEB_SERVER_ADDRS", GetParam().addresses, 1);
        BwaFcgiListenerAddress::SetUp();
    }
};

} // namespace

TEST_P(BwaFcgiListenerWebServers, MayConnectToAPort)
{
    const auto client = FcgiClient::onPort(startOnPort());

    if (GetParam().isServed) {
        EXPECT_EQ(answerTo(*client), QByteArray("/x"));
    } else {
        EXPECT_TRUE(client->isClosedByPeer());
    }
}

TEST_P(BwaFcgiListenerWebServers, AreAllServedOnAUnixSocket)
{
    start();

    EXPECT_EQ(answerAt(path()), QByteArray("/x"));
}

INSTANTIATE_TEST_SUITE_P(Cases, BwaFcgiListenerWebServers,
                         testing::Values(WebServers{"Any", "", true},
                                         WebServers{"This", "127.0.0.1", true},
                                         WebServers{"Another", "192.0.2.1", false},
                                         WebServers{"Others", "192.0.2.1,192.0.2.2", false},
                                         WebServers{"ThisToo", "192.0.2.1,127.0.0.1", true}),
                         [](const auto& info) { return std::string(info.param.name); });

// Addresses that cannot be opened

namespace {

struct BadAddress {
    const char* name;
    const char* address; // "@" stands for the folder of the test
};

class BwaFcgiListenerBadAddress
    : public BwaFcgiListenerAddress
    , public testing::WithParamInterface<BadAddress>
{
};

} // namespace

TEST_P(BwaFcgiListenerBadAddress, IsAnErrorAndListeningAgainWorks)
{
    QString address = QString::fromLatin1(GetParam().address);
    address.replace(QLatin1Char('@'), folder());
    listenInVain(address);

    start();

    EXPECT_EQ(answerAt(path()), QByteArray("/x"));
    EXPECT_EQ(listeningErrors, 1);
}

INSTANTIATE_TEST_SUITE_P(Cases, BwaFcgiListenerBadAddress,
                         testing::Values(BadAddress{"MissingFolder", "@/missing/socket"},
                                         BadAddress{"Folder", "@"},
                                         BadAddress{"FileAsFolder", "/dev/null/socket"},
                                         BadAddress{"SystemFolder", "/proc/socket"},
                                         BadAddress{"PathWithPort", "@/a:5/socket"},
                                         BadAddress{"UnknownHost", "no-such-host.invalid:9000"},
                                         BadAddress{"HostThatIsNoAddress", "256.1.1.1:9000"},
                                         BadAddress{"ForeignHost", "192.0.2.1:9000"}),
                         [](const auto& info) { return std::string(info.param.name); });

namespace {

class BwaFcgiListenerLongPath
    : public BwaFcgiListenerAddress
    , public testing::WithParamInterface<int>
{
};

} // namespace

TEST_P(BwaFcgiListenerLongPath, IsAnError)
{
    const QString path = folder() + QLatin1Char('/');

    listenInVain(path + QString(GetParam() - path.size(), QLatin1Char('s')));

    EXPECT_EQ(listeningErrors, 1);
}

INSTANTIATE_TEST_SUITE_P(Bytes, BwaFcgiListenerLongPath,
                         testing::Values(109, 110, 200, 1023, 1024, 5000));

TEST_F(BwaFcgiListenerAddress, GivenPathOfTheGreatestUsualLengthListens)
{
    QByteArray path = folder().toLatin1() + "/";
    path += QByteArray(107 - path.size(), 's');

    listener().listen(QString::fromLatin1(path));

    EXPECT_EQ(answerAt(path), QByteArray("/x"));
}

TEST_F(BwaFcgiListenerAddress, GivenNoPermissionIsAnError)
{
    const bool isRoot = geteuid() == 0;
    ASSERT_EQ(chmod(folder().toLatin1().constData(), 0555), 0);
    if (isRoot) {
        ASSERT_EQ(seteuid(65534), 0); // a user without rights
    }

    listenInVain(QString::fromLatin1(path()));

    EXPECT_EQ(listeningErrors, 1);
    EXPECT_EQ(seteuid(getuid()), 0);
    chmod(folder().toLatin1().constData(), 0755);
}

TEST_F(BwaFcgiListenerAddress, GivenPortInUseIsAnErrorAndLeavesTheOtherServerAlone)
{
    const quint16 port = freePort();
    const QByteArray address = loopbackAddress(port).toLatin1();
    const int other = FCGX_OpenSocket(address.constData(), 5);
    ASSERT_GE(other, 0);

    listenInVain(loopbackAddress(port));

    EXPECT_EQ(listeningErrors, 1);
    FcgiClient::onPort(port);
    close(other);
}

TEST_F(BwaFcgiListenerAddress, WhenNothingWorksReportsEachAttempt)
{
    for (int attempt = 1; attempt <= 5; ++attempt) {
        listeningErrors = 0;
        listenInVain(QStringLiteral("/proc/missing/socket"));

        EXPECT_EQ(listeningErrors, 1);
    }
}

TEST_F(BwaFcgiListenerAddress, WhenNothingWorksKeepsNoDescriptorOpen)
{
    listenInVain(QStringLiteral("/proc/missing/socket"));
    const int before = openDescriptors();

    for (int attempt = 1; attempt <= 5; ++attempt) {
        listeningErrors = 0;
        listenInVain(QStringLiteral("/proc/missing/socket"));
    }

    EXPECT_EQ(openDescriptors(), before);
}

// A "?" in its place would open another socket.
TEST_F(BwaFcgiListenerAddress, GivenCharactersThatAreNoBytesIsAnError)
{
    listener().listen(folder() + QLatin1Char('/') + QChar(0x20ac));
    runEventLoopUntil([this] { return listeningErrors == 1; });

    EXPECT_EQ(listener().errorString(),
              QStringLiteral("cannot listen: the address has characters that are no bytes"));
}
