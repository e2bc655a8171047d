// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "ReplyHeader.h"

#include "support/Rendered.h"

#include <gmock/gmock.h>

namespace {

const char* const policy =
    "Content-Security-Policy: default-src 'none'; connect-src 'self'; img-src 'self'; script-src "
    "'self'; style-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'\n"
    "Referrer-Policy: no-referrer\n"
    "X-Content-Type-Options: nosniff\n";

} // namespace

TEST(ReplyHeader, ForbidsCopies)
{
    EXPECT_EQ(rendered(ReplyHeader(QStringLiteral("text/html"))),
              std::string("Status: 200 OK\n"
                          "Content-Type: text/html\n"
                          "Cache-Control: no-store\n") +
                  policy + "\n");
}

TEST(ReplyHeader, GivenAnAssetAllowsCopiesThatAreChecked)
{
    const ReplyHeader header(QStringLiteral("text/css"), ReplyHeader::Copies::CheckedBeforeUse);

    EXPECT_EQ(rendered(header),
              std::string("Status: 200 OK\n"
                          "Content-Type: text/css\n"
                          "Cache-Control: no-cache\n") +
                  policy + "\n");
}

TEST(ReplyHeader, WhenCreatedNamesTheLocationWithOneColon)
{
    ReplyHeader header = ReplyHeader::created(QStringLiteral("/api/notes/1"));
    header.cookies.append(BwaHttpCookie(QStringLiteral("a"), QStringLiteral("1")));

    EXPECT_EQ(rendered(header),
              std::string("Status: 201 Created\n"
                          "Content-Type: application/json; charset=utf-8\n"
                          "Cache-Control: no-store\n") +
                  policy +
                  "Location: /api/notes/1\n"
                  "Set-Cookie:a=1\n"
                  "\n");
}
