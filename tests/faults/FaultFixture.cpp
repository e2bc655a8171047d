// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "FaultFixture.h"

#include "BwaStringStreaming.h"
#include "cgi/BwaCgiRequest.h"

#include <algorithm>

namespace {

void countFields(BwaFcgiRequest* request)
{
    request->cgiRequest()->processBodyContent();
    request->out() << QString::number(request->cgiRequest()->formVariables().size());
    delete request;
}

} // namespace

int faultRounds()
{
    return std::max(20, qEnvironmentVariableIntValue("BWA_FAULT_ROUNDS"));
}

void waitUntilRead(const FcgiClient& client)
{
    waitUntil([&] { return unreadBytes(client) == 0; });
}

FaultFixture::FaultFixture()
{
    serve("/api", countFields);
}

FcgiParameters FaultFixture::formRequest(const QByteArray& body)
{
    return {{"SCRIPT_NAME", "/api"},
            {"PATH_INFO", "/form"},
            {"REQUEST_METHOD", "POST"},
            {"HTTP_COOKIE", QByteArray(200, 'c')},
            {"CONTENT_TYPE", "application/x-www-form-urlencoded"},
            {"CONTENT_LENGTH", QByteArray::number(body.size())}};
}

void FaultFixture::expectGoodAnswer() const
{
    FcgiClient client(path());
    expectGoodAnswer(client);
}

void FaultFixture::expectGoodAnswer(FcgiClient& client)
{
    client.sendRequest(formRequest("a&b&c"), "a&b&c");
    client.shutDownSending();
    EXPECT_EQ(client.readReply().out, QByteArray("3"));
}
