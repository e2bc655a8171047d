// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "Api.h"

namespace {

constexpr int mostBodyBytes = 64 * 1024; // as in lighttpd.conf

struct Guest {
    QString name;
};

const auto guestFields =
    BwaRestFields<Guest>().add("name", &Guest::name, BwaRestRule::length(1, 64));

BwaRestReply greeted(const BwaRestCall& /*call*/, const Guest& guest)
{
    return QVariantMap{{"greeting", "Hello, " + guest.name}};
}

} // namespace

Api::Api()
{
    limit(mostBodyBytes);
    get("/greeting", guestFields, greeted).says("Greets by name");
    post("/greeting", guestFields, greeted).says("Greets by name");
}
