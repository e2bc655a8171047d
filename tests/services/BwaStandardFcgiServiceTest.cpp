// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "services/BwaStandardFcgiService.h"

#include "fcgi/BwaFcgiRequest.h"
#include "services/MockRequestProcessor.h"
#include "support/FcgiExchange.h"
#include "support/QtPrinters.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

using testing::StrictMock;

TEST(BwaStandardFcgiService, HandsTheRequestToItsProcessorOnce)
{
    auto* processor = new StrictMock<MockRequestProcessor>;
    BwaStandardFcgiService service(processor);
    FcgiExchange exchange;
    const std::unique_ptr<BwaFcgiRequest> request(exchange.takeRequest());

    EXPECT_CALL(*processor, processRequest(request.get()));
    EXPECT_CALL(*processor, die());

    service.processRequest(request.get());
}

TEST(BwaStandardFcgiService, LeavesReplyAndDeletionToItsProcessor)
{
    auto* processor = new testing::NiceMock<MockRequestProcessor>;
    BwaStandardFcgiService service(processor);
    FcgiExchange exchange;
    std::unique_ptr<BwaFcgiRequest> request(exchange.takeRequest());

    service.processRequest(request.get());

    request.reset();
    const FcgiReply reply = exchange.reply();
    EXPECT_EQ(reply.out, "");
    EXPECT_EQ(reply.err, "");
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
