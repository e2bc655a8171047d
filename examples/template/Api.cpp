// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "Api.h"

namespace {

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
    limit(64 * 1024); // bytes, as in lighttpd.conf
    get("/greeting", guestFields, greeted).says("Greets by name");
    post("/greeting", guestFields, greeted).says("Greets by name");
}
