// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "NotesService.h"

#include "Database.h"
#include "NoteStore.h"
#include "SessionIdentifier.h"
#include "services/BwaDispatcherFcgiService.h"
#include "sessions/BwaWebSession.h"
#include "sessions/BwaWebSessionManager.h"
#include "testing/BwaTestRequest.h"

#include <QCoreApplication>
#include <QTemporaryDir>

#include <gmock/gmock.h>

namespace {

const QString demo = QStringLiteral("demo");
const QString guest = QStringLiteral("guest");

class Notes : public testing::Test
{
protected:
    Notes()
    {
        m_database.run("PRAGMA synchronous = OFF");
        m_root.addService(QStringLiteral("notes"), new NotesService(&m_identifier, &m_store));
    }

    void addNotes(const QString& user, int count)
    {
        m_database.run("BEGIN");
        for (int i = 0; i < count; ++i) {
            Note note;
            note.title = QString::number(i);
            EXPECT_TRUE(m_store.create(user, note));
        }
        m_database.run("COMMIT");
    }

    BwaTestReply send(const QByteArray& method, const QByteArray& target,
                      const QByteArray& body = QByteArray())
    {
        BwaTestRequest request(method, target);
        const auto text = [](const QUuid& id) { return id.toByteArray(); };
        request.setHeader("Cookie",
                          "showcase-session=" + text(m_session->sessionId()) +
                              "; showcase-token=" + text(m_session->token()));
        if (!body.isEmpty()) {
            request.setBody("application/json", body);
        }
        return request.sendTo(m_root);
    }

    int statusOf(const QByteArray& target) { return send("GET", target).statusCode; }

    int statusOfNote(int titleSize, int textSize)
    {
        return send("POST", "/notes",
                    "{\"title\": \"" + QByteArray(titleSize, 'a') + "\", \"text\": \"" +
                        QByteArray(textSize, 'b') + "\"}")
            .statusCode;
    }

    int m_arguments = 0;
    QCoreApplication m_application{m_arguments, nullptr}; // for the timers of the session
    QTemporaryDir m_folder;
    Database m_database{m_folder.filePath(QStringLiteral("notes.db"))};
    NoteStore m_store{m_database};
    BwaWebSessionManager m_sessions;
    SessionIdentifier m_identifier{&m_sessions};
    BwaWebSession* m_session = m_sessions.createSession(demo, 600000, 60000);
    BwaDispatcherFcgiService m_root;
};

} // namespace

TEST_F(Notes, HaveOneAddressEach)
{
    addNotes(demo, 1);

    EXPECT_EQ(statusOf("/notes/1"), 200);
    for (const char* path :
         {"/notes/01", "/notes/%2B1", "/notes/+1", "/notes/%201", "/notes/1%20", "/notes/-1",
          "/notes/0", "/notes/1.0", "/notes/18446744073709551617"}) {
        EXPECT_EQ(statusOf(path), 404) << path;
    }
}

TEST_F(Notes, WithLongTitlesOrTextsAreRefused)
{
    EXPECT_EQ(statusOfNote(200, 5000), 201);
    EXPECT_EQ(statusOfNote(201, 0), 400);
    EXPECT_EQ(statusOfNote(1, 5001), 400);
    EXPECT_EQ(send("PUT", "/notes/1", R"({"title": ")" + QByteArray(201, 'a') + R"("})").statusCode,
              400);
}

TEST_F(Notes, WhenTheUserHasTheMostAreRefusedUntilOneIsDeleted)
{
    addNotes(demo, 999);

    EXPECT_EQ(statusOfNote(1, 1), 201);
    EXPECT_EQ(statusOfNote(1, 1), 409);
    EXPECT_EQ(send("DELETE", "/notes/7").statusCode, 204);
    EXPECT_EQ(statusOfNote(1, 1), 201);
}

TEST_F(Notes, OfOtherUsersDoNotCount)
{
    addNotes(guest, 1000);

    EXPECT_EQ(statusOfNote(1, 1), 201);
}

TEST_F(Notes, AreListedInPages)
{
    addNotes(demo, 401);

    EXPECT_EQ(m_store.notes(demo).size(), 200);
    EXPECT_EQ(m_store.notes(demo).first().id, 1);
    EXPECT_EQ(m_store.notes(demo, 200).first().id, 201);
    EXPECT_EQ(send("GET", "/notes?after=400").body,
              "[{\"id\":401,\"text\":\"\",\"title\":\"400\"}]\n");
    EXPECT_EQ(send("GET", "/notes?after=401").body, "[]\n");
}

TEST_F(Notes, GivenAPageBehindNoIdAreRefused)
{
    EXPECT_EQ(statusOf("/notes?after=0"), 200);
    for (const char* after : {"", "x", "01", "%2B1", "1;after=x"}) {
        EXPECT_EQ(statusOf(QByteArray("/notes?after=") + after), 400) << after;
    }
}
