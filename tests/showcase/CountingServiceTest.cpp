// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "CountingService.h"

#include "Replies.h"
#include "Statistics.h"
#include "fcgi/BwaFcgiRequest.h"
#include "testing/BwaTestRequest.h"

#include <QCoreApplication>
#include <QTimer>

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::Pair;

namespace {

// Answers 404 and logs it; later, when the path says so.
class RefusingService : public BwaAbstractFcgiService
{
public:
    void processRequest(BwaFcgiRequest* request) override
    {
        if (request->fullPath() == QLatin1String("/later")) {
            QTimer::singleShot(0, this, [request] { refuse(request); });
        } else {
            refuse(request);
        }
    }

private:
    static void refuse(BwaFcgiRequest* request)
    {
        request->err() << "refused";
        request->sendHttpError(BwaFcgiRequest::NotFound);
        delete request;
    }
};

class Counting : public testing::Test
{
protected:
    Counting() { m_clock.start(); }

    BwaTestReply send(const QByteArray& target)
    {
        return BwaTestRequest("GET", target).sendTo(m_counting);
    }

    int m_arguments = 0;
    QCoreApplication m_application{m_arguments, nullptr};
    RefusingService m_service;
    Statistics m_statistics;
    QElapsedTimer m_clock;
    CountingService m_counting{&m_service, &m_statistics, &m_clock};
};

} // namespace

TEST_F(Counting, CountsRepliesThatComeAtOnceAndLater)
{
    EXPECT_EQ(send("/").statusCode, 404);
    EXPECT_EQ(send("/later").statusCode, 404);

    EXPECT_THAT(m_statistics.statuses().toStdMap(), ElementsAre(Pair(404, 2)));
}

TEST_F(Counting, GivenManyRefusalsInAMinuteLogsNoMore)
{
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(send("/").errorText, "refused");
    }

    EXPECT_EQ(send("/").errorText, "Too many refusals: no more of them are logged in this minute");
    EXPECT_EQ(send("/later").errorText, "");
}
