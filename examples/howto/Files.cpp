// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiRequest.h"
#include "http/BwaHttpAttachedFileHeader.h"
#include "http/BwaHttpRedirectHeader.h"
#include "testing/BwaTestRequest.h"

#include <QHash>

#include <gtest/gtest.h>

namespace {

//! [static]
// The names come from this table: no path is made of what the client has sent.
void sendManual(BwaFcgiRequest* request)
{
    static const QHash<QString, QString> files = {
        {QStringLiteral("en"), QStringLiteral("/srv/app/files/manual-en.pdf")},
        {QStringLiteral("de"), QStringLiteral("/srv/app/files/manual-de.pdf")}};
    const QString language =
        request->cgiRequest()->queryVariables().value(QStringLiteral("language"));
    const QString file = files.value(language);
    if (file.isNull()) {
        request->sendHttpError(BwaFcgiRequest::NotFound);
    } else {
        request->sendStaticFile(file, QStringLiteral("application/pdf"), {});
    }
}
//! [static]

//! [attached]
void sendReport(BwaFcgiRequest* request)
{
    request->out() << BwaHttpAttachedFileHeader(QStringLiteral("text/csv"),
                                                QStringLiteral("report.csv"))
                   << "article,quantity\ntea,3\n";
}
//! [attached]

//! [redirect]
void redirectToManual(BwaFcgiRequest* request)
{
    const bool permanent = false;
    request->out() << BwaHttpRedirectHeader(QStringLiteral("/api/manual?language=en"), permanent);
}
//! [redirect]

BwaTestReply replyOf(void (*answer)(BwaFcgiRequest*), const char* target = "/")
{
    return BwaTestRequest("GET", target).sendTo([answer](BwaFcgiRequest* request) {
        answer(request);
        delete request;
    });
}

} // namespace

TEST(HowToSendFiles, GivenAKnownNameHandsTheFileOver)
{
    EXPECT_EQ(replyOf(sendManual, "/?language=en").header("X-Sendfile"),
              "/srv/app/files/manual-en.pdf");
}

TEST(HowToSendFiles, GivenAnUnknownNameHasNothing)
{
    const BwaTestReply reply = replyOf(sendManual, "/?language=../../etc/passwd");

    EXPECT_EQ(reply.statusCode, 404);
    EXPECT_TRUE(reply.header("X-Sendfile").isNull());
}

TEST(HowToSendFiles, GivenAReportOffersItToBeSaved)
{
    const BwaTestReply reply = replyOf(sendReport);

    EXPECT_EQ(reply.header("Content-Type"), "text/csv");
    EXPECT_EQ(reply.header("Content-Disposition"), "attachment; filename=\"report.csv\"");
    EXPECT_EQ(reply.body, "article,quantity\ntea,3\n");
}

TEST(HowToSendFiles, WhenRedirectingNamesThePlace)
{
    const BwaTestReply reply = replyOf(redirectToManual);

    EXPECT_EQ(reply.statusCode, 302);
    EXPECT_EQ(reply.header("Location"), "/api/manual?language=en");
}
