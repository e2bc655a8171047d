// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// The example in the comment of BwaRestCall. As most applications, it lets Qt make texts of char*.

#include "rest/BwaRestCall.h"
#include "rest/BwaRestReply.h"
#include "rest/BwaRestService.h"
#include "testing/BwaTestRequest.h"

#include <QVariantMap>

#include <gtest/gtest.h>

#include <map>

namespace {

struct Device {
    QString name;

    QByteArray tag() const { return name.toUtf8(); }
    QVariantMap json() const { return {{"name", name}}; }
};

} // namespace

TEST(RestCallExample, RenamesADeviceThatTheClientKnows)
{
    std::map<qint64, Device> store = {{7, {"old"}}};
    BwaRestService api;
#include "in-headers/BwaRestCall.inc"
    BwaTestRequest request("PUT", "/devices/7/name");
    request.setHeader("If-Match", "\"old\"");
    request.setBody("application/json", R"({"name":"new"})");

    EXPECT_EQ(request.sendTo(api).body, R"({"name":"new"})");
    EXPECT_EQ(request.sendTo(api).statusCode, 412);
}
