// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "Database.h"
#include "NoteStore.h"
#include "PostgreSqlServer.h"
#include "rest/BwaRestProblem.h"

#include <QElapsedTimer>

#include <gmock/gmock.h>

#include <csignal>
#include <functional>
#include <stdexcept>

namespace {

const QString ann = QStringLiteral("ann");
const QString away = QStringLiteral("503 Service Unavailable: The database cannot be reached");
const char* const ending = "SELECT pg_terminate_backend(pg_backend_pid())";

/** A connection to a server that the test may stop. */
class PostgreSql : public testing::Test
{
protected:
    QStringList titles() const
    {
        QStringList titles;
        for (const Note& note : m_store.notes(ann)) {
            titles.append(note.title);
        }
        return titles;
    }

    bool add(const QString& title)
    {
        Note note;
        note.title = title;
        return m_store.create(ann, note);
    }

    static QString address() { return PostgreSqlServer::shared().address(); }

    PostgreSqlServer& m_server = PostgreSqlServer::shared();
    bool m_isEmpty = Database(address()).run("DROP TABLE IF EXISTS notes").isEmpty();
    Database m_database{address()};
    NoteStore m_store{m_database};
};

QString messageOf(const std::function<void()>& action)
{
    try {
        action();
    } catch (const std::exception& error) {
        return QString::fromUtf8(error.what());
    }
    return QStringLiteral("nothing was thrown");
}

} // namespace

TEST_F(PostgreSql, WhenItHasRestartedTheNextStatementIsServed)
{
    ASSERT_TRUE(add(QStringLiteral("before")));
    m_server.stop();
    m_server.start();

    EXPECT_TRUE(add(QStringLiteral("after")));

    EXPECT_EQ(titles(), (QStringList{QStringLiteral("before"), QStringLiteral("after")}));
}

TEST_F(PostgreSql, WhenItIsAwayStatementsFailUntilItIsBack)
{
    ASSERT_TRUE(add(QStringLiteral("before")));
    m_server.kill();

    EXPECT_EQ(messageOf([this] { add(QStringLiteral("meanwhile")); }), away);
    EXPECT_EQ(messageOf([this] { titles(); }), away);
    m_server.start();

    EXPECT_TRUE(add(QStringLiteral("after")));
    EXPECT_EQ(titles(), (QStringList{QStringLiteral("before"), QStringLiteral("after")}));
}

TEST_F(PostgreSql, WhenTheConnectionIsLostDuringAStatementFailsAndDoesNotRepeatIt)
{
    m_database.run("CREATE SEQUENCE attempts");

    EXPECT_THROW(
        m_database.run("SELECT nextval('attempts'), pg_terminate_backend(pg_backend_pid())"),
        BwaRestProblem);

    EXPECT_EQ(m_database.run("SELECT nextval('attempts')").first().first().toLongLong(), 2);
    m_database.run("DROP SEQUENCE attempts");
}

TEST_F(PostgreSql, WhenTheConnectionIsLostWhatNeedsALockFails)
{
    {
        const Database::Lock lock(m_database, ann);
        EXPECT_EQ(messageOf([this] { m_database.run(ending); }), away);

        EXPECT_EQ(messageOf([this] { m_database.run("SELECT 1"); }), away);
    }

    EXPECT_EQ(m_database.run("SELECT 1").size(), 1);
}

TEST_F(PostgreSql, WhenSomebodyElseHasALockDoesNotWaitForever)
{
    Database other(address());
    {
        const Database::Lock lock(other, ann);

        EXPECT_EQ(messageOf([this] { add(QStringLiteral("tea")); }).left(50),
                  QStringLiteral("database: ERROR:  canceling statement due to lock "));
    }

    EXPECT_TRUE(add(QStringLiteral("tea")));
}

// A server of which nothing is heard: the kernel accepts connections for it.
TEST_F(PostgreSql, WhenItIsSilentFailsAfterTwoSecondsAndThenAtOnce)
{
    m_server.signal(SIGSTOP);
    EXPECT_EQ(messageOf([this] { m_database.run(ending); }), away);
    QElapsedTimer clock;
    clock.start();
    EXPECT_EQ(messageOf([this] { titles(); }), away);
    const qint64 firstTook = clock.restart();

    EXPECT_EQ(messageOf([this] { titles(); }), away);
    EXPECT_LT(clock.elapsed(), firstTook);

    m_server.signal(SIGCONT);
    while (messageOf([this] { titles(); }) == away) { }
    EXPECT_EQ(titles(), QStringList());
}

TEST_F(PostgreSql, GivenATextWithU0000RefusesIt)
{
    EXPECT_EQ(messageOf([this] { add(QString(QChar(0))); }),
              QStringLiteral("database: PostgreSQL keeps no text with U+0000"));

    EXPECT_EQ(titles(), QStringList());
    EXPECT_TRUE(add(QStringLiteral("tea")));
}

TEST_F(PostgreSql, GivenAUriConnects)
{
    Database database(QStringLiteral("postgresql://notes@/postgres?host=") + m_server.folder());

    EXPECT_EQ(database.run("SELECT current_user").first().first().toString(),
              QStringLiteral("notes"));
}

TEST_F(PostgreSql, GivenAWrongAddressThrows)
{
    EXPECT_THROW(Database{QStringLiteral("postgresql:host=/nowhere")}, std::runtime_error);
    EXPECT_EQ(messageOf([] { Database{QStringLiteral("postgresql:tea=green")}; }),
              QStringLiteral("cannot open the database: invalid connection option \"tea\""));
}
