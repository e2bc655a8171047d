// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "BwaStringStreaming.h"
#include "fcgi/BwaFcgiRequest.h"
#include "http/BwaHttp401StatusHeader.h"
#include "http/BwaHttpStatusContentHeader.h"
#include "testing/BwaTestRequest.h"

#include <gtest/gtest.h>

#include <ostream>

namespace {

//! [own]
// 201 Created with the location of the new resource, a path in ASCII.
class CreatedHeader : public BwaHttpStatusContentHeader
{
public:
    explicit CreatedHeader(const QString& location)
        : BwaHttpStatusContentHeader(201, QStringLiteral("Created"),
                                     QStringLiteral("application/json"))
        , m_location(location)
    {
    }

    void render(std::ostream& stream) const override
    {
        renderStatus(stream);
        renderContentType(stream);
        stream << "Location: " << m_location << '\n';
        stream << "Cache-Control: no-store\n";
        renderCookies(stream);
        stream << std::endl; // the empty line that ends the block
    }

private:
    QString m_location;
};
//! [own]

//! [use]
void sendCreated(BwaFcgiRequest* request, int id)
{
    const QString number = QString::number(id);
    request->out() << CreatedHeader(QStringLiteral("/api/notes/") + number) << "{\"id\":" << number
                   << "}\n";
}
//! [use]

//! [challenge]
void askForPassword(BwaFcgiRequest* request)
{
    request->out() << BwaHttp401StatusHeader({{QStringLiteral("Basic realm=\"notes\""), {}}});
}
//! [challenge]

} // namespace

TEST(HowToWriteHeaders, GivenABlockOfItsOwnWritesItsLines)
{
    const BwaTestReply reply = BwaTestRequest("POST").sendTo([](BwaFcgiRequest* request) {
        sendCreated(request, 7);
        delete request;
    });

    EXPECT_EQ(reply.raw,
              "Status: 201 Created\n"
              "Content-Type: application/json\n"
              "Location: /api/notes/7\n"
              "Cache-Control: no-store\n"
              "\n"
              "{\"id\":7}\n");
}

TEST(HowToWriteHeaders, GivenAChallengeAsTheSchemeWritesItWithoutAComma)
{
    const BwaTestReply reply = BwaTestRequest("GET").sendTo([](BwaFcgiRequest* request) {
        askForPassword(request);
        delete request;
    });

    EXPECT_EQ(reply.raw,
              "Status: 401 Unauthorized\n"
              "WWW-Authenticate: Basic realm=\"notes\"\n"
              "\n");
}
