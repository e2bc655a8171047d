// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "redis/RedisTest.h"
#include "support/FreePort.h"
#include "support/QtPrinters.h"

#include <QFile>

#include <gmock/gmock.h>

using testing::ElementsAre;

namespace {

QString loopback(quint16 port)
{
    return QStringLiteral("127.0.0.1:%1").arg(port);
}

QStringList portOption(quint16 port)
{
    return {QStringLiteral("--port"), QString::number(port)};
}

QStringList replicaOptions(quint16 port, quint16 primaryPort)
{
    return portOption(port) +
        QStringList{QStringLiteral("--replicaof"), QStringLiteral("127.0.0.1 %1").arg(primaryPort),
                    QStringLiteral("--repl-diskless-sync-delay"), QStringLiteral("0")};
}

// A primary with a replica that has caught up.
class BwaRedisReplicasTest : public RedisTest
{
protected:
    BwaRedisReplicasTest()
    {
        EXPECT_TRUE(replica.waitForReply({"ROLE"}, "connected"));
        EXPECT_TRUE(primary.waitForReply({"INFO", "replication"}, "state=online"));
        settings.replicas = 1;
    }

    void promoteTheReplica() { EXPECT_EQ(replica.ask({"REPLICAOF", "NO", "ONE"}), "OK"); }

    void demoteThePrimary()
    {
        EXPECT_EQ(primary.ask({"REPLICAOF", "127.0.0.1", QByteArray::number(replicaPort)}), "OK");
    }

    quint16 primaryPort = freePort();
    quint16 replicaPort = freePort();
    RedisServer primary{
        portOption(primaryPort) +
        QStringList{QStringLiteral("--repl-diskless-sync-delay"), QStringLiteral("0")}};
    RedisServer replica{replicaOptions(replicaPort, primaryPort)};
    BwaRedisSettings settings = settingsFor(QStringList{primary.path(), replica.path()});
};

// A process of redis-sentinel that watches a primary under the name "notes".
class Sentinel
{
public:
    Sentinel(quint16 port, quint16 primaryPort)
    {
        QFile file(m_folder.filePath(QStringLiteral("sentinel.conf")));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(QStringLiteral("port %1\nbind 127.0.0.1\ndir %2\n"
                                  "sentinel monitor notes 127.0.0.1 %3 1\n"
                                  "sentinel down-after-milliseconds notes 300\n"
                                  "sentinel failover-timeout notes 3000\n")
                       .arg(port)
                       .arg(m_folder.path())
                       .arg(primaryPort)
                       .toLatin1());
        file.close();
        m_process.start(QStringLiteral("setpriv"),
                        {QStringLiteral("--pdeathsig"), QStringLiteral("KILL"),
                         QStringLiteral("redis-sentinel"), file.fileName()});
        waitForLine("+slave ");
    }
    ~Sentinel()
    {
        m_process.kill();
        m_process.waitForFinished();
    }

    void waitForLine(const QByteArray& text)
    {
        const QDeadlineTimer deadline(60000);
        while (!m_output.contains(text)) {
            if (!m_process.waitForReadyRead(static_cast<int>(deadline.remainingTime()))) {
                FAIL() << "redis-sentinel said: " << m_output.constData();
            }
            m_output += m_process.readAll();
        }
    }

private:
    QTemporaryDir m_folder;
    QProcess m_process;
    QByteArray m_output;
};

} // namespace

TEST_F(BwaRedisReplicasTest, WhenCreatedTheReplicaHasTheSession)
{
    BwaRedisSessions sessions(settings);
    const Credentials ours(sessions.create(ann));
    ASSERT_FALSE(ours.id.isNull());

    primary.kill();
    promoteTheReplica();

    EXPECT_NE(find(sessions, ours), nullptr);
}

TEST_F(BwaRedisReplicasTest, WhenRenewedOrRemovedTheReplicaKnows)
{
    BwaRedisSessions sessions(settings);
    const Credentials old(sessions.create(ann));
    const Credentials others(sessions.create(bob));
    const Credentials renewed(sessions.renew(find(sessions, old)));
    EXPECT_TRUE(sessions.removeSession(others.id));

    primary.kill();
    promoteTheReplica();

    EXPECT_NE(find(sessions, renewed), nullptr);
    EXPECT_EQ(find(sessions, others), nullptr);
    EXPECT_TRUE(sessions.hasAnswered());
}

TEST_F(BwaRedisReplicasTest, GivenAStoppedReplicaRefusesChangesUntilItAnswers)
{
    settings.replicaTimeout = 50;
    BwaRedisSessions sessions(settings);
    Credentials ours;
    ASSERT_TRUE(
        becomesTrue([&] { return !(ours = Credentials(sessions.create(ann))).id.isNull(); }));
    const MessageRecorder recorder;

    replica.signal(SIGSTOP);
    EXPECT_EQ(sessions.create(ann), nullptr);
    EXPECT_FALSE(sessions.hasAnswered());
    EXPECT_NE(find(sessions, ours), nullptr); // reads need no replica
    replica.signal(SIGCONT);

    EXPECT_TRUE(becomesTrue([&] { return sessions.create(ann); }));
    EXPECT_THAT(
        warnings(recorder),
        ElementsAre(begins("Redis does not confirm changes: 0 of 1 replicas have confirmed"),
                    begins("Redis confirms changes again")));
}

TEST_F(BwaRedisReplicasTest, WhenARenewalWasRefusedTheOldTokenRenewsAgain)
{
    BwaRedisSessions sessions(settings);
    const Credentials old(sessions.create(ann));
    settings.replicaTimeout = 1;
    BwaRedisSessions impatient(settings);
    BwaRedisSession* const session = find(impatient, old);
    const MessageRecorder silence;

    replica.signal(SIGSTOP);
    EXPECT_EQ(impatient.renew(session), nullptr);
    EXPECT_FALSE(impatient.hasAnswered());
    replica.signal(SIGCONT);
    const Credentials renewed(sessions.renew(find(sessions, old)));

    primary.kill();
    promoteTheReplica();
    EXPECT_NE(find(sessions, renewed), nullptr);
}

TEST_F(BwaRedisReplicasTest, GivenAStoppedReplicaAcceptsChangesIfToldSo)
{
    settings.replicaTimeout = 50;
    settings.missingReplica = BwaRedisSettings::AcceptChange;
    BwaRedisSessions sessions(settings);
    const MessageRecorder silence;
    replica.signal(SIGSTOP);

    const Credentials ours(sessions.create(ann));

    EXPECT_NE(find(sessions, ours), nullptr);
    replica.signal(SIGCONT);
}

TEST_F(BwaRedisReplicasTest, GivenTheReplicaFirstFindsThePrimary)
{
    settings.addresses = QStringList{replica.path(), primary.path()};
    BwaRedisSessions sessions(settings);

    EXPECT_NE(sessions.create(ann), nullptr);
}

TEST_F(BwaRedisReplicasTest, GivenTheReplicaAloneFails)
{
    settings.addresses = QStringList{replica.path()};
    const MessageRecorder recorder;
    BwaRedisSessions sessions(settings);

    EXPECT_EQ(sessions.create(ann), nullptr);

    EXPECT_EQ(warnings(recorder),
              QStringList{
                  QStringLiteral("Redis does not answer: %1: is no primary").arg(replica.path())});
}

// The connection stays, but the server is a replica now and answers READONLY.
TEST_F(BwaRedisReplicasTest, WhenRolesAreChangedChangesGoToTheNewPrimary)
{
    BwaRedisSessions sessions(settings);
    const Credentials ours(sessions.create(ann));
    settings.replicas = 0;
    BwaRedisSessions others(settings);
    ASSERT_NE(find(others, ours), nullptr);
    const MessageRecorder recorder;

    promoteTheReplica();
    demoteThePrimary();
    const Credentials later(others.create(bob));

    EXPECT_NE(find(others, later), nullptr);
    EXPECT_NE(find(others, ours), nullptr);
    EXPECT_TRUE(recorder.messages().isEmpty());
    EXPECT_EQ(replica.ask({"HGET", "bwebapi:session:" + later.id.toRfc4122().toHex(), "user"}),
              "bob");
}

TEST_F(BwaRedisReplicasTest, GivenASentinelFindsThePrimaryAndItsSuccessor)
{
    const quint16 port = freePort();
    Sentinel sentinel(port, primaryPort);
    settings.addresses.clear();
    settings.sentinels = QStringList{loopback(port)};
    settings.masterName = QStringLiteral("notes");
    BwaRedisSessions sessions(settings);
    const Credentials ours(sessions.create(ann));
    ASSERT_FALSE(ours.id.isNull());
    const MessageRecorder silence;

    primary.kill();
    sentinel.waitForLine("+switch-master");

    EXPECT_TRUE(becomesTrue([&] { return find(sessions, ours); }));
}

TEST_F(BwaRedisReplicasTest, GivenASentinelThatKnowsNoSuchPrimarySaysSo)
{
    const quint16 port = freePort();
    const Sentinel sentinel(port, primaryPort);
    settings.addresses.clear();
    settings.sentinels = QStringList{loopback(freePort()), loopback(port)};
    settings.masterName = QStringLiteral("other");
    const MessageRecorder recorder;
    BwaRedisSessions sessions(settings);

    EXPECT_EQ(sessions.create(ann), nullptr);

    EXPECT_EQ(
        warnings(recorder),
        QStringList{
            QStringLiteral("Redis does not answer: %1: knows no such master").arg(loopback(port))});
}
