// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "services/BwaStandardFcgiService.h"

#include "fcgi/BwaFcgiRequest.h"
#include "services/MockRequestProcessor.h"
#include "support/QtPrinters.h"
#include "support/TestReplies.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

using testing::StrictMock;

TEST(BwaStandardFcgiService, HandsTheRequestToItsProcessorOnce)
{
    auto* processor = new StrictMock<MockRequestProcessor>;
    BwaStandardFcgiService service(processor);
    EXPECT_CALL(*processor, die());

    replyWhile([&](BwaFcgiRequest* request) {
        EXPECT_CALL(*processor, processRequest(request));
        service.processRequest(request);
    });
}

TEST(BwaStandardFcgiService, LeavesReplyAndDeletionToItsProcessor)
{
    auto* processor = new testing::NiceMock<MockRequestProcessor>;
    BwaStandardFcgiService service(processor);

    const BwaTestReply reply =
        replyWhile([&](BwaFcgiRequest* request) { service.processRequest(request); });

    EXPECT_EQ(reply.raw, "");
    EXPECT_EQ(reply.errorText, "");
}

TEST(BwaStandardFcgiService, WhenDestroyedDeletesItsProcessorOnce)
{
    auto* processor = new StrictMock<MockRequestProcessor>;
    auto service = std::make_unique<BwaStandardFcgiService>(processor);

    EXPECT_CALL(*processor, die());
    service.reset();
}

TEST(BwaStandardFcgiService, WhenOwnerIsDestroyedDeletesItsProcessorOnce)
{
    auto* processor = new StrictMock<MockRequestProcessor>;
    auto owner = std::make_unique<QObject>();
    new BwaStandardFcgiService(processor, owner.get());

    EXPECT_CALL(*processor, die());
    owner.reset();
}

TEST(BwaStandardFcgiService, GivenNoProcessorCanBeDestroyed)
{
    auto service = std::make_unique<BwaStandardFcgiService>(nullptr);

    EXPECT_NO_FATAL_FAILURE(service.reset());
}

TEST(BwaStandardFcgiService, HasObjectParentAndNoParentService)
{
    QObject owner;
    const BwaStandardFcgiService service(nullptr, &owner);

    EXPECT_EQ(service.parent(), &owner);
    EXPECT_EQ(service.parentService(), nullptr);
    EXPECT_STREQ(service.metaObject()->className(), "BwaStandardFcgiService");
}
