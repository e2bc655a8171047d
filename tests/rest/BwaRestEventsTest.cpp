// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "rest/BwaRestEvents.h"

#include "rest/BwaRestService.h"
#include "rest/ResidentMemory.h"
#include "support/Application.h"
#include "support/Skips.h"
#include "testing/BwaTestRequest.h"

#include <QElapsedTimer>
#include <QPoint>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>
#include <thread>
#include <vector>

using testing::HasSubstr;
using testing::Not;

namespace {

const char head[] = "Status: 200 OK\n"
                    "Cache-Control: no-cache\n"
                    "X-Accel-Buffering: no\n"
                    "Content-Type: text/event-stream\n"
                    "\n"
                    ":\n\n";

class BwaRestEventsTest : public testing::Test
{
protected:
    BwaRestEventsTest()
    {
        api->get("/events", [this](const BwaRestCall& call) { return topic->join(call); });
        api->get("/other", [](const BwaRestCall&) { return QVariantMap(); });
    }

    void use(BwaRestEvents::Slow slow, int mostWaiting = 16, int heartbeat = 0)
    {
        topic = std::make_unique<BwaRestEvents>(slow, mostWaiting, heartbeat);
    }

    // A client that has read the head of its stream.
    BwaTestStream join(const QByteArray& lastEventId = QByteArray())
    {
        BwaTestRequest request("GET", "/events");
        request.setHeader("Last-Event-ID", lastEventId);
        BwaTestStream stream = request.open(*api);
        EXPECT_EQ(stream.waitFor(":\n\n"), head);
        return stream;
    }

    // The data of the next event.
    static QByteArray nextData(BwaTestStream* stream)
    {
        stream->waitFor("data: ");
        return stream->waitFor("\n\n").chopped(2);
    }

    // The id of the next event.
    static QByteArray nextId(BwaTestStream* stream)
    {
        stream->waitFor("id: ");
        return stream->waitFor("\n").chopped(1);
    }

    void expectServing() { EXPECT_EQ(BwaTestRequest("GET", "/other").sendTo(*api).body, "{}"); }

    Application application;
    std::unique_ptr<BwaRestEvents> topic =
        std::make_unique<BwaRestEvents>(BwaRestEvents::DropOldest, 16, 0);
    std::unique_ptr<BwaRestService> api = std::make_unique<BwaRestService>();
};

const QString large(100000, QLatin1Char('x'));

} // namespace

TEST_F(BwaRestEventsTest, GivenAnEventWritesItsIdAndItsData)
{
    BwaTestStream stream = join();

    topic->send(QVariantMap{{QStringLiteral("celsius"), 7}});

    const QByteArray text = stream.waitFor("\n\n");
    EXPECT_EQ(text.mid(text.indexOf('\n') + 1), "data: {\"celsius\":7}\n\n");
    EXPECT_TRUE(text.startsWith("id: ")) << text.constData();
}

TEST_F(BwaRestEventsTest, GivenANameWritesItBeforeTheData)
{
    BwaTestStream stream = join();

    topic->send(true, QStringLiteral("door"));

    EXPECT_THAT(stream.waitFor("\n\n").toStdString(), HasSubstr("\nevent: door\ndata: true\n\n"));
}

TEST_F(BwaRestEventsTest, GivenLineEndsKeepsThemInside)
{
    BwaTestStream stream = join();
    const QString text = QString::fromLatin1("a\r\nb\rc\nd") + QChar(0);

    topic->send(text, text);

    EXPECT_THAT(stream.waitFor("\n\n").toStdString(),
                HasSubstr("\nevent: abcd\ndata: \"a\\r\\nb\\rc\\nd\\u0000\"\n\n"));
}

TEST_F(BwaRestEventsTest, GivenWhatIsNoJsonThrows)
{
    EXPECT_THROW(topic->send(QPoint()), std::logic_error);
}

TEST_F(BwaRestEventsTest, SendsToEveryClient)
{
    BwaTestStream first = join();
    BwaTestStream second = join();

    topic->send(1);

    EXPECT_EQ(nextData(&first), "1");
    EXPECT_EQ(nextData(&second), "1");
}

TEST_F(BwaRestEventsTest, WhenJoinedLaterSendsOnlyWhatIsNew)
{
    topic->send(1);
    BwaTestStream stream = join();

    topic->send(2);

    EXPECT_EQ(nextData(&stream), "2");
}

TEST_F(BwaRestEventsTest, GivenTheLastIdSendsWhatIsBehindIt)
{
    BwaTestStream first = join();
    topic->send(1);
    const QByteArray id = nextId(&first);
    topic->send(2);
    topic->send(3);

    BwaTestStream second = join(id);

    EXPECT_EQ(nextData(&second), "2");
    EXPECT_EQ(nextData(&second), "3");
}

TEST_F(BwaRestEventsTest, GivenAnIdThatIsNotKeptSendsAllThatIs)
{
    use(BwaRestEvents::EndSlow, 2);
    for (const int value : {1, 2, 3}) {
        topic->send(value);
    }
    for (const char* id : {"0", "a-1", "\xff", "99999999999999999999", "ffffffff-2"}) {
        BwaTestStream stream = join(id);

        EXPECT_EQ(nextData(&stream), "2") << id;
        EXPECT_EQ(nextData(&stream), "3") << id;
    }
}

TEST_F(BwaRestEventsTest, GivenHeadSendsTheHeadAlone)
{
    const BwaTestReply reply = BwaTestRequest("HEAD", "/events").sendTo(*api);

    EXPECT_EQ(reply.header("Content-Type"), "text/event-stream");
    EXPECT_EQ(reply.body, "");
}

TEST_F(BwaRestEventsTest, GivenHeadersOfTheHandlerWritesThem)
{
    api->get("/named",
             [this](const BwaRestCall& call) { return topic->join(call).header("X-Name", "a"); });

    BwaTestStream stream = BwaTestRequest("GET", "/named").open(*api);

    EXPECT_THAT(stream.waitFor("\n\n").toStdString(), HasSubstr("\nX-Name: a\n"));
}

TEST_F(BwaRestEventsTest, WhenTheHandlerThrowsAfterJoiningIsA500)
{
    api->get("/failing", [this](const BwaRestCall& call) -> BwaRestReply {
        topic->join(call);
        throw std::runtime_error("secret");
    });

    const BwaTestReply reply = BwaTestRequest("GET", "/failing").sendTo(*api);
    topic->send(1);

    EXPECT_EQ(reply.statusCode, 500);
}

TEST_F(BwaRestEventsTest, WhenAnotherHandleRepliesEndsTheStream)
{
    std::optional<BwaRestLater> later;
    api->get("/handled", [&](const BwaRestCall& call) {
        later = call.later();
        return topic->join(call);
    });
    BwaTestStream stream = BwaTestRequest("GET", "/handled").open(*api);
    stream.waitFor(":\n\n");

    later->reply(BwaRestReply::empty());
    topic->send(1);

    EXPECT_EQ(stream.waitForEnd(), "");
    topic->send(2);
}

TEST_F(BwaRestEventsTest, WhenOtherThreadsSendWritesAllOfIt)
{
    use(BwaRestEvents::DropOldest, 400);
    BwaTestStream stream = join();
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([this] {
            for (int event = 0; event < 100; ++event) {
                topic->send(event);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }

    int sum = 0;
    for (int event = 0; event < 400; ++event) {
        sum += nextData(&stream).toInt();
    }
    EXPECT_EQ(sum, 4 * 99 * 100 / 2);
}

TEST_F(BwaRestEventsTest, GivenALargeEventSendsItWhole)
{
    BwaTestStream stream = join();

    topic->send(QString(3000000, QLatin1Char('x')));
    topic->send(1);

    EXPECT_EQ(nextData(&stream), '"' + QByteArray(3000000, 'x') + '"');
    EXPECT_EQ(nextData(&stream), "1");
}

TEST_F(BwaRestEventsTest, WhenAReaderStopsServesTheOthersAtOnce)
{
    BwaTestStream stopped = join();
    BwaTestStream reading = join();
    stopped.stopReading();
    QElapsedTimer timer;
    timer.start();

    for (int event = 0; event < 100; ++event) {
        topic->send(large);
        EXPECT_EQ(nextData(&reading).size(), large.size() + 2);
    }

    expectServing();
    EXPECT_LT(timer.elapsed(),
              9000); // the core waits 10,000 ms for a web server that takes nothing
}

TEST_F(BwaRestEventsTest, WhenReadersStopTakesNoMemoryForWhatIsSent)
{
    if (underSanitizer() || underEmulator()) {
        GTEST_SKIP() << "the sanitizer or the emulator takes memory of its own";
    }
    std::vector<BwaTestStream> streams;
    for (int client = 0; client < 10; ++client) {
        streams.push_back(join());
        streams.back().stopReading();
    }
    topic->send(large);
    const qint64 before = residentBytes();

    for (int event = 0; event < 500; ++event) { // 50 MB
        topic->send(large);
    }

    EXPECT_LT(residentBytes() - before, 16 * 1024 * 1024);
}

TEST_F(BwaRestEventsTest, WhenAReaderGoesOnDropsWhatIsNotKept)
{
    use(BwaRestEvents::DropOldest, 3);
    BwaTestStream stream = join();
    stream.stopReading();
    topic->send(large);
    topic->send(large); // does not fit behind the first

    for (int event = 0; event < 100; ++event) {
        topic->send(event);
    }

    EXPECT_EQ(nextData(&stream).size(), large.size() + 2);
    for (const char* expected : {"97", "98", "99"}) {
        EXPECT_EQ(nextData(&stream), expected);
    }
}

TEST_F(BwaRestEventsTest, WhenTheLatestWinsSendsThatAlone)
{
    use(BwaRestEvents::LatestWins);
    BwaTestStream stream = join();
    stream.stopReading();
    topic->send(large);

    for (int event = 0; event < 10; ++event) {
        topic->send(event);
    }

    EXPECT_EQ(nextData(&stream).size(), large.size() + 2);
    EXPECT_EQ(nextData(&stream), "9");
}

TEST_F(BwaRestEventsTest, WhenSlowOnesAreEndedEndsThemAlone)
{
    use(BwaRestEvents::EndSlow, 2);
    BwaTestStream slow = join();
    BwaTestStream fast = join();
    slow.stopReading();
    QElapsedTimer timer;
    timer.start();
    topic->send(large);

    for (int event = 0; event < 10; ++event) {
        topic->send(event);
        EXPECT_EQ(nextData(&fast).isEmpty(), false);
    }

    EXPECT_THAT(slow.waitForEnd().toStdString(), Not(HasSubstr("data: 1\n")));
    topic->send(10);
    expectServing();
    EXPECT_LT(timer.elapsed(), 9000);
}

TEST_F(BwaRestEventsTest, AfterTheHeartbeatSendsAComment)
{
    use(BwaRestEvents::DropOldest, 16, 5);
    BwaTestStream stream = join();

    EXPECT_EQ(stream.waitFor(":\n\n"), ":\n\n");
    EXPECT_EQ(stream.waitFor(":\n\n"), ":\n\n");
}

TEST_F(BwaRestEventsTest, WhenClientsHaveGoneForgetsThem)
{
    bool isGone = false;
    api->get("/watched", [&](const BwaRestCall& call) {
        BwaRestReply reply = topic->join(call);
        call.later().onGone([&] { isGone = true; });
        return reply;
    });
    BwaTestStream stream = BwaTestRequest("GET", "/watched").open(*api);
    stream.waitFor(":\n\n");

    stream.disconnect();
    runEventLoopUntil([&] { return isGone; });

    topic->send(1);
    expectServing();
}

TEST_F(BwaRestEventsTest, WhenTheServiceIsStoppingEndsTheStreams)
{
    BwaTestStream first = join();
    BwaTestStream second = join();
    topic->send(1);

    Q_EMIT api->stopping();

    EXPECT_THAT(first.waitForEnd().toStdString(), HasSubstr("data: 1\n\n"));
    EXPECT_THAT(second.waitForEnd().toStdString(), HasSubstr("data: 1\n\n"));
    EXPECT_EQ(BwaTestRequest("GET", "/events").open(*api).waitForEnd(), head);
}

TEST_F(BwaRestEventsTest, WhenTheTopicGoesEndsTheStreams)
{
    BwaTestStream stream = join();

    topic.reset();

    EXPECT_EQ(stream.waitForEnd(), "");
}

TEST_F(BwaRestEventsTest, WhenTheServiceGoesEndsTheStreams)
{
    BwaTestStream stream = join();

    api.reset();
    topic->send(1);

    EXPECT_EQ(stream.waitForEnd(), "");
}

TEST_F(BwaRestEventsTest, GivenAThousandClientsServesThemAndOtherRequests)
{
    std::vector<BwaTestStream> streams;
    for (int client = 0; client < 1000; ++client) {
        streams.push_back(BwaTestRequest("GET", "/events").open(*api));
    }
    for (BwaTestStream& stream : streams) {
        stream.waitFor(":\n\n");
    }

    for (int event = 0; event < 3; ++event) {
        topic->send(event);
        expectServing();
    }

    for (BwaTestStream& stream : streams) {
        EXPECT_EQ(nextData(&stream), "0");
        EXPECT_EQ(nextData(&stream), "1");
        EXPECT_EQ(nextData(&stream), "2");
    }
    Q_EMIT api->stopping();
    for (BwaTestStream& stream : streams) {
        EXPECT_EQ(stream.waitForEnd(), "");
    }
}
