// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "redis/RedisTest.h"
#include "support/QtPrinters.h"

#include <QElapsedTimer>

#include <gmock/gmock.h>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using testing::ElementsAre;

namespace {

class BwaRedisFailuresTest : public RedisTest
{
};

// Listens, and never answers: as a machine that has lost its power.
class SilentServer
{
public:
    SilentServer()
        : m_socket(socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0))
    {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        qstrcpy(address.sun_path, path().toUtf8().constData());
        EXPECT_EQ(bind(m_socket, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
        EXPECT_EQ(listen(m_socket, 100), 0);
    }
    SilentServer(const SilentServer&) = delete;
    SilentServer& operator=(const SilentServer&) = delete;
    ~SilentServer() { close(m_socket); }

    QString path() const { return m_folder.filePath(QStringLiteral("silent.sock")); }

    /** How often somebody has connected since the last call. */
    int connections() const
    {
        int count = 0;
        for (int one = 0; (one = accept(m_socket, nullptr, nullptr)) >= 0; ++count) {
            close(one);
        }
        return count;
    }

private:
    QTemporaryDir m_folder;
    int m_socket;
};

} // namespace

TEST_F(BwaRedisFailuresTest, GivenNoAddressFails)
{
    const MessageRecorder recorder;
    BwaRedisSessions sessions(settingsFor(QStringList()));

    EXPECT_EQ(sessions.create(ann), nullptr);

    EXPECT_FALSE(sessions.hasAnswered());
    EXPECT_EQ(warnings(recorder),
              QStringList{QStringLiteral("Redis does not answer: no address is set")});
}

TEST_F(BwaRedisFailuresTest, GivenAnUnusableAddressSaysWhy)
{
    const QString tooLong = QLatin1Char('/') + QString(200, QLatin1Char('x'));
    for (const QString& address : {QStringLiteral("redis.example:6379"), QStringLiteral("x"),
                                   QStringLiteral("/nowhere"), tooLong}) {
        const MessageRecorder recorder;
        BwaRedisSessions sessions(settingsFor(QStringList{address}));

        EXPECT_EQ(sessions.create(ann), nullptr);

        const QByteArray start = ("Redis does not answer: " + address.toStdString() + ": ").c_str();
        EXPECT_THAT(warnings(recorder), ElementsAre(begins(start.constData())));
    }
}

TEST_F(BwaRedisFailuresTest, GivenAPasswordUsesIt)
{
    const RedisServer server;
    ASSERT_EQ(server.ask({"CONFIG", "SET", "requirepass", "p w\xc3\xa4"}), "OK");
    BwaRedisSettings settings = settingsFor(server);
    settings.password = QStringLiteral("p w\u00e4");
    BwaRedisSessions sessions(settings);

    EXPECT_NE(find(sessions, Credentials(sessions.create(ann))), nullptr);
}

TEST_F(BwaRedisFailuresTest, GivenAUserUsesIt)
{
    const RedisServer server;
    server.ask({"ACL", "SETUSER", "notes", "on", ">word", "~bwebapi:*", "+@all"});
    BwaRedisSettings settings = settingsFor(server);
    settings.user = QStringLiteral("notes");
    settings.password = QStringLiteral("word");
    BwaRedisSessions sessions(settings);

    EXPECT_NE(find(sessions, Credentials(sessions.create(ann))), nullptr);
}

// The list is that of docs/SCALING.md.
TEST_F(BwaRedisFailuresTest, GivenAUserWithTheDocumentedRightsNeedsNoOthers)
{
    const RedisServer server;
    QList<QByteArray> rule = {"ACL", "SETUSER", "notes", "on", ">password", "~bwebapi:*"};
    for (const char* const command : {"evalsha", "eval", "hmget", "hset", "get", "set", "del",
                                      "pexpire", "time", "wait", "role", "ping", "select"}) {
        rule.append(QByteArray("+").append(command));
    }
    ASSERT_EQ(server.ask(rule), "OK");
    BwaRedisSettings settings = settingsFor(server);
    settings.user = QStringLiteral("notes");
    settings.password = QStringLiteral("password");
    BwaRedisSessions sessions(settings);
    const Credentials ours(sessions.create(ann));

    const Credentials renewed(sessions.renew(find(sessions, ours)));
    EXPECT_NE(find(sessions, renewed), nullptr);
    EXPECT_TRUE(sessions.removeSession(ours.id));
    settings.replicas = 1;
    settings.replicaTimeout = 1;
    settings.missingReplica = BwaRedisSettings::AcceptChange;
    const MessageRecorder silence;
    EXPECT_NE(BwaRedisSessions(settings).create(ann), nullptr);
}

TEST_F(BwaRedisFailuresTest, GivenNoOrAWrongPasswordFailsAndSaysSo)
{
    const RedisServer server({QStringLiteral("--requirepass"), QStringLiteral("word")});
    for (const QString& password : {QString(), QStringLiteral("guess")}) {
        const MessageRecorder recorder;
        BwaRedisSettings settings = settingsFor(server);
        settings.password = password;
        BwaRedisSessions sessions(settings);

        EXPECT_EQ(sessions.create(ann), nullptr);

        EXPECT_FALSE(sessions.hasAnswered());
        const QByteArray reason = ("Redis does not answer: " + server.path().toStdString() +
                                   (password.isEmpty() ? ": NOAUTH " : ": WRONGPASS "))
                                      .c_str();
        EXPECT_THAT(warnings(recorder), ElementsAre(begins(reason.constData())));
    }
}

TEST_F(BwaRedisFailuresTest, WhenTheUserLosesItsRightsFailsUntilItHasThemAgain)
{
    const RedisServer server;
    server.ask({"ACL", "SETUSER", "notes", "on", ">word", "~*", "+@all"});
    BwaRedisSettings settings = settingsFor(server);
    settings.user = QStringLiteral("notes");
    settings.password = QStringLiteral("word");
    BwaRedisSessions sessions(settings);
    const Credentials ours(sessions.create(ann));
    const MessageRecorder silence;

    server.ask({"ACL", "SETUSER", "notes", "-evalsha"});
    EXPECT_EQ(find(sessions, ours), nullptr);
    EXPECT_FALSE(sessions.hasAnswered());

    server.ask({"ACL", "SETUSER", "notes", "+evalsha"});
    EXPECT_NE(find(sessions, ours), nullptr);
}

TEST_F(BwaRedisFailuresTest, WhenRedisIsKilledAndComesBackSoDoTheSessions)
{
    RedisServer server({QStringLiteral("--appendonly"), QStringLiteral("yes"),
                        QStringLiteral("--appendfsync"), QStringLiteral("always")});
    BwaRedisSessions sessions(settingsFor(server));
    const Credentials ours(sessions.create(ann));
    const MessageRecorder recorder;

    server.kill();
    for (int count = 0; count < 5; ++count) {
        EXPECT_EQ(find(sessions, ours), nullptr);
        EXPECT_FALSE(sessions.hasAnswered());
    }
    server.restart({QStringLiteral("--appendonly"), QStringLiteral("yes")});
    EXPECT_TRUE(becomesTrue([&] { return find(sessions, ours); }));

    EXPECT_THAT(warnings(recorder),
                ElementsAre(begins("Redis does not answer: "), begins("Redis answers again")));
}

// A server that closes idle connections, or was restarted between two requests, costs nothing.
TEST_F(BwaRedisFailuresTest, WhenTheConnectionWasClosedConnectsAnew)
{
    const RedisServer server;
    BwaRedisSessions sessions(settingsFor(server));
    const Credentials ours(sessions.create(ann));
    const MessageRecorder recorder;

    server.ask({"CLIENT", "KILL", "TYPE", "normal"});

    EXPECT_NE(find(sessions, ours), nullptr);
    EXPECT_TRUE(recorder.messages().isEmpty());
}

TEST_F(BwaRedisFailuresTest, GivenASilentServerWaitsOnceThenFailsAtOnce)
{
    const SilentServer server;
    BwaRedisSettings settings = settingsFor(QStringList{server.path()});
    settings.timeout = 50;
    settings.pause = 600000;
    BwaRedisSessions sessions(settings);
    const MessageRecorder recorder;
    QElapsedTimer timer;
    timer.start();

    EXPECT_EQ(sessions.create(ann), nullptr);
    EXPECT_GE(timer.elapsed(), 45);
    EXPECT_EQ(server.connections(), 1);
    for (int count = 0; count < 100; ++count) {
        EXPECT_EQ(sessions.create(ann), nullptr);
    }

    EXPECT_EQ(server.connections(), 0);
    EXPECT_EQ(
        warnings(recorder),
        QStringList{
            QStringLiteral("Redis does not answer: %1: no answer in time").arg(server.path())});
}

TEST_F(BwaRedisFailuresTest, WhenThePauseIsOverTriesAgain)
{
    const SilentServer server;
    BwaRedisSettings settings = settingsFor(QStringList{server.path()});
    settings.timeout = 1;
    settings.pause = 20;
    BwaRedisSessions sessions(settings);
    const MessageRecorder silence;
    sessions.create(ann);
    ASSERT_EQ(server.connections(), 1);

    EXPECT_TRUE(becomesTrue([&] {
        sessions.create(ann);
        return server.connections() == 1;
    }));
}

TEST_F(BwaRedisFailuresTest, GivenASilentServerFirstFindsThePrimaryBehindIt)
{
    const SilentServer silent;
    const RedisServer server;
    BwaRedisSettings settings = settingsFor(QStringList{silent.path(), server.path()});
    settings.timeout = 6000;
    BwaRedisSessions sessions(settings);

    EXPECT_NE(sessions.create(ann), nullptr);
}

TEST_F(BwaRedisFailuresTest, WhenAConnectedServerFallsSilentFailsUntilItSpeaks)
{
    const RedisServer server;
    BwaRedisSettings settings = settingsFor(server);
    settings.timeout = 500;
    BwaRedisSessions sessions(settings);
    Credentials ours;
    ASSERT_TRUE(
        becomesTrue([&] { return !(ours = Credentials(sessions.create(ann))).id.isNull(); }));
    const MessageRecorder recorder;

    server.signal(SIGSTOP);
    EXPECT_EQ(find(sessions, ours), nullptr);
    EXPECT_FALSE(sessions.hasAnswered());
    server.signal(SIGCONT);

    EXPECT_TRUE(becomesTrue([&] { return find(sessions, ours); }));
    ASSERT_FALSE(recorder.messages().isEmpty());
    EXPECT_THAT(warnings(recorder).first(), begins("Redis does not answer: "));
    EXPECT_THAT(warnings(recorder).last(), begins("Redis answers again"));
}

TEST_F(BwaRedisFailuresTest, WhileRedisLoadsItsDataFails)
{
    RedisServer server;
    BwaRedisSessions sessions(settingsFor(server));
    const Credentials ours(sessions.create(ann));
    server.ask(
        {"EVAL", "for i = 1, 3000 do redis.call('SET', 'k' .. i, string.rep('x', 1024)) end", "0"});
    ASSERT_EQ(server.ask({"SAVE"}), "OK");
    server.kill();
    const MessageRecorder recorder;

    // 10 ms for each key, so that the load lasts until it is told to hurry up.
    server.restart({QStringLiteral("--key-load-delay"), QStringLiteral("10000"),
                    QStringLiteral("--loading-process-events-interval-bytes"),
                    QStringLiteral("1024"), QStringLiteral("--rdbcompression"),
                    QStringLiteral("no")});
    EXPECT_EQ(find(sessions, ours), nullptr);
    EXPECT_FALSE(sessions.hasAnswered());
    server.ask({"CONFIG", "SET", "key-load-delay", "0"});

    EXPECT_TRUE(becomesTrue([&] { return find(sessions, ours); }));
    const std::string loading =
        "Redis does not answer: " + server.path().toStdString() + ": LOADING ";
    EXPECT_THAT(warnings(recorder),
                ElementsAre(begins(loading.c_str()), begins("Redis answers again")));
}

TEST_F(BwaRedisFailuresTest, WhenTheMemoryIsFullOnlyLoginsFail)
{
    const RedisServer server({QStringLiteral("--maxmemory-policy"), QStringLiteral("noeviction")});
    BwaRedisSessions sessions(settingsFor(server));
    const Credentials ours(sessions.create(ann));
    const MessageRecorder recorder;

    server.ask({"CONFIG", "SET", "maxmemory", "1"});
    EXPECT_EQ(sessions.create(bob), nullptr);
    EXPECT_FALSE(sessions.hasAnswered());
    EXPECT_EQ(sessions.create(bob), nullptr);
    EXPECT_NE(find(sessions, ours), nullptr);
    EXPECT_EQ(sessions.renew(find(sessions, ours)), nullptr);
    EXPECT_FALSE(sessions.hasAnswered());
    EXPECT_NE(find(sessions, ours), nullptr);

    server.ask({"CONFIG", "SET", "maxmemory", "0"});
    EXPECT_NE(sessions.create(bob), nullptr);
    EXPECT_THAT(warnings(recorder),
                ElementsAre(begins("Redis does not confirm changes: OOM "),
                            begins("Redis confirms changes again")));
}

TEST_F(BwaRedisFailuresTest, WhenTheMemoryIsFullSessionsCanBeRemoved)
{
    const RedisServer server;
    BwaRedisSessions sessions(settingsFor(server));
    const Credentials ours(sessions.create(ann));
    server.ask({"CONFIG", "SET", "maxmemory", "1"});

    EXPECT_TRUE(sessions.removeSession(ours.id));

    EXPECT_EQ(find(sessions, ours), nullptr);
    EXPECT_TRUE(sessions.hasAnswered());
}

TEST_F(BwaRedisFailuresTest, WhenRedisIsAwayNothingIsRemoved)
{
    RedisServer server;
    BwaRedisSessions sessions(settingsFor(server));
    BwaRedisSession* const session = sessions.create(ann);
    const MessageRecorder silence;
    server.kill();

    EXPECT_FALSE(sessions.removeSession(session->sessionId()));
    EXPECT_FALSE(sessions.removeSessions(ann));
    EXPECT_FALSE(sessions.removeSessions());
    EXPECT_EQ(sessions.renew(session), nullptr);
    EXPECT_FALSE(sessions.hasAnswered());
}
