// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "OrderProcessor.h"

#include "Replies.h"
#include "fcgi/BwaFcgiRequest.h"
#include "json/BwaJsonUtilities.h"

#include <QJsonObject>

namespace {

struct Order {
    QString article;
    unsigned short quantity = 0;
    double price = 0;
    bool gift = false;
};

// A missing "gift" means false; everything else must be there, and be of the right kind.
bool readOrder(const QVariantMap& object, Order& order)
{
    return BwaJsonUtilities::stringValue(object, QStringLiteral("article"), order.article) &&
        BwaJsonUtilities::integerValue(object, QStringLiteral("quantity"), order.quantity) &&
        BwaJsonUtilities::realNumberValue(object, QStringLiteral("price"), order.price) &&
        BwaJsonUtilities::booleanValue(object, QStringLiteral("gift"), order.gift, false);
}

} // namespace

void OrderProcessor::processPostMethod(BwaFcgiRequest* request)
{
    QVariantMap object;
    Order order;
    if (!readJsonObject(request, object)) {
        // The refusal has been sent.
    } else if (!readOrder(object, order)) {
        request->sendHttpError(BwaFcgiRequest::BadRequest);
    } else {
        sendJson(request,
                 QJsonObject{{QStringLiteral("article"), order.article},
                             {QStringLiteral("gift"), order.gift},
                             {QStringLiteral("total"), order.quantity * order.price}});
    }
    delete request;
}
