// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "sessions/BwaWebSessionManager.h"

#include "sessions/BwaWebSession.h"
#include "sessions/ManualClock.h"
#include "support/Application.h"
#include "support/MessageRecorder.h"
#include "support/QtPrinters.h"

#include <QMetaMethod>
#include <QPointer>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const QString ann = QStringLiteral("ann");
const QString bob = QStringLiteral("bob");

constexpr int lifetime = 1000; // milliseconds
constexpr int delay = 500;     // milliseconds

// Ids in ascending order.
const QUuid id1(QStringLiteral("{00000001-0000-4000-8000-000000000000}"));
const QUuid id2(QStringLiteral("{00000002-0000-4000-8000-000000000000}"));
const QUuid id3(QStringLiteral("{00000003-0000-4000-8000-000000000000}"));
const QUuid token(QStringLiteral("{aaaaaaaa-aaaa-4aaa-8aaa-aaaaaaaaaaaa}"));

std::string signalText(const char* name, const QUuid& id)
{
    return name + (' ' + id.toString().toStdString());
}

// The signals of a manager, in the order of their emission.
class SignalRecorder
{
public:
    explicit SignalRecorder(const BwaWebSessionManager* manager)
    {
        QObject::connect(manager, &BwaWebSessionManager::sessionCreated, [this](const QUuid& id) {
            texts.push_back(signalText("sessionCreated", id));
        });
        QObject::connect(manager, &BwaWebSessionManager::aboutToRemove, [this](const QUuid& id) {
            texts.push_back(signalText("aboutToRemove", id));
        });
        QObject::connect(manager, &BwaWebSessionManager::tokenExpired, [this](const QUuid& id) {
            texts.push_back(signalText("tokenExpired", id));
        });
    }

    std::vector<std::string> texts;
};

// A manager on a clock that only the test moves on.
class BwaWebSessionManagerTest : public ManualClockTest
{
protected:
    BwaWebSessionManager manager;

private:
    MessageRecorder m_silence; // of the warnings of non-expiring sessions
};

class BwaWebSessionManagerInRealTime : public testing::Test
{
    Application m_application;
};

} // namespace

TEST(BwaWebSessionManager, DeclaresItsSignalsAndSlotsInOrder)
{
    const QMetaObject& metaObject = BwaWebSessionManager::staticMetaObject;
    std::vector<std::string> methods;
    for (int i = metaObject.methodOffset(); i < metaObject.methodCount(); ++i) {
        const QMetaMethod method = metaObject.method(i);
        methods.push_back(method.methodSignature().toStdString() + ' ' +
                          method.parameterNames().join(' ').toStdString());
    }

    EXPECT_THAT(methods,
                ElementsAre("sessionCreated(QUuid) sessionId", "aboutToRemove(QUuid) sessionId",
                            "tokenExpired(QUuid) sessionId", "removeSession(QUuid) sessionId",
                            "removeSessions(QString) username", "removeSessions() ",
                            "existingSessionAboutToRemove() ", "existingSessionTokenExpired() "));
    EXPECT_EQ(metaObject.method(metaObject.methodCount() - 3).access(), QMetaMethod::Public);
    EXPECT_EQ(metaObject.method(metaObject.methodCount() - 2).access(), QMetaMethod::Private);
    EXPECT_EQ(metaObject.method(metaObject.methodCount() - 1).access(), QMetaMethod::Private);
}

TEST_F(BwaWebSessionManagerTest, IsEmpty)
{
    EXPECT_EQ(manager.findSession(id1), nullptr);
    EXPECT_EQ(manager.findSession(QUuid()), nullptr);
    EXPECT_THAT(manager.sessions(ann), IsEmpty());
    EXPECT_EQ(manager.parent(), nullptr);
}

TEST_F(BwaWebSessionManagerTest, HasTheGivenParent)
{
    QObject owner;

    EXPECT_EQ(BwaWebSessionManager(&owner).parent(), &owner);
}

// Creation

TEST_F(BwaWebSessionManagerTest, CreatesExpiringSessions)
{
    const BwaWebSession* session = manager.createSession(ann, lifetime, delay);

    EXPECT_EQ(session->username(), ann);
    EXPECT_EQ(session->parent(), &manager);
    EXPECT_EQ(manager.findSession(session->sessionId()), session);
    clock->advance(lifetime);
    EXPECT_TRUE(session->isTokenExpired());
}

TEST_F(BwaWebSessionManagerTest, CreatesSessionsWithGivenIdAndToken)
{
    const BwaWebSession* session = manager.createSession(ann, id1, token);

    EXPECT_EQ(session->username(), ann);
    EXPECT_EQ(session->sessionId(), id1);
    EXPECT_EQ(session->token(), token);
    EXPECT_EQ(session->parent(), &manager);
    EXPECT_EQ(manager.findSession(id1), session);
}

TEST_F(BwaWebSessionManagerTest, WhenCreatingAnnouncesTheSession)
{
    const SignalRecorder recorder(&manager);

    const BwaWebSession* expiring = manager.createSession(ann, lifetime, delay);
    manager.createSession(ann, id1, token);

    EXPECT_THAT(recorder.texts,
                ElementsAre(signalText("sessionCreated", expiring->sessionId()),
                            signalText("sessionCreated", id1)));
}

TEST_F(BwaWebSessionManagerTest, WhenAnnouncingASessionFindsIt)
{
    const BwaWebSession* found = nullptr;
    QObject::connect(&manager, &BwaWebSessionManager::sessionCreated,
                     [&](const QUuid& id) { found = manager.findSession(id); });

    const BwaWebSession* session = manager.createSession(ann, lifetime, delay);

    EXPECT_EQ(found, session);
}

TEST(BwaWebSessionManager, WhenCreatingNonExpiringSessionWarns)
{
    const MessageRecorder recorder;
    BwaWebSessionManager manager;

    manager.createSession(ann, id1, token);
    manager.createSession(ann, -1, -1);

    EXPECT_THAT(
        recorder.messages(),
        ElementsAre(qMakePair(
            QtWarningMsg, QStringLiteral("Non-expiring Web session created for user \"ann\""))));
}

// Lookup

TEST_F(BwaWebSessionManagerTest, FindsTheSessionsOfAUserInTheOrderOfTheirIds)
{
    BwaWebSession* third = manager.createSession(ann, id3, token);
    BwaWebSession* first = manager.createSession(ann, id1, token);
    manager.createSession(bob, id2, token);

    EXPECT_THAT(manager.sessions(ann), ElementsAre(first, third));
}

TEST_F(BwaWebSessionManagerTest, GivenOtherCaseFindsNoSessions)
{
    manager.createSession(ann, id1, token);

    EXPECT_THAT(manager.sessions(QStringLiteral("Ann")), IsEmpty());
    EXPECT_THAT(manager.sessions(QStringLiteral("ann ")), IsEmpty());
}

TEST_F(BwaWebSessionManagerTest, GivenUnknownIdFindsNoSession)
{
    manager.createSession(ann, id1, token);

    EXPECT_EQ(manager.findSession(id2), nullptr);
    EXPECT_EQ(manager.findSession(token), nullptr);
}

// Removal

TEST_F(BwaWebSessionManagerTest, WhenRemovingASessionForgetsAndAnnouncesIt)
{
    const QPointer<BwaWebSession> session(manager.createSession(ann, id1, token));
    const SignalRecorder recorder(&manager);

    manager.removeSession(id1);

    EXPECT_THAT(recorder.texts, ElementsAre(signalText("aboutToRemove", id1)));
    EXPECT_EQ(manager.findSession(id1), nullptr);
    EXPECT_THAT(manager.sessions(ann), IsEmpty());
    EXPECT_FALSE(session.isNull());
    clock->advance(0);
    EXPECT_TRUE(session.isNull());
    EXPECT_THAT(recorder.texts, ElementsAre(signalText("aboutToRemove", id1)));
}

TEST_F(BwaWebSessionManagerTest, WhenAnnouncingARemovalFindsTheSessionNoLonger)
{
    manager.createSession(ann, id1, token);
    bool found = true;
    QObject::connect(&manager, &BwaWebSessionManager::aboutToRemove,
                     [&](const QUuid& id) { found = manager.findSession(id) != nullptr; });

    manager.removeSession(id1);

    EXPECT_FALSE(found);
}

TEST_F(BwaWebSessionManagerTest, WhenASessionRemovesItselfForgetsAndAnnouncesIt)
{
    BwaWebSession* session = manager.createSession(ann, id1, token);
    const SignalRecorder recorder(&manager);

    session->remove();

    EXPECT_THAT(recorder.texts, ElementsAre(signalText("aboutToRemove", id1)));
    EXPECT_EQ(manager.findSession(id1), nullptr);
}

TEST_F(BwaWebSessionManagerTest, GivenUnknownIdRemovesNothing)
{
    const BwaWebSession* session = manager.createSession(ann, id1, token);
    const SignalRecorder recorder(&manager);

    manager.removeSession(id2);
    manager.removeSession(QUuid());

    EXPECT_THAT(recorder.texts, IsEmpty());
    EXPECT_EQ(manager.findSession(id1), session);
}

TEST_F(BwaWebSessionManagerTest, RemovesTheSessionsOfAUserInTheOrderOfTheirIds)
{
    manager.createSession(ann, id3, token);
    manager.createSession(ann, id1, token);
    const BwaWebSession* other = manager.createSession(bob, id2, token);
    const SignalRecorder recorder(&manager);

    manager.removeSessions(ann);

    EXPECT_THAT(recorder.texts,
                ElementsAre(signalText("aboutToRemove", id1), signalText("aboutToRemove", id3)));
    EXPECT_EQ(manager.findSession(id2), other);
}

TEST_F(BwaWebSessionManagerTest, GivenUserInOtherCaseRemovesNothing)
{
    const BwaWebSession* session = manager.createSession(ann, id1, token);

    manager.removeSessions(QStringLiteral("ANN"));

    EXPECT_EQ(manager.findSession(id1), session);
}

TEST_F(BwaWebSessionManagerTest, RemovesAllSessionsInTheOrderOfTheirIds)
{
    const QPointer<BwaWebSession> second(manager.createSession(bob, id2, token));
    const QPointer<BwaWebSession> third(manager.createSession(ann, id3, token));
    const QPointer<BwaWebSession> first(manager.createSession(ann, id1, token));
    const SignalRecorder recorder(&manager);

    manager.removeSessions();

    EXPECT_THAT(recorder.texts,
                ElementsAre(signalText("aboutToRemove", id1), signalText("aboutToRemove", id2),
                            signalText("aboutToRemove", id3)));
    clock->advance(0);
    EXPECT_TRUE(first.isNull() && second.isNull() && third.isNull());
}

TEST_F(BwaWebSessionManagerTest, CanBeAskedToRemoveThroughItsSlots)
{
    manager.createSession(ann, id1, token);
    manager.createSession(bob, id2, token);
    manager.createSession(ann, id3, token);
    const SignalRecorder recorder(&manager);

    QMetaObject::invokeMethod(&manager, "removeSession", Q_ARG(QUuid, id3));
    QMetaObject::invokeMethod(&manager, "removeSessions", Q_ARG(QString, bob));
    QMetaObject::invokeMethod(&manager, "removeSessions");

    EXPECT_THAT(recorder.texts,
                ElementsAre(signalText("aboutToRemove", id3), signalText("aboutToRemove", id2),
                            signalText("aboutToRemove", id1)));
}

TEST_F(BwaWebSessionManagerTest, WhenRemovedNoLongerFollowsTheSession)
{
    BwaWebSession* session = manager.createSession(ann, id1, token);
    manager.removeSession(id1);
    const SignalRecorder recorder(&manager);

    session->generateNewToken();
    session->remove();

    EXPECT_THAT(recorder.texts, IsEmpty());
}

TEST_F(BwaWebSessionManagerTest, WhenRemovedTheIdCanBeUsedAgain)
{
    const QPointer<BwaWebSession> old(manager.createSession(ann, id1, token));
    manager.removeSession(id1);

    const BwaWebSession* session = manager.createSession(ann, id1, token);
    clock->advance(0);

    EXPECT_TRUE(old.isNull());
    EXPECT_EQ(manager.findSession(id1), session);
}

// Tokens

TEST_F(BwaWebSessionManagerTest, WhenATokenExpiresAnnouncesItAndKeepsTheSession)
{
    const BwaWebSession* session = manager.createSession(ann, lifetime, delay);
    const SignalRecorder recorder(&manager);

    clock->advance(lifetime);

    EXPECT_THAT(recorder.texts, ElementsAre(signalText("tokenExpired", session->sessionId())));
    EXPECT_EQ(manager.findSession(session->sessionId()), session);
}

TEST_F(BwaWebSessionManagerTest, WhenAValidTokenIsRenewedAnnouncesTheOldOnesEnd)
{
    BwaWebSession* session = manager.createSession(ann, lifetime, delay);
    const SignalRecorder recorder(&manager);

    session->generateNewToken();

    EXPECT_THAT(recorder.texts, ElementsAre(signalText("tokenExpired", session->sessionId())));
}

TEST_F(BwaWebSessionManagerTest, WhenOneExpiresBecauseAnotherDoesAnnouncesBoth)
{
    const BwaWebSession* first = manager.createSession(ann, lifetime, delay);
    BwaWebSession* second = manager.createSession(ann, 2 * lifetime, delay);
    const auto connection =
        QObject::connect(first, &BwaWebSession::tokenExpired, [&] { second->generateNewToken(); });
    const SignalRecorder recorder(&manager);

    clock->advance(lifetime);

    EXPECT_THAT(recorder.texts,
                ElementsAre(signalText("tokenExpired", first->sessionId()),
                            signalText("tokenExpired", second->sessionId())));
    QObject::disconnect(connection);
}

TEST_F(BwaWebSessionManagerTest, GivenSignalThatTheSessionDidNotEmitKnowsTheSession)
{
    BwaWebSession* session = manager.createSession(ann, lifetime, delay);
    const SignalRecorder recorder(&manager);

    Q_EMIT session->tokenExpired();

    EXPECT_THAT(recorder.texts, ElementsAre(signalText("tokenExpired", session->sessionId())));
}

TEST_F(BwaWebSessionManagerTest, WhenASessionRunsOutForgetsIt)
{
    const QPointer<BwaWebSession> session(manager.createSession(ann, lifetime, delay));
    const QUuid id = session->sessionId();
    const SignalRecorder recorder(&manager);

    clock->advance(lifetime + delay);

    EXPECT_THAT(recorder.texts,
                ElementsAre(signalText("tokenExpired", id), signalText("aboutToRemove", id)));
    EXPECT_EQ(manager.findSession(id), nullptr);
    EXPECT_TRUE(session.isNull());
}

TEST_F(BwaWebSessionManagerTest, GivenNoSenderDoesNothing)
{
    const BwaWebSession* session = manager.createSession(ann, id1, token);
    const SignalRecorder recorder(&manager);

    EXPECT_TRUE(QMetaObject::invokeMethod(&manager, "existingSessionAboutToRemove"));
    EXPECT_TRUE(QMetaObject::invokeMethod(&manager, "existingSessionTokenExpired"));

    EXPECT_THAT(recorder.texts, IsEmpty());
    EXPECT_EQ(manager.findSession(id1), session);
}

// Destruction

TEST_F(BwaWebSessionManagerTest, WhenDestroyedDestroysItsSessionsSilently)
{
    auto owner = std::make_unique<BwaWebSessionManager>();
    const QPointer<BwaWebSession> expiring(owner->createSession(ann, lifetime, delay));
    const QPointer<BwaWebSession> lasting(owner->createSession(ann, id1, token));
    const SignalRecorder recorder(owner.get());
    int sessionSignals = 0;
    QObject::connect(expiring, &BwaWebSession::aboutToRemove, [&] { ++sessionSignals; });
    QObject::connect(expiring, &BwaWebSession::tokenExpired, [&] { ++sessionSignals; });

    owner.reset();

    EXPECT_THAT(recorder.texts, IsEmpty());
    EXPECT_EQ(sessionSignals, 0);
    EXPECT_TRUE(expiring.isNull());
    EXPECT_TRUE(lasting.isNull());
}

TEST_F(BwaWebSessionManagerTest, WhenDestroyedWithARemovedSessionDestroysItOnce)
{
    auto owner = std::make_unique<BwaWebSessionManager>();
    const QPointer<BwaWebSession> session(owner->createSession(ann, id1, token));
    owner->removeSession(id1);

    owner.reset();
    clock->advance(0);

    EXPECT_TRUE(session.isNull());
}

TEST_F(BwaWebSessionManagerTest, WhenDeletedLaterDuringARemovalIsDestroyedWithItsSessions)
{
    auto* owner = new BwaWebSessionManager;
    const QPointer<BwaWebSessionManager> watched(owner);
    const QPointer<BwaWebSession> first(owner->createSession(ann, id1, token));
    const QPointer<BwaWebSession> second(owner->createSession(ann, id2, token));
    QObject::connect(owner, &BwaWebSessionManager::aboutToRemove, owner, &QObject::deleteLater);

    owner->removeSessions();
    clock->advance(0);

    EXPECT_TRUE(watched.isNull());
    EXPECT_TRUE(first.isNull());
    EXPECT_TRUE(second.isNull());
}

TEST_F(BwaWebSessionManagerTest, WhenARemovalRemovesAllOthersRemovesEachOnce)
{
    manager.createSession(ann, id1, token);
    manager.createSession(ann, id2, token);
    QObject::connect(&manager, &BwaWebSessionManager::aboutToRemove, &manager,
                     [this] { manager.removeSessions(); });
    const SignalRecorder recorder(&manager);

    manager.removeSession(id1);
    clock->advance(0);

    EXPECT_THAT(recorder.texts,
                testing::UnorderedElementsAre(signalText("aboutToRemove", id1),
                                              signalText("aboutToRemove", id2)));
}

// The same id twice

TEST_F(BwaWebSessionManagerTest, GivenUsedIdFindsTheNewerSession)
{
    BwaWebSession* older = manager.createSession(ann, id1, token);
    const SignalRecorder recorder(&manager);

    BwaWebSession* newer = manager.createSession(bob, id1, token);

    EXPECT_EQ(manager.findSession(id1), newer);
    EXPECT_THAT(manager.sessions(ann), IsEmpty());
    EXPECT_THAT(manager.sessions(bob), ElementsAre(newer));
    EXPECT_THAT(recorder.texts, ElementsAre(signalText("sessionCreated", id1)));
    EXPECT_EQ(older->parent(), &manager);
}

TEST_F(BwaWebSessionManagerTest, GivenUsedIdStillFollowsTheOlderSession)
{
    BwaWebSession* older = manager.createSession(ann, id1, token);
    manager.createSession(bob, id1, token);
    const SignalRecorder recorder(&manager);

    older->generateNewToken();

    EXPECT_THAT(recorder.texts, ElementsAre(signalText("tokenExpired", id1)));
}

// Settled: the entry goes with the older session, although it leads to the newer one by then.
TEST_F(BwaWebSessionManagerTest, WhenTheOlderOfTwoIsRemovedForgetsTheNewer)
{
    const QPointer<BwaWebSession> older(manager.createSession(ann, id1, token));
    const QPointer<BwaWebSession> newer(manager.createSession(bob, id1, token));
    const SignalRecorder recorder(&manager);

    older->remove();
    clock->advance(0);

    EXPECT_THAT(recorder.texts, ElementsAre(signalText("aboutToRemove", id1)));
    EXPECT_EQ(manager.findSession(id1), nullptr);
    EXPECT_TRUE(older.isNull());
    EXPECT_FALSE(newer.isNull());
}

TEST_F(BwaWebSessionManagerTest, WhenBothOfTwoAreRemovedNothingIsLeft)
{
    const QPointer<BwaWebSession> older(manager.createSession(ann, id1, token));
    const QPointer<BwaWebSession> newer(manager.createSession(bob, id1, token));
    older->remove();
    clock->advance(0);

    newer->remove();
    clock->advance(0);

    EXPECT_TRUE(newer.isNull());
    EXPECT_THAT(manager.sessions(bob), IsEmpty());
    manager.removeSessions();
}

TEST_F(BwaWebSessionManagerTest, WhenTheNewerOfTwoIsRemovedTheOlderLivesOnUnfound)
{
    const QPointer<BwaWebSession> older(manager.createSession(ann, id1, token));
    const QPointer<BwaWebSession> newer(manager.createSession(bob, id1, token));

    manager.removeSession(id1);
    clock->advance(0);

    EXPECT_TRUE(newer.isNull());
    EXPECT_FALSE(older.isNull());
    EXPECT_EQ(manager.findSession(id1), nullptr);
}

// Signals that somebody has connected to signals

TEST_F(BwaWebSessionManagerTest, WhenARemovalIsPassedOnToAnotherSessionForgetsBoth)
{
    BwaWebSession* const first = manager.createSession(ann, id1, token);
    BwaWebSession* const second = manager.createSession(bob, id2, token);
    QObject::connect(first, &BwaWebSession::aboutToRemove, second, &BwaWebSession::aboutToRemove);
    const SignalRecorder recorder(&manager);

    first->remove();

    EXPECT_THAT(recorder.texts,
                ElementsAre(signalText("aboutToRemove", id1), signalText("aboutToRemove", id2)));
    EXPECT_EQ(manager.findSession(id2), nullptr);
}

TEST_F(BwaWebSessionManagerTest, WhenAnExpiryIsPassedOnToAnotherSessionTellsBoth)
{
    BwaWebSession* const first = manager.createSession(ann, lifetime, -1);
    const BwaWebSession* const second = manager.createSession(bob, id2, token);
    QObject::connect(first, &BwaWebSession::tokenExpired, second, &BwaWebSession::tokenExpired);
    const SignalRecorder recorder(&manager);

    clock->advance(lifetime);

    EXPECT_THAT(recorder.texts,
                ElementsAre(signalText("tokenExpired", first->sessionId()),
                            signalText("tokenExpired", id2)));
}

TEST_F(BwaWebSessionManagerTest, WhenASessionNoLongerFoundPassesItsRemovalOnForgetsTheOther)
{
    BwaWebSession* const first = manager.createSession(ann, id1, token);
    const BwaWebSession* const second = manager.createSession(bob, id2, token);
    first->remove();
    QObject::connect(first, &BwaWebSession::aboutToRemove, second, &BwaWebSession::aboutToRemove);
    const SignalRecorder recorder(&manager);

    first->remove();

    EXPECT_THAT(recorder.texts, ElementsAre(signalText("aboutToRemove", id2)));
}

// Through the manager's own signal, while it tells the first removal.
TEST_F(BwaWebSessionManagerTest, WhenItsOwnSignalIsPassedOnToASessionForgetsBoth)
{
    BwaWebSession* const first = manager.createSession(ann, id1, token);
    const BwaWebSession* const second = manager.createSession(bob, id2, token);
    QObject::connect(&manager, &BwaWebSessionManager::aboutToRemove, second,
                     &BwaWebSession::aboutToRemove);
    const SignalRecorder recorder(&manager);

    first->remove();

    EXPECT_EQ(manager.findSession(id1), nullptr);
    EXPECT_EQ(manager.findSession(id2), nullptr);
    EXPECT_EQ(recorder.texts.size(), 2U);
}

// Real time

TEST_F(BwaWebSessionManagerInRealTime, ForgetsASessionThatHasRunOut)
{
    BwaWebSessionManager manager;
    const QPointer<BwaWebSession> session(manager.createSession(ann, 20, 20));
    const QUuid id = session->sessionId();
    const SignalRecorder recorder(&manager);

    ASSERT_TRUE(waitFor(&manager, &BwaWebSessionManager::tokenExpired));
    EXPECT_EQ(manager.findSession(id), session);
    ASSERT_TRUE(waitFor(session.data(), &QObject::destroyed));

    EXPECT_THAT(recorder.texts,
                ElementsAre(signalText("tokenExpired", id), signalText("aboutToRemove", id)));
    EXPECT_EQ(manager.findSession(id), nullptr);
}
