// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiRequest.h"
#include "html/BwaHtmlDoctype.h"
#include "html/BwaHtmlElement.h"
#include "http/BwaHttpHtmlHeader.h"
#include "testing/BwaTestRequest.h"

#include <QStringList>

#include <gtest/gtest.h>

namespace {

//! [element]
// Filled elements go into the tree by pointer: the clone of an element is empty.
BwaHtmlElement* listOf(const QStringList& texts)
{
    auto* list = new BwaHtmlElement(QStringLiteral("ul"));
    list->setAttribute(QStringLiteral("class"), QStringLiteral("tasks"));
    for (const QString& text : texts) {
        list->append(new BwaHtmlElement(QStringLiteral("li"), text.toHtmlEscaped()));
    }
    return list;
}
//! [element]

//! [page]
void sendPage(BwaFcgiRequest* request)
{
    auto* head = new BwaHtmlElement(QStringLiteral("head"));
    head->append(new BwaHtmlElement(QStringLiteral("title"), QStringLiteral("Tasks")));
    auto* body = new BwaHtmlElement(QStringLiteral("body"));
    body->append(listOf(request->cgiRequest()->queryVariables().values(QStringLiteral("task"))));
    BwaHtmlElement html(QStringLiteral("html"));
    html.append(head).append(body); // the tree owns both

    request->out() << BwaHttpHtmlHeader(QStringLiteral("utf-8"))
                   << BwaHtmlDoctype(BwaHtmlDoctype::Html5) << html;
}
//! [page]

} // namespace

TEST(HowToWriteHtml, GivenForeignTextEscapesIt)
{
    const BwaTestReply reply =
        BwaTestRequest("GET", "/?task=%3Cb%3Etea").sendTo([](BwaFcgiRequest* request) {
            sendPage(request);
            delete request;
        });

    EXPECT_EQ(reply.header("Content-Type"), "text/html; charset=utf-8");
    EXPECT_EQ(reply.body,
              "<!DOCTYPE html><html><head><title>Tasks</title></head>"
              "<body><ul class=\"tasks\"><li>&lt;b&gt;tea</li></ul></body></html>");
}
