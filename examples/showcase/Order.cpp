// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "Routes.h"

namespace {

struct Order {
    QString article;
    int quantity = 0;
    double price = 0;
    bool gift = false;
};

struct Receipt {
    QString article;
    bool gift = false;
    double total = 0;
};

const auto orderFields = BwaRestFields<Order>()
                             .add("article", &Order::article, BwaRestRule::length(1, 100))
                             .add("quantity", &Order::quantity, BwaRestRule::range(1, 1000))
                             .add("price", &Order::price)
                             .add("gift", &Order::gift, BwaRestRule::any().orDefault());

const auto receiptFields = BwaRestFields<Receipt>()
                               .add("article", &Receipt::article)
                               .add("gift", &Receipt::gift)
                               .add("total", &Receipt::total);

} // namespace

void addOrder(BwaRestGroup& api)
{
    api.post("/order", orderFields,
             [](const BwaRestCall&, const Order& order) {
                 const Receipt receipt{order.article, order.gift, order.quantity * order.price};
                 return BwaRestReply(receiptFields.json(receipt));
             })
        .says("What an order costs")
        .gives(receiptFields);
}
