// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "services/BwaStandardProcessableDispatcherFcgiService.h"

#include "fcgi/BwaFcgiRequest.h"
#include "services/MockRequestProcessor.h"
#include "support/ErrorPage.h"
#include "support/LabelledServices.h"
#include "support/QtPrinters.h"
#include "support/ServiceReplies.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <stdexcept>

using testing::NiceMock;
using testing::StrictMock;
using testing::Throw;

namespace {

// Answers with "processor".
class AnsweringProcessor : public BwaAbstractFcgiRequestProcessor
{
public:
    void processRequest(BwaFcgiRequest* request) override
    {
        request->out() << "processor";
        delete request;
    }
};

const QString orders = QStringLiteral("orders");

} // namespace

TEST(BwaStandardProcessableDispatcherFcgiService, HandsRequestsToItselfToItsProcessor)
{
    BwaDispatcherFcgiService root;
    root.addService(orders,
                    new BwaStandardProcessableDispatcherFcgiService(new AnsweringProcessor));

    EXPECT_EQ(replyOf(root, requestTo("/orders")).raw, "processor");
    EXPECT_EQ(replyOf(root, requestTo("/orders/")).raw, "processor");
}

TEST(BwaStandardProcessableDispatcherFcgiService, RoutesToItsChildren)
{
    BwaDispatcherFcgiService root;
    auto* dispatcher = new BwaStandardProcessableDispatcherFcgiService(new AnsweringProcessor);
    root.addService(orders, dispatcher);
    dispatcher->addService(QStringLiteral("open"), new LabelledService("open"));

    EXPECT_EQ(replyOf(root, requestTo("/orders/open")).raw, "open");
}

TEST(BwaStandardProcessableDispatcherFcgiService, GivenUnknownChildIsNotFound)
{
    BwaStandardProcessableDispatcherFcgiService root(new AnsweringProcessor);

    const BwaTestReply reply = replyOf(root, requestTo("/orders"));

    EXPECT_EQ(reply.raw, errorPage(404, "Not Found"));
    EXPECT_EQ(reply.errorText,
              "Error in dispatcher service \"\" for script \"/app\": Cannot find a child service "
              "to handle a request with path info \"/orders\"");
}

TEST(BwaStandardProcessableDispatcherFcgiService, CallsTheProcessorOnceAndDoesNothingElse)
{
    auto* processor = new StrictMock<MockRequestProcessor>;
    BwaStandardProcessableDispatcherFcgiService root(processor);
    EXPECT_CALL(*processor, die());

    const BwaTestReply reply = replyWhile(
        [&](BwaFcgiRequest* request) {
            EXPECT_CALL(*processor, processRequest(request));
            root.processRequest(request);
        },
        requestTo(""));

    EXPECT_EQ(reply.raw, "");
    EXPECT_EQ(reply.errorText, "");
}

TEST(BwaStandardProcessableDispatcherFcgiService, WhenProcessorThrowsAnswersInternalServerError)
{
    auto* processor = new NiceMock<MockRequestProcessor>;
    BwaStandardProcessableDispatcherFcgiService root(processor);
    EXPECT_CALL(*processor, processRequest).WillOnce(Throw(std::runtime_error("no orders")));

    const BwaTestReply reply = replyOf(root, requestTo("/"));

    EXPECT_EQ(reply.raw, errorPage(500, "Internal Server Error"));
    EXPECT_EQ(reply.errorText,
              "Error in dispatcher service \"\" for script \"/app\" while handling request with "
              "path info \"/\": no orders");
}

TEST(BwaStandardProcessableDispatcherFcgiService, WhenDestroyedDeletesItsProcessorBeforeItsChildren)
{
    auto* processor = new StrictMock<MockRequestProcessor>;
    auto* childProcessor = new StrictMock<MockRequestProcessor>;
    auto root = std::make_unique<BwaStandardProcessableDispatcherFcgiService>(processor);
    root->addService(orders, new BwaStandardProcessableDispatcherFcgiService(childProcessor));
    const testing::InSequence inThisOrder;
    EXPECT_CALL(*processor, die());
    EXPECT_CALL(*childProcessor, die());

    root.reset();
}

TEST(BwaStandardProcessableDispatcherFcgiService, GivenNoProcessorCanBeDestroyed)
{
    auto root = std::make_unique<BwaStandardProcessableDispatcherFcgiService>(nullptr);

    root.reset();

    EXPECT_EQ(root, nullptr);
}

TEST(BwaStandardProcessableDispatcherFcgiService, HasObjectParentAndNoParentService)
{
    QObject owner;
    const BwaStandardProcessableDispatcherFcgiService root(nullptr, &owner);

    EXPECT_EQ(root.parent(), &owner);
    EXPECT_EQ(root.parentService(), nullptr);
    EXPECT_STREQ(root.metaObject()->className(), "BwaStandardProcessableDispatcherFcgiService");
}
