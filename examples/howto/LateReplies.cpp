// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiRequest.h"
#include "http/BwaHttpPlainTextHeader.h"
#include "services/BwaStandardFcgiRequestProcessor.h"
#include "testing/BwaTestRequest.h"

#include <QCoreApplication>
#include <QList>
#include <QTimer>

#include <gtest/gtest.h>

#include <map>
#include <utility>

namespace {

using Readings = std::map<QString, double>; // by sensor

// Answers GET /?sensor=NAME when the next readings come.
class NextReading : public BwaStandardFcgiRequestProcessor
{
public:
    explicit NextReading(int mostWaiting)
        : BwaStandardFcgiRequestProcessor(nullptr)
        , m_mostWaiting(mostWaiting)
    {
    }

    //! [stop]
    void refuseAll()
    {
        for (BwaFcgiRequest* request : std::exchange(m_waiting, {})) {
            request->sendHttpError(BwaFcgiRequest::ServiceUnavailable);
            delete request;
        }
    }
    //! [stop]

    //! [answer]
    // To be called from the event loop, for example from a slot.
    void publish(const Readings& readings)
    {
        const QList<BwaFcgiRequest*> waiting = std::exchange(m_waiting, {});
        for (BwaFcgiRequest* request : waiting) {
            answer(request, readings);
        }
    }

private:
    // The library does not catch exceptions here: one would end the process.
    static void answer(BwaFcgiRequest* request, const Readings& readings)
    {
        try {
            write(request, readings);
        } catch (const std::exception& exception) {
            request->err() << exception.what();
            request->sendHttpError(BwaFcgiRequest::InternalServerError);
        }
        delete request;
    }

    static void write(BwaFcgiRequest* request, const Readings& readings)
    {
        const QString name =
            request->cgiRequest()->queryVariables().value(QStringLiteral("sensor"));
        const double reading = readings.at(name); // throws when there is none
        request->out() << BwaHttpPlainTextHeader() << reading;
    }
    //! [answer]

    //! [keep]
protected:
    void processGetMethod(BwaFcgiRequest* request) override
    {
        if (m_waiting.size() < m_mostWaiting) {
            m_waiting.append(request); // owned until it is answered
            request->onGone([this, request] { forget(request); });
        } else {
            request->sendHttpError(BwaFcgiRequest::ServiceUnavailable);
            delete request;
        }
    }

private:
    void forget(BwaFcgiRequest* request)
    {
        m_waiting.removeOne(request);
        delete request;
    }

    int m_mostWaiting;
    QList<BwaFcgiRequest*> m_waiting; // owned until answered
    //! [keep]
};

class HowToAnswerLate : public testing::Test
{
protected:
    HowToAnswerLate()
    {
        //! [quit]
        // Requests must not outlive the listener.
        QObject::connect(&m_application, &QCoreApplication::aboutToQuit,
                         [this] { m_next.refuseAll(); });
        //! [quit]
    }

    BwaTestReply replyFor(const char* sensor)
    {
        return BwaTestRequest("GET", QByteArray("/?sensor=") + sensor).sendTo(m_next);
    }

    void publish() { m_next.publish({{QStringLiteral("roof"), 21.5}}); }

    int m_argumentCount = 0;
    QCoreApplication m_application{m_argumentCount, nullptr};
    NextReading m_next{1};
};

} // namespace

TEST_F(HowToAnswerLate, WhenTheReadingComesWritesIt)
{
    QTimer::singleShot(0, [this] { publish(); });

    EXPECT_EQ(replyFor("roof").body, "21.5");
}

TEST_F(HowToAnswerLate, WhenTheAnswerThrowsSends500AndLogsIt)
{
    QTimer::singleShot(0, [this] { publish(); });

    const BwaTestReply reply = replyFor("cellar");

    EXPECT_EQ(reply.statusCode, 500);
    EXPECT_TRUE(reply.errorText.contains("at")) << reply.errorText.constData(); // of std::map::at
}

TEST_F(HowToAnswerLate, GivenAsManyWhoWaitAsMayRefusesTheNext)
{
    BwaTestReply refused;
    QTimer::singleShot(0, [&] {
        refused = replyFor("roof");
        publish();
    });

    EXPECT_EQ(replyFor("roof").body, "21.5");
    EXPECT_EQ(refused.statusCode, 503);
}

TEST_F(HowToAnswerLate, WhenAskedToRefusesAllWhoWait)
{
    QTimer::singleShot(0, [this] { m_next.refuseAll(); });

    EXPECT_EQ(replyFor("roof").statusCode, 503);
}
