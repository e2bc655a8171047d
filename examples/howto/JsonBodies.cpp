// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiRequest.h"
#include "http/BwaHttpJsonHeader.h"
#include "json/BwaJson.h"
#include "json/BwaJsonUtilities.h"
#include "services/BwaStandardFcgiRequestProcessor.h"
#include "testing/BwaTestRequest.h"

#include <QStringList>
#include <QVariant>

#include <gtest/gtest.h>

#include <utility>

namespace {

//! [type]
struct Order {
    QString article;
    int quantity = 0;
    double price = 0;
    bool isGift = false;
    QStringList notes;
    QString city;
};
//! [type]

//! [list]
bool readNotes(const QVariantMap& object, QStringList& notes)
{
    QVariantList values;
    if (!BwaJsonUtilities::listValue(object, QStringLiteral("notes"), values, QVariantList())) {
        return false;
    }
    for (const QVariant& value : std::as_const(values)) {
        QString note;
        if (!BwaJsonUtilities::stringValue(value, note)) {
            return false;
        }
        notes.append(note);
    }
    return true;
}
//! [list]

//! [fields]
bool readOrder(const QVariantMap& object, Order& order)
{
    QVariantMap address;
    return BwaJsonUtilities::stringValue(object, QStringLiteral("article"), order.article) &&
        BwaJsonUtilities::integerValue(object, QStringLiteral("quantity"), order.quantity, 1) &&
        BwaJsonUtilities::realNumberValue(object, QStringLiteral("price"), order.price) &&
        BwaJsonUtilities::booleanValue(object, QStringLiteral("gift"), order.isGift, false) &&
        BwaJsonUtilities::objectValue(object, QStringLiteral("address"), address) &&
        BwaJsonUtilities::stringValue(address, QStringLiteral("city"), order.city) &&
        readNotes(object, order.notes) && order.quantity > 0;
}
//! [fields]

class Orders : public BwaStandardFcgiRequestProcessor
{
public:
    Orders()
        : BwaStandardFcgiRequestProcessor(nullptr)
    {
    }

protected:
    //! [body]
    void processPostMethod(BwaFcgiRequest* request) override
    {
        QVariantMap object;
        if (readObject(request, object)) {
            take(request, object);
        }
        delete request;
    }

private:
    // Reads a JSON object from the body; when there is none, answers and returns false.
    static bool readObject(BwaFcgiRequest* request, QVariantMap& object)
    {
        const BwaCgiRequest* asked = request->cgiRequest();
        if (asked->environment().contentLength() == 0) {
            request->sendHttpError(BwaFcgiRequest::BadRequest);
            return false;
        }
        const QVariant json = parseJsonContent(request);
        if (BwaJsonUtilities::objectValue(json, object)) {
            return true;
        }
        if (!asked->body().isEmpty()) {
            request->sendHttpError(BwaFcgiRequest::BadRequest); // what was read is no JSON object
        } // another media type, or a body that ended early, has been answered
        return false;
    }
    //! [body]

    //! [write]
    static void take(BwaFcgiRequest* request, const QVariantMap& object)
    {
        Order order;
        if (!readOrder(object, order)) {
            request->sendHttpError(BwaFcgiRequest::BadRequest);
            return;
        }
        const QVariantMap reply = {{QStringLiteral("article"), order.article},
                                   {QStringLiteral("total"), order.quantity * order.price}};
        const QByteArray text = BwaJson::write(reply);
        request->out() << BwaHttpJsonHeader(QStringLiteral("utf-8"));
        request->out().write(text.constData(), text.size());
    }
    //! [write]
};

BwaTestReply replyTo(const QByteArray& body, const QByteArray& contentType = "application/json")
{
    Orders orders;
    BwaTestRequest request("POST", "/orders");
    request.setBody(contentType, body);
    return request.sendTo(orders);
}

} // namespace

TEST(HowToReadJson, GivenAllFieldsTakesThem)
{
    const BwaTestReply reply = replyTo(
        R"({"article": "tea", "quantity": 3, "price": 2.5, "address": {"city": "Bremen"}})");

    EXPECT_EQ(reply.statusCode, 200);
    EXPECT_EQ(reply.body, R"({"article":"tea","total":7.5})");
}

TEST(HowToReadJson, GivenNoQuantityTakesTheDefault)
{
    EXPECT_EQ(replyTo(R"({"article": "tea", "price": 2, "address": {"city": "Bremen"}})").body,
              R"({"article":"tea","total":2.0})");
}

TEST(HowToReadJson, GivenAFieldOfAnotherTypeIsABadRequest)
{
    EXPECT_EQ(replyTo(R"({"article": "tea", "price": "2", "address": {"city": "x"}})").statusCode,
              400);
    EXPECT_EQ(replyTo(R"({"article": "tea", "price": 2, "address": "Bremen"})").statusCode, 400);
    EXPECT_EQ(replyTo(R"({"article": "tea", "price": 2, "address": {"city": "x"}, "notes": [1]})")
                  .statusCode,
              400);
}

TEST(HowToReadJson, GivenWhatIsNoObjectIsABadRequest)
{
    for (const char* body : {"[1]", "5", "null", "\"x\"", "{", ""}) {
        const BwaTestReply reply = replyTo(body);

        EXPECT_EQ(reply.statusCode, 400) << body;
        EXPECT_EQ(reply.raw.count("Status: "), 1) << body;
    }
}

TEST(HowToReadJson, GivenAnotherMediaTypeRefusesIt)
{
    EXPECT_EQ(replyTo("{}", "text/plain").statusCode, 415);
}
