// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "rest/BwaRestEvents.h"
#include "rest/BwaRestService.h"
#include "testing/BwaTestRequest.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

class Sensors
{
public:
    Sensors()
    {
        //! [join]
        service.get("/temperature", [this](const BwaRestCall& call) {
            return m_temperature.join(call); // a slow client gets only the last value
        });
        service.get("/alarms", [this](const BwaRestCall& call) {
            return m_alarms.join(call); // a slow client connects again, and gets the last 100
        });
        //! [join]
        service.get("/broken", [this](const BwaRestCall& call) -> BwaRestReply {
            const BwaRestReply reply = m_alarms.join(call);
            throw std::runtime_error("a secret of ours");
        });
    }

    //! [send]
    // From any thread, such as the one that reads the sensors.
    void noteTemperature(double celsius)
    {
        m_temperature.send(QVariantMap{{QStringLiteral("celsius"), celsius}});
    }

    void raiseAlarm(const QString& text)
    {
        m_alarms.send(QVariantMap{{QStringLiteral("text"), text}}, QStringLiteral("alarm"));
    }
    //! [send]

private:
    //! [topics]
    BwaRestEvents m_temperature{BwaRestEvents::LatestWins};
    BwaRestEvents m_alarms{BwaRestEvents::EndSlow, 100};
    //! [topics]

public:
    BwaRestService service; // behind the topics: its calls end before them
};

class HowToStreams : public testing::Test
{
protected:
    BwaTestStream open(const QByteArray& path, const QByteArray& lastEventId = QByteArray())
    {
        BwaTestRequest request("GET", path);
        request.setHeader("Last-Event-ID", lastEventId);
        BwaTestStream stream = request.open(sensors.service);
        stream.waitFor("text/event-stream");
        stream.waitFor(":\n\n");
        return stream;
    }

    int argc = 1;
    char name[5] = "test";
    char* argv[2] = {name, nullptr};
    QCoreApplication application = {argc, argv};
    Sensors sensors;
};

} // namespace

//! [test]
TEST_F(HowToStreams, GivenATemperatureTellsEveryClient)
{
    BwaTestStream first = BwaTestRequest("GET", "/temperature").open(sensors.service);
    BwaTestStream second = BwaTestRequest("GET", "/temperature").open(sensors.service);
    first.waitFor("\n\n"); // the header block
    second.waitFor("\n\n");

    sensors.noteTemperature(20.5);

    first.waitFor("data: {\"celsius\":20.5}\n\n");
    second.waitFor("data: {\"celsius\":20.5}\n\n");
}
//! [test]

TEST_F(HowToStreams, GivenALineEndInAnAlarmMakesNoSecondEvent)
{
    BwaTestStream stream = open("/alarms");

    sensors.raiseAlarm(QStringLiteral("fire\n\nevent: calm"));

    stream.waitFor("\nevent: alarm\ndata: {\"text\":\"fire\\n\\nevent: calm\"}\n\n");
}

TEST_F(HowToStreams, WhenAClientComesBackItMissesNothing)
{
    BwaTestStream stream = open("/alarms");
    sensors.raiseAlarm(QStringLiteral("fire"));
    stream.waitFor("id: ");
    const QByteArray id = stream.waitFor("\n").chopped(1);
    stream.disconnect();
    sensors.raiseAlarm(QStringLiteral("flood"));

    open("/alarms", id).waitFor("{\"text\":\"flood\"}");
}

TEST_F(HowToStreams, GivenAnIdOfNobodySendsWhatIsKept)
{
    sensors.raiseAlarm(QStringLiteral("fire"));

    open("/alarms", "\xff-1").waitFor("{\"text\":\"fire\"}");
}

TEST_F(HowToStreams, WhenAReaderStopsTheOthersAreTold)
{
    BwaTestStream stopped = open("/alarms");
    BwaTestStream reading = open("/alarms");
    stopped.stopReading();

    for (int alarm = 0; alarm < 200; ++alarm) {
        sensors.raiseAlarm(QString(10000, QLatin1Char('x')));
        reading.waitFor("\n\n");
    }

    stopped.waitForEnd();
}

TEST_F(HowToStreams, WhenAHandlerThrowsTheClientLearnsNoSecret)
{
    const BwaTestReply reply = BwaTestRequest("GET", "/broken").sendTo(sensors.service);

    EXPECT_EQ(reply.body, R"({"status":500,"title":"Internal Server Error"})");
    sensors.raiseAlarm(QStringLiteral("fire"));
}

TEST_F(HowToStreams, WhenTheServerStopsTheStreamsEnd)
{
    BwaTestStream stream = open("/temperature");

    Q_EMIT sensors.service.stopping(); // as BwaRestServer does

    EXPECT_EQ(stream.waitForEnd(), "");
}
