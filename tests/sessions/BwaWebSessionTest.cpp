// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "sessions/BwaWebSession.h"

#include "sessions/ManualClock.h"
#include "support/Application.h"
#include "support/MessageRecorder.h"
#include "support/QtPrinters.h"

#include <QElapsedTimer>
#include <QMetaMethod>
#include <QPointer>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <vector>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const QString user = QStringLiteral("ann");
const QUuid givenId(QStringLiteral("{11111111-1111-4111-8111-111111111111}"));
const QUuid givenToken(QStringLiteral("{aaaaaaaa-aaaa-4aaa-8aaa-aaaaaaaaaaaa}"));

constexpr int lifetime = 1000; // milliseconds
constexpr int delay = 500;     // milliseconds

// The private slot that the token's timer calls.
void expireToken(BwaWebSession* session)
{
    ASSERT_TRUE(QMetaObject::invokeMethod(session, "expireToken", Qt::DirectConnection));
}

bool isRandomUuid(const QUuid& id)
{
    return id.variant() == QUuid::DCE && id.version() == QUuid::Random;
}

// The names of the signals of one session, in the order of their emission.
class SignalRecorder
{
public:
    explicit SignalRecorder(const BwaWebSession* session)
    {
        QObject::connect(session, &BwaWebSession::tokenExpired,
                         [this] { names.emplace_back("tokenExpired"); });
        QObject::connect(session, &BwaWebSession::aboutToRemove,
                         [this] { names.emplace_back("aboutToRemove"); });
    }

    std::vector<std::string> names;
};

// Sessions on a clock that only the test moves on. Times in the names are those of the constants.
class BwaWebSessionTest : public ManualClockTest
{
protected:
    BwaWebSession* newSession(int tokenLifetime, int removalDelay)
    {
        return new BwaWebSession(user, tokenLifetime, removalDelay, &m_owner);
    }

private:
    QObject m_owner;
};

class BwaWebSessionInRealTime : public testing::Test
{
    Application m_application;
};

std::vector<std::string> methodsOf(const QMetaObject& metaObject)
{
    const std::vector<std::string> access = {"private ", "protected ", "public "};
    std::vector<std::string> methods;
    for (int i = metaObject.methodOffset(); i < metaObject.methodCount(); ++i) {
        const QMetaMethod method = metaObject.method(i);
        methods.push_back(
            (method.methodType() == QMetaMethod::Signal ? "signal " : access[method.access()]) +
            method.methodSignature().toStdString());
    }
    return methods;
}

} // namespace

TEST(BwaWebSession, DeclaresItsSignalsAndSlotsInOrder)
{
    EXPECT_THAT(methodsOf(BwaWebSession::staticMetaObject),
                ElementsAre("signal aboutToRemove()", "signal tokenExpired()", "public remove()",
                            "private expireToken()"));
}

// Construction

TEST_F(BwaWebSessionTest, WhenCreatedHasFreshIdAndValidToken)
{
    QObject owner;
    const BwaWebSession session(user, lifetime, delay, &owner);

    EXPECT_TRUE(isRandomUuid(session.sessionId()));
    EXPECT_TRUE(isRandomUuid(session.token()));
    EXPECT_NE(session.sessionId(), session.token());
    EXPECT_FALSE(session.isTokenExpired());
    EXPECT_EQ(session.username(), user);
    EXPECT_EQ(session.parent(), &owner);
}

TEST_F(BwaWebSessionTest, WhenCreatedStartsOnlyTheTokenTimer)
{
    const BwaWebSession session(user, lifetime, delay);

    EXPECT_EQ(clock->started(), 1);
    EXPECT_EQ(clock->running(), 1);
    EXPECT_TRUE(clock->arePrecise());
}

TEST_F(BwaWebSessionTest, WhenCreatedWithGivenTokenKeepsIdAndToken)
{
    const MessageRecorder silence;
    QObject owner;
    const BwaWebSession session(user, givenId, givenToken, &owner);

    EXPECT_EQ(session.sessionId(), givenId);
    EXPECT_EQ(session.token(), givenToken);
    EXPECT_FALSE(session.isTokenExpired());
    EXPECT_EQ(session.username(), user);
    EXPECT_EQ(session.parent(), &owner);
}

TEST_F(BwaWebSessionTest, WhenCreatedWithGivenTokenNeverExpires)
{
    const MessageRecorder silence;
    const BwaWebSession session(user, givenId, givenToken);

    clock->advance(std::numeric_limits<int>::max());

    EXPECT_EQ(clock->started(), 0);
    EXPECT_FALSE(session.isTokenExpired());
}

TEST_F(BwaWebSessionTest, WhenCreatedWithGivenTokenWarnsEveryTime)
{
    const MessageRecorder recorder;

    const BwaWebSession first(QStringLiteral("ann"), givenId, givenToken);
    const BwaWebSession second(QStringLiteral("%s%1\"\n"), givenId, givenToken);

    EXPECT_THAT(
        recorder.messages(),
        ElementsAre(
            qMakePair(QtWarningMsg,
                      QStringLiteral("Non-expiring Web session created for user \"ann\"")),
            qMakePair(QtWarningMsg,
                      QStringLiteral("Non-expiring Web session created for user \"%s%1\"\n\""))));
}

TEST_F(BwaWebSessionTest, WhenCreatedWithGivenTokenWarnsInTheLocalEncoding)
{
    const MessageRecorder recorder;
    const QString name = QString::fromUtf8("caf\xc3\xa9");

    const BwaWebSession session(name, givenId, givenToken);

    EXPECT_THAT(recorder.messages(),
                ElementsAre(qMakePair(
                    QtWarningMsg,
                    QString(QStringLiteral("Non-expiring Web session created for user \"") +
                            QString::fromUtf8(name.toLocal8Bit()) + QLatin1Char('"')))));
}

TEST_F(BwaWebSessionTest, WhenCreatedAndRenewedPrintsNothing)
{
    const MessageRecorder recorder;

    BwaWebSession* session = newSession(-1, -1);
    session->generateNewToken();
    expireToken(newSession(lifetime, delay));

    EXPECT_THAT(recorder.messages(), IsEmpty());
}

TEST_F(BwaWebSessionTest, WhenDestroyedEmitsNothing)
{
    auto session = std::make_unique<BwaWebSession>(user, lifetime, delay);
    const SignalRecorder recorder(session.get());

    session.reset();

    EXPECT_THAT(recorder.names, IsEmpty());
    EXPECT_EQ(clock->running(), 0);
}

TEST(BwaWebSession, GeneratesAMillionDistinctRandomTokens)
{
    BwaWebSession session(user, -1, -1);
    std::vector<QUuid> tokens(1000000);

    for (QUuid& token : tokens) {
        token = session.generateNewToken();
    }

    EXPECT_TRUE(std::all_of(tokens.begin(), tokens.end(), isRandomUuid));
    // Any order will do that brings equal tokens together; this one is quick without optimisation.
    std::qsort(tokens.data(), tokens.size(), sizeof(QUuid),
               [](const void* first, const void* second) {
                   return std::memcmp(first, second, sizeof(QUuid));
               });
    EXPECT_EQ(std::adjacent_find(tokens.begin(), tokens.end()), tokens.end());
}

TEST(BwaWebSession, GeneratesDistinctRandomIds)
{
    std::vector<QUuid> ids(20000);
    for (QUuid& id : ids) {
        id = BwaWebSession(user, -1, -1).sessionId();
    }

    EXPECT_TRUE(std::all_of(ids.begin(), ids.end(), isRandomUuid));
    std::sort(ids.begin(), ids.end());
    EXPECT_EQ(std::adjacent_find(ids.begin(), ids.end()), ids.end());
}

// The life of a session

TEST_F(BwaWebSessionTest, WhenLifetimeHasPassedExpiresTheToken)
{
    BwaWebSession* session = newSession(lifetime, delay);
    const SignalRecorder recorder(session);
    const QUuid token = session->token();

    clock->advance(lifetime - 1);
    EXPECT_FALSE(session->isTokenExpired());
    EXPECT_THAT(recorder.names, IsEmpty());
    clock->advance(1);

    EXPECT_TRUE(session->isTokenExpired());
    EXPECT_EQ(session->token(), token);
    EXPECT_THAT(recorder.names, ElementsAre("tokenExpired"));
}

TEST_F(BwaWebSessionTest, GivenTheLongestLifetimeExpiresTheTokenNoEarlier)
{
    const int longest = std::numeric_limits<int>::max();
    const BwaWebSession* session = newSession(longest, -1);

    clock->advance(longest - 1);
    EXPECT_FALSE(session->isTokenExpired());
    clock->advance(1);

    EXPECT_TRUE(session->isTokenExpired());
}

TEST_F(BwaWebSessionTest, GivenAClockOfMoreThan32BitsExpiresTheTokenOnTime)
{
    clock->advance(5000000000); // 58 days
    const BwaWebSession* session = newSession(lifetime, -1);

    clock->advance(lifetime - 1);
    EXPECT_FALSE(session->isTokenExpired());
    clock->advance(1);

    EXPECT_TRUE(session->isTokenExpired());
}

TEST_F(BwaWebSessionTest, WhenTokenExpiresStartsOnlyTheRemovalTimer)
{
    newSession(lifetime, delay);

    clock->advance(lifetime);

    EXPECT_EQ(clock->running(), 1);
    EXPECT_EQ(clock->started(), 2);
    EXPECT_TRUE(clock->arePrecise());
}

TEST_F(BwaWebSessionTest, WhenRemovalDelayHasPassedRemovesTheSession)
{
    const QPointer<BwaWebSession> session(newSession(lifetime, delay));
    const SignalRecorder recorder(session);

    clock->advance(lifetime + delay - 1);
    EXPECT_FALSE(session.isNull());
    clock->advance(1);

    EXPECT_THAT(recorder.names, ElementsAre("tokenExpired", "aboutToRemove"));
    EXPECT_TRUE(session.isNull());
    EXPECT_EQ(clock->running(), 0);
}

TEST_F(BwaWebSessionTest, GivenRemovalDelayOfZeroRemovesTheSessionInTheNextPass)
{
    const QPointer<BwaWebSession> session(newSession(lifetime, 0));
    const SignalRecorder recorder(session);

    expireToken(session);
    EXPECT_THAT(recorder.names, ElementsAre("tokenExpired"));
    clock->advance(0);

    EXPECT_THAT(recorder.names, ElementsAre("tokenExpired", "aboutToRemove"));
    EXPECT_TRUE(session.isNull());
}

TEST_F(BwaWebSessionTest, GivenLifetimeOfZeroExpiresInTheNextPass)
{
    const BwaWebSession* session = newSession(0, -1);

    EXPECT_FALSE(session->isTokenExpired());
    clock->advance(0);

    EXPECT_TRUE(session->isTokenExpired());
}

TEST_F(BwaWebSessionTest, GivenNegativeLifetimeNeverExpiresByItself)
{
    for (const int never : {-1, -1000, std::numeric_limits<int>::min()}) {
        const BwaWebSession* session = newSession(never, 0);

        clock->advance(std::numeric_limits<int>::max());

        EXPECT_FALSE(session->isTokenExpired()) << never;
    }
    EXPECT_EQ(clock->started(), 0);
}

TEST_F(BwaWebSessionTest, GivenNegativeLifetimeIsRemovedOnceItsTokenHasExpired)
{
    const QPointer<BwaWebSession> session(newSession(-1, delay));

    expireToken(session);
    clock->advance(delay);

    EXPECT_TRUE(session.isNull());
}

TEST_F(BwaWebSessionTest, GivenNegativeRemovalDelayIsNeverRemovedByItself)
{
    for (const int never : {-1, -1000, std::numeric_limits<int>::min()}) {
        const QPointer<BwaWebSession> session(newSession(lifetime, never));
        const SignalRecorder recorder(session);

        clock->advance(std::numeric_limits<int>::max());

        EXPECT_THAT(recorder.names, ElementsAre("tokenExpired")) << never;
        EXPECT_FALSE(session.isNull()) << never;
    }
    EXPECT_EQ(clock->running(), 0);
}

// Expiring by hand

TEST_F(BwaWebSessionTest, WhenExpiredTwiceEmitsOnce)
{
    BwaWebSession* session = newSession(lifetime, delay);
    const SignalRecorder recorder(session);

    expireToken(session);
    expireToken(session);

    EXPECT_THAT(recorder.names, ElementsAre("tokenExpired"));
}

TEST_F(BwaWebSessionTest, WhenExpiredTwiceDoesNotPutTheRemovalOff)
{
    const QPointer<BwaWebSession> session(newSession(-1, delay));
    expireToken(session);
    clock->advance(delay - 1);

    expireToken(session);
    clock->advance(1);

    EXPECT_TRUE(session.isNull());
}

TEST_F(BwaWebSessionTest, WhenExpiredEarlyIgnoresTheTokenTimer)
{
    constexpr int longDelay = 5 * lifetime;
    const QPointer<BwaWebSession> session(newSession(lifetime, longDelay));
    const SignalRecorder recorder(session);
    clock->advance(lifetime / 2);

    expireToken(session);
    clock->advance(longDelay - 1);

    EXPECT_THAT(recorder.names, ElementsAre("tokenExpired"));
    clock->advance(1);
    EXPECT_TRUE(session.isNull());
}

TEST_F(BwaWebSessionTest, WhenTokenExpiresIsExpiredDuringTheSignal)
{
    BwaWebSession* session = newSession(lifetime, delay);
    bool wasExpired = false;
    QObject::connect(session, &BwaWebSession::tokenExpired,
                     [&] { wasExpired = session->isTokenExpired(); });

    clock->advance(lifetime);

    EXPECT_TRUE(wasExpired);
}

// Renewal

TEST_F(BwaWebSessionTest, WhenRenewedReturnsTheNewToken)
{
    BwaWebSession* session = newSession(lifetime, delay);
    const QUuid id = session->sessionId();
    const QUuid oldToken = session->token();

    const QUuid newToken = session->generateNewToken();

    EXPECT_EQ(session->token(), newToken);
    EXPECT_NE(newToken, oldToken);
    EXPECT_TRUE(isRandomUuid(newToken));
    EXPECT_FALSE(session->isTokenExpired());
    EXPECT_EQ(session->sessionId(), id);
}

TEST_F(BwaWebSessionTest, WhenRenewedWhileValidExpiresTheOldTokenFirst)
{
    BwaWebSession* session = newSession(lifetime, delay);
    const QUuid oldToken = session->token();
    const SignalRecorder recorder(session);
    QUuid tokenDuringSignal;
    bool wasExpired = false;
    QObject::connect(session, &BwaWebSession::tokenExpired, [&] {
        tokenDuringSignal = session->token();
        wasExpired = session->isTokenExpired();
    });

    session->generateNewToken();

    EXPECT_THAT(recorder.names, ElementsAre("tokenExpired"));
    EXPECT_EQ(tokenDuringSignal, oldToken);
    EXPECT_TRUE(wasExpired);
}

TEST_F(BwaWebSessionTest, WhenRenewedWhileValidStartsTheLifetimeFromZero)
{
    BwaWebSession* session = newSession(lifetime, delay);
    clock->advance(lifetime - 1);

    session->generateNewToken();

    EXPECT_EQ(clock->running(), 1);
    clock->advance(lifetime - 1);
    EXPECT_FALSE(session->isTokenExpired());
    clock->advance(1);
    EXPECT_TRUE(session->isTokenExpired());
}

TEST_F(BwaWebSessionTest, WhenRenewedDuringTheRemovalDelayIsNotRemoved)
{
    const QPointer<BwaWebSession> session(newSession(lifetime, delay));
    clock->advance(lifetime + delay - 1);
    const SignalRecorder recorder(session);

    session->generateNewToken();

    EXPECT_THAT(recorder.names, IsEmpty());
    clock->advance(lifetime - 1);
    ASSERT_FALSE(session.isNull());
    EXPECT_FALSE(session->isTokenExpired());
    EXPECT_THAT(recorder.names, IsEmpty());
    clock->advance(1 + delay);
    EXPECT_THAT(recorder.names, ElementsAre("tokenExpired", "aboutToRemove"));
}

TEST_F(BwaWebSessionTest, WhenExpiredEarlyAndRenewedLivesForAWholeLifetime)
{
    BwaWebSession* session = newSession(lifetime, -1);
    clock->advance(400);
    expireToken(session);
    clock->advance(200);

    session->generateNewToken();

    clock->advance(lifetime - 1);
    EXPECT_FALSE(session->isTokenExpired());
    clock->advance(1);
    EXPECT_TRUE(session->isTokenExpired());
}

TEST_F(BwaWebSessionTest, GivenGivenTokenWhenRenewedNeverExpires)
{
    const MessageRecorder silence;
    BwaWebSession session(user, givenId, givenToken);
    const SignalRecorder recorder(&session);

    const QUuid token = session.generateNewToken();

    EXPECT_THAT(recorder.names, ElementsAre("tokenExpired"));
    EXPECT_TRUE(isRandomUuid(token));
    EXPECT_EQ(clock->started(), 0);
}

TEST_F(BwaWebSessionTest, WhenRenewedOnExpiryIsRemovedAfterTheDelayNevertheless)
{
    const QPointer<BwaWebSession> session(newSession(lifetime, delay));
    QObject::connect(session, &BwaWebSession::tokenExpired, [&] { session->generateNewToken(); });

    clock->advance(lifetime + delay);

    EXPECT_TRUE(session.isNull());
}

// Many sessions

TEST_F(BwaWebSessionTest, GivenManySessionsRunsOneTimer)
{
    for (int i = 0; i < 1000; ++i) {
        newSession(lifetime + i % 7, delay)->generateNewToken();
    }

    EXPECT_EQ(clock->running(), 1);
}

TEST_F(BwaWebSessionTest, GivenTheSameTimeExpiresInTheOrderOfTheStart)
{
    std::string order;
    BwaWebSession* renewed = newSession(lifetime, -1);
    QObject::connect(renewed, &BwaWebSession::tokenExpired, [&] { order += "renewed "; });
    QObject::connect(newSession(lifetime, -1), &BwaWebSession::tokenExpired,
                     [&] { order += "first "; });
    renewed->generateNewToken();
    QObject::connect(newSession(lifetime, -1), &BwaWebSession::tokenExpired,
                     [&] { order += "last "; });
    order.clear();

    clock->advance(lifetime);

    EXPECT_EQ(order, "first renewed last ");
}

TEST_F(BwaWebSessionTest, WhenExpiryDeletesAnotherThatIsDueTheOtherStaysSilent)
{
    const BwaWebSession* first = newSession(lifetime, delay);
    auto* second = newSession(lifetime, delay);
    const SignalRecorder recorder(second);
    QObject::connect(first, &BwaWebSession::tokenExpired, [&] { delete second; });

    clock->advance(lifetime);

    EXPECT_THAT(recorder.names, IsEmpty());
}

// Removal

TEST_F(BwaWebSessionTest, WhenRemovedAnnouncesItAndIsDeletedByTheEventLoop)
{
    const QPointer<BwaWebSession> session(newSession(lifetime, delay));
    const SignalRecorder recorder(session);

    session->remove();

    EXPECT_THAT(recorder.names, ElementsAre("aboutToRemove"));
    ASSERT_FALSE(session.isNull());
    EXPECT_FALSE(session->isTokenExpired());
    clock->advance(0);
    EXPECT_TRUE(session.isNull());
    EXPECT_THAT(recorder.names, ElementsAre("aboutToRemove"));
}

TEST_F(BwaWebSessionTest, CanBeRemovedByASignal)
{
    const QPointer<BwaWebSession> session(newSession(lifetime, delay));
    QObject sender;
    ASSERT_TRUE(
        QObject::connect(&sender, SIGNAL(objectNameChanged(QString)), session, SLOT(remove())));

    sender.setObjectName(QStringLiteral("changed"));
    clock->advance(0);

    EXPECT_TRUE(session.isNull());
}

// Applications that come and go

TEST(BwaWebSession, WhenItOutlivesTheApplicationCanBeRenewedInTheNext)
{
    auto application = std::make_unique<Application>();
    BwaWebSession session(user, lifetime, delay);
    application.reset();
    auto* const clock = new ManualClock;
    QCoreApplication::setEventDispatcher(clock);
    application = std::make_unique<Application>();

    session.generateNewToken();
    clock->advance(lifetime);

    EXPECT_TRUE(session.isTokenExpired());
}

TEST(BwaWebSession, WhenCreatedWithoutApplicationDoesNotKeepOthersFromExpiring)
{
    const MessageRecorder silence; // of Qt's warning
    auto* const clock = new ManualClock;
    const BwaWebSession early(user, lifetime, delay);
    QCoreApplication::setEventDispatcher(clock);
    const Application application;

    const BwaWebSession session(user, lifetime, delay);
    clock->advance(lifetime);

    EXPECT_TRUE(session.isTokenExpired());
}

TEST(BwaWebSession, WhenCreatedWithoutApplicationAndRenewedInOneExpires)
{
    const MessageRecorder silence; // of Qt's warning
    auto* const clock = new ManualClock;
    BwaWebSession early(user, lifetime, delay);
    QCoreApplication::setEventDispatcher(clock);
    const Application application;

    early.generateNewToken();
    clock->advance(lifetime);

    EXPECT_TRUE(early.isTokenExpired());
}

// Real time

TEST_F(BwaWebSessionInRealTime, NeverExpiresEarly)
{
    std::vector<std::unique_ptr<BwaWebSession>> sessions;
    qint64 earliest = 1000000000; // nanoseconds late
    int expired = 0;
    for (int i = 0; i < 50; ++i) {
        const int milliseconds = 1 + i * 7 % 20;
        QElapsedTimer sinceStart;
        sinceStart.start();
        sessions.push_back(std::make_unique<BwaWebSession>(user, milliseconds, -1));
        QObject::connect(
            sessions.back().get(), &BwaWebSession::tokenExpired, [=, &earliest, &expired] {
                earliest = std::min(earliest, sinceStart.nsecsElapsed() - milliseconds * 1000000LL);
                ++expired;
            });
    }
    const BwaWebSession last(user, 21, -1);

    ASSERT_TRUE(waitFor(&last, &BwaWebSession::tokenExpired));

    EXPECT_EQ(expired, 50);
    EXPECT_GE(earliest, 0);
}

// Renewed in between, so that the wake-up for its first token does not decide.
TEST_F(BwaWebSessionInRealTime, ExpiresBeforeATimerOfQtThatWasStartedLater)
{
    for (int round = 0; round < 40; ++round) {
        BwaWebSession session(user, 5, -1);
        QTimer pause;
        pause.start(2);
        ASSERT_TRUE(waitFor(&pause, &QTimer::timeout));
        QTimer later;
        later.setTimerType(Qt::PreciseTimer);
        bool expiredBefore = false;
        QObject::connect(&later, &QTimer::timeout,
                         [&] { expiredBefore = session.isTokenExpired(); });
        session.generateNewToken();
        later.start(5);

        ASSERT_TRUE(waitFor(&later, &QTimer::timeout));

        ASSERT_TRUE(expiredBefore) << "in round " << round;
    }
}

TEST_F(BwaWebSessionInRealTime, WhenASlotRunsAnEventLoopOthersExpireInIt)
{
    const BwaWebSession first(user, 1, -1);
    const BwaWebSession second(user, 2, -1);
    bool expiredWithin = false;
    QObject::connect(&first, &BwaWebSession::tokenExpired,
                     [&] { expiredWithin = waitFor(&second, &BwaWebSession::tokenExpired); });

    ASSERT_TRUE(waitFor(&first, &BwaWebSession::tokenExpired));

    EXPECT_TRUE(expiredWithin);
}

TEST_F(BwaWebSessionInRealTime, ExpiresThenRemovesTheSession)
{
    const QPointer<BwaWebSession> session(new BwaWebSession(user, 20, 20));
    const SignalRecorder recorder(session);

    ASSERT_TRUE(waitFor(session.data(), &BwaWebSession::tokenExpired));
    EXPECT_TRUE(session->isTokenExpired());
    ASSERT_TRUE(waitFor(session.data(), &QObject::destroyed));

    EXPECT_THAT(recorder.names, ElementsAre("tokenExpired", "aboutToRemove"));
    EXPECT_TRUE(session.isNull());
}

TEST_F(BwaWebSessionInRealTime, GivenRemovalDelayOfZeroRemovesTheSession)
{
    const QPointer<BwaWebSession> session(new BwaWebSession(user, 0, 0));

    ASSERT_TRUE(waitFor(session.data(), &QObject::destroyed));

    EXPECT_TRUE(session.isNull());
}
