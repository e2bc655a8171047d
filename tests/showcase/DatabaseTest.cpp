// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "Database.h"

#include "Accounts.h"
#include "NoteStore.h"
#include "PostgreSqlServer.h"

#include <QTemporaryDir>

#include <gmock/gmock.h>

#include <stdexcept>
#include <thread>
#include <vector>

namespace {

const QString ann = QStringLiteral("ann");
const QString bob = QStringLiteral("bob");

/** With SQLite and with PostgreSQL. */
class Databases : public testing::TestWithParam<const char*>
{
protected:
    Databases()
    {
        if (isPostgreSql()) {
            m_database.run("DROP TABLE IF EXISTS notes");
            m_database.run("DROP TABLE IF EXISTS accounts");
            m_database.run("SET synchronous_commit = off");
        } else {
            m_database.run("PRAGMA synchronous = OFF");
        }
    }

    static bool isPostgreSql() { return GetParam() == std::string("PostgreSql"); }

    QString address() const
    {
        return isPostgreSql() ? PostgreSqlServer::shared().address()
                              : m_folder.filePath(QStringLiteral("notes.db"));
    }

    static bool add(NoteStore& store, const QString& user, const QString& title)
    {
        Note note;
        note.title = title;
        return store.create(user, note);
    }

    static void addMany(NoteStore& store, const QString& user, int count)
    {
        for (int i = 0; i < count; ++i) {
            EXPECT_TRUE(add(store, user, QString::number(i)));
        }
    }

    static qint64 countOf(Database& database)
    {
        return database.run("SELECT count(*) FROM notes").first().first().toLongLong();
    }

    QTemporaryDir m_folder;
    Database m_database{address()};
};

INSTANTIATE_TEST_SUITE_P(Both, Databases, testing::Values("Sqlite", "PostgreSql"),
                         [](const auto& info) { return std::string(info.param); });

} // namespace

TEST_P(Databases, KeepTextsAsTheyAre)
{
    NoteStore store(m_database);
    Note note;
    note.title = QString::fromUtf8("'; DROP TABLE notes; -- $1 ? \\ \" \xc3\xa4 \xf0\x9f\x8d\xb5");
    note.text = QStringLiteral("one\r\n\ttwo\x01");
    ASSERT_TRUE(store.create(ann, note));

    Note found;
    ASSERT_TRUE(store.read(ann, note.id, found));

    EXPECT_EQ(found.id, note.id);
    EXPECT_EQ(found.title, note.title);
    EXPECT_EQ(found.text, note.text);
}

TEST_P(Databases, KeepWhatIsStoredForTheNextConnection)
{
    NoteStore store(m_database);
    ASSERT_TRUE(add(store, ann, QStringLiteral("tea")));

    Database other(address());
    NoteStore otherStore(other);

    ASSERT_EQ(otherStore.notes(ann).size(), 1);
    EXPECT_EQ(otherStore.notes(ann).first().title, QStringLiteral("tea"));
}

TEST_P(Databases, ListNotesInPages)
{
    NoteStore store(m_database);
    addMany(store, ann, 401);

    const QList<Note> first = store.notes(ann);
    ASSERT_EQ(first.size(), 200);
    EXPECT_EQ(first.first().title, QStringLiteral("0"));
    const QList<Note> second = store.notes(ann, first.last().id);
    ASSERT_EQ(second.size(), 200);
    EXPECT_EQ(second.first().title, QStringLiteral("200"));
    const QList<Note> third = store.notes(ann, second.last().id);
    ASSERT_EQ(third.size(), 1);
    EXPECT_TRUE(store.notes(ann, third.last().id).isEmpty());
}

TEST_P(Databases, LetNobodyReachNotesOfSomebodyElse)
{
    NoteStore store(m_database);
    Note note;
    note.title = QStringLiteral("tea");
    ASSERT_TRUE(store.create(ann, note));
    Note changed = note;
    changed.title = QStringLiteral("coffee");

    Note found;
    EXPECT_FALSE(store.read(bob, note.id, found));
    EXPECT_FALSE(store.change(bob, changed));
    EXPECT_FALSE(store.remove(bob, note.id));
    EXPECT_TRUE(store.notes(bob).isEmpty());

    ASSERT_TRUE(store.read(ann, note.id, found));
    EXPECT_EQ(found.title, QStringLiteral("tea"));
}

TEST_P(Databases, ChangeAndRemoveNotes)
{
    NoteStore store(m_database);
    Note note;
    ASSERT_TRUE(store.create(ann, note));
    note.text = QStringLiteral("green");

    EXPECT_TRUE(store.change(ann, note));
    EXPECT_EQ(store.notes(ann).first().text, QStringLiteral("green"));
    EXPECT_TRUE(store.remove(ann, note.id));
    EXPECT_FALSE(store.remove(ann, note.id));
    EXPECT_TRUE(store.notes(ann).isEmpty());
}

TEST_P(Databases, UseNoIdTwice)
{
    NoteStore store(m_database);
    Note first;
    Note second;
    ASSERT_TRUE(store.create(ann, first));
    ASSERT_TRUE(store.remove(ann, first.id));

    ASSERT_TRUE(store.create(ann, second));

    EXPECT_GT(second.id, first.id);
}

TEST_P(Databases, WhenAUserHasTheMostNotesRefuseMoreOfTheUser)
{
    NoteStore store(m_database);
    addMany(store, ann, 1000);

    EXPECT_FALSE(add(store, ann, QStringLiteral("one too many")));
    EXPECT_TRUE(add(store, bob, QStringLiteral("tea")));
    EXPECT_TRUE(store.remove(ann, store.notes(ann).first().id));
    EXPECT_TRUE(add(store, ann, QStringLiteral("in its place")));
}

TEST_P(Databases, WhenProcessesAddNotesAtOnceStopAtTheMost)
{
    NoteStore store(m_database);
    addMany(store, ann, 990);

    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([this] {
            Database database(address());
            NoteStore ownStore(database);
            for (int attempt = 0; attempt < 10; ++attempt) {
                add(ownStore, ann, QStringLiteral("tea"));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }

    EXPECT_EQ(countOf(m_database), 1000);
}

TEST_P(Databases, WhenProcessesStartAtOnceMakeTheTablesOnce)
{
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([this] {
            Database database(address());
            Accounts(database).add(ann, QStringLiteral("tea"));
            NoteStore store(database);
            EXPECT_TRUE(add(store, ann, QStringLiteral("tea")));
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }

    EXPECT_EQ(countOf(m_database), 8);
}

TEST_P(Databases, KeepTheFirstPasswordOfAnAccount)
{
    Accounts accounts(m_database);
    accounts.add(ann, QStringLiteral("tea"));
    const QByteArray hash = accounts.hashOf(ann);

    accounts.add(ann, QStringLiteral("coffee"));

    EXPECT_EQ(accounts.hashOf(ann), hash);
    EXPECT_NE(accounts.hashOf(ann), accounts.hashOf(bob));
    EXPECT_EQ(Accounts(m_database).hashOf(ann), hash);
}

TEST_P(Databases, GivenAWrongStatementThrow)
{
    EXPECT_THROW(m_database.run("SELECT tea"), std::runtime_error);
    EXPECT_EQ(m_database.run("SELECT 1").first().first().toLongLong(), 1);
}
