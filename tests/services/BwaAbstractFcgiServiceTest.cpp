// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "services/BwaAbstractFcgiService.h"

#include "services/BwaDispatcherFcgiService.h"
#include "support/ErrorPage.h"
#include "support/LabelledServices.h"
#include "support/QtPrinters.h"
#include "support/ServiceReplies.h"

#include <QMetaObject>

#include <gtest/gtest.h>

#include <memory>

TEST(BwaAbstractFcgiService, HasNoParents)
{
    const LabelledService service("service");

    EXPECT_EQ(service.parentService(), nullptr);
    EXPECT_EQ(service.parent(), nullptr);
}

TEST(BwaAbstractFcgiService, DeclaresNoSignalsSlotsOrProperties)
{
    const QMetaObject& metaObject = BwaAbstractFcgiService::staticMetaObject;

    EXPECT_STREQ(metaObject.className(), "BwaAbstractFcgiService");
    EXPECT_EQ(metaObject.methodCount(), metaObject.methodOffset());
    EXPECT_EQ(metaObject.propertyCount(), metaObject.propertyOffset());
}

TEST(BwaAbstractFcgiService, WhenBuiltWithObjectParentHasNoParentService)
{
    QObject owner;
    const BwaDispatcherFcgiService service(&owner);

    EXPECT_EQ(service.parent(), &owner);
    EXPECT_EQ(service.parentService(), nullptr);
}

TEST(ServicePath, GivenNoParentServiceIsEmptyAndNotNull)
{
    const LabelledService service("service");

    EXPECT_EQ(service.servicePath(), QString());
    EXPECT_FALSE(service.servicePath().isNull());
}

TEST(ServicePath, GivenChildOfRootIsItsNameAfterSlash)
{
    BwaDispatcherFcgiService root;

    EXPECT_EQ(root.addDispatcherService(QStringLiteral("api"))->servicePath(),
              QStringLiteral("/api"));
}

TEST(ServicePath, GivenGrandchildJoinsTheNames)
{
    BwaDispatcherFcgiService root;
    BwaDispatcherFcgiService* api = root.addDispatcherService(QStringLiteral("api"));
    auto* users = new LabelledService("users");
    api->addService(QStringLiteral("users"), users);

    EXPECT_EQ(users->servicePath(), QStringLiteral("/api/users"));
}

TEST(ServicePath, KeepsSlashesOfTheName)
{
    BwaDispatcherFcgiService root;

    EXPECT_EQ(root.addDispatcherService(QStringLiteral("a/b/"))->servicePath(),
              QStringLiteral("/a/b/"));
}

TEST(ServicePath, GivenEmptyNameEndsInSlash)
{
    BwaDispatcherFcgiService root;

    EXPECT_EQ(root.addDispatcherService(QString())->servicePath(), QStringLiteral("/"));
}

TEST(ServicePath, WhenParentMovesFollowsIt)
{
    BwaDispatcherFcgiService root;
    auto* parent = new BwaDispatcherFcgiService;
    BwaDispatcherFcgiService* child = parent->addDispatcherService(QStringLiteral("child"));
    ASSERT_EQ(child->servicePath(), QStringLiteral("/child"));

    root.addService(QStringLiteral("parent"), parent);

    EXPECT_EQ(child->servicePath(), QStringLiteral("/parent/child"));
}

TEST(ServicePath, WhenRemovedIsEmptyAndNotNullAgain)
{
    BwaDispatcherFcgiService root;
    LabelledService service("service");
    root.addService(QStringLiteral("name"), &service);

    root.removeService(QStringLiteral("name"));

    EXPECT_EQ(service.servicePath(), QString());
    EXPECT_FALSE(service.servicePath().isNull());
}

namespace {

/** Tells its path when it is destroyed. */
class LeavingService : public LabelledService
{
public:
    explicit LeavingService(QString* lastPath)
        : LabelledService("leaving")
        , m_lastPath(lastPath)
    {
    }
    ~LeavingService() override { *m_lastPath = servicePath(); }

private:
    QString* m_lastPath; // not owned
};

} // namespace

TEST(ServicePath, WhenDestroyedWithTheParentIsEmpty)
{
    QString lastPath = QStringLiteral("unknown");
    {
        BwaDispatcherFcgiService root;
        root.addDispatcherService(QStringLiteral("api"))
            ->addService(QStringLiteral("leaving"), new LeavingService(&lastPath));
    }

    EXPECT_EQ(lastPath, QString());
}

// A service that is added under a second name loses both names, and stays a child.
TEST(ServicePath, WhenDestroyedWithTheParentThatLostItsNameIsEmpty)
{
    QString lastPath = QStringLiteral("unknown");
    {
        BwaDispatcherFcgiService root;
        auto* const service = new LeavingService(&lastPath);
        root.addService(QStringLiteral("first"), service);
        root.addService(QStringLiteral("second"), service);
    }

    EXPECT_EQ(lastPath, QString());
}

TEST(ServicePath, WhenItOutlivesItsDispatcherIsEmpty)
{
    auto root = std::make_unique<BwaDispatcherFcgiService>();
    QObject otherParent;
    auto* const service = new LabelledService("service");
    root->addService(QStringLiteral("name"), service);
    service->setParent(&otherParent);

    root.reset();

    EXPECT_EQ(service->servicePath(), QString());
}

TEST(SetParentService, WhenAdoptedSetsBothParents)
{
    BwaDispatcherFcgiService root;
    auto* service = new LabelledService("service");

    root.addService(QStringLiteral("name"), service);

    EXPECT_EQ(service->parentService(), &root);
    EXPECT_EQ(service->parent(), &root);
}

TEST(SetParentService, GivenNullReleasesTheServiceFromItsDispatcher)
{
    BwaDispatcherFcgiService root;
    LabelledService service("service");
    root.addService(QStringLiteral("name"), &service);

    service.setParentService(nullptr);

    EXPECT_EQ(service.parentService(), nullptr);
    EXPECT_EQ(service.parent(), nullptr);
    EXPECT_TRUE(root.childServiceName(&service).isNull());
    EXPECT_EQ(root.removeService(QStringLiteral("name")), nullptr);
}

TEST(SetParentService, GivenNullTakesObjectParentAway)
{
    QObject owner;
    BwaDispatcherFcgiService service(&owner);

    service.setParentService(nullptr);

    EXPECT_EQ(service.parent(), nullptr);
}

TEST(SetParentService, WhenAdoptedByOtherDispatcherLeavesTheFirst)
{
    BwaDispatcherFcgiService first;
    BwaDispatcherFcgiService second;
    auto* service = new LabelledService("service");
    first.addService(QStringLiteral("old"), service);

    second.addService(QStringLiteral("new"), service);

    EXPECT_TRUE(first.childServiceName(service).isNull());
    EXPECT_EQ(second.childServiceName(service), QStringLiteral("new"));
    EXPECT_EQ(service->parentService(), &second);
    EXPECT_EQ(service->parent(), &second);
    EXPECT_EQ(replyOf(first, requestTo("/old")).raw, errorPage(404, "Not Found"));
    EXPECT_EQ(replyOf(second, requestTo("/new")).raw, "service");
}
