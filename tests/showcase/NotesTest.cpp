// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "Notes.h"

#include "ShowcaseFixture.h"

namespace {

class NotesTest : public ShowcaseFixture
{
protected:
    NotesTest() { authorization = logIn(); }

    void addNotes(const QString& user, int count)
    {
        NoteStore store(database);
        database.run("BEGIN");
        for (int i = 0; i < count; ++i) {
            Note note;
            note.title = QString::number(i);
            EXPECT_TRUE(store.create(user, note));
        }
        database.run("COMMIT");
    }

    int statusOfNote(int titleSize, int textSize)
    {
        return statusOf("POST", "/notes",
                        R"({"title":")" + QByteArray(titleSize, 'a') + R"(","text":")" +
                            QByteArray(textSize, 'b') + R"("})");
    }
};

} // namespace

TEST_F(NotesTest, HaveOneAddressEach)
{
    addNotes("demo", 1);

    EXPECT_EQ(statusOf("GET", "/notes/1"), 200);
    for (const char* path :
         {"/notes/01", "/notes/%2B1", "/notes/+1", "/notes/%201", "/notes/1%20", "/notes/-1",
          "/notes/0", "/notes/1.0", "/notes/18446744073709551617", "/notes/", "/notes/1/2"}) {
        EXPECT_EQ(statusOf("GET", path), 404) << path;
    }
}

TEST_F(NotesTest, WithLongTitlesOrTextsAreRefused)
{
    EXPECT_EQ(statusOfNote(200, 5000), 201);
    EXPECT_EQ(statusOfNote(201, 0), 422);
    EXPECT_EQ(statusOfNote(1, 5001), 422);
    EXPECT_EQ(statusOf("PUT", "/notes/1", R"({"title":")" + QByteArray(201, 'a') + R"("})"), 422);
}

TEST_F(NotesTest, WhenTheUserHasTheMostAreRefusedUntilOneIsDeleted)
{
    addNotes("demo", 999);

    EXPECT_EQ(statusOfNote(1, 1), 201);
    EXPECT_EQ(statusOfNote(1, 1), 409);
    EXPECT_EQ(statusOf("DELETE", "/notes/7"), 204);
    EXPECT_EQ(statusOfNote(1, 1), 201);
}

TEST_F(NotesTest, OfOtherUsersAreNeitherSeenNorCounted)
{
    addNotes("guest", 1000);

    EXPECT_EQ(statusOf("GET", "/notes/1"), 404);
    EXPECT_EQ(statusOf("PUT", "/notes/1", R"({"title":"mine"})"), 404);
    EXPECT_EQ(statusOf("DELETE", "/notes/1"), 404);
    EXPECT_EQ(statusOfNote(1, 1), 201);
}

TEST_F(NotesTest, AreListedInPages)
{
    addNotes("demo", 401);

    EXPECT_EQ(BwaJson::parse(send("GET", "/notes").body).toList().size(), 200);
    EXPECT_EQ(BwaJson::parse(send("GET", "/notes?after=200").body).toList().size(), 200);
    EXPECT_EQ(send("GET", "/notes?after=400").body, R"([{"id":401,"text":"","title":"400"}])");
    EXPECT_EQ(send("GET", "/notes?after=401").body, "[]");
}

TEST_F(NotesTest, GivenAPageBehindNoIdAreRefused)
{
    EXPECT_EQ(statusOf("GET", "/notes?after=0"), 200);
    for (const char* after : {"", "x", "-1", "01", "%2B1", "1&after=2"}) {
        EXPECT_EQ(statusOf("GET", QByteArray("/notes?after=") + after), 422) << after;
    }
}

TEST_F(NotesTest, WithoutASessionAreRefused)
{
    authorization.clear();

    EXPECT_EQ(statusOf("GET", "/notes"), 401);
    EXPECT_EQ(statusOfNote(1, 1), 401);
}

TEST_F(NotesTest, WhenTheWebServerNamesNoScriptHaveTheirWholePath)
{
    settings.scriptName = "";
    start();
    authorization.clear();
    BwaTestRequest login("POST", "/api/session");
    login.setBody("application/json", R"({"user":"demo","password":"tea"})");
    authorization = grantedBy(send(login));

    const BwaTestReply reply = send("POST", "/api/notes", R"({"title":"Buy tea"})");

    EXPECT_EQ(reply.header("Location"), "/api/notes/1");
}
