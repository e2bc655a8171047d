// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "PageProcessor.h"

#include "ReplyHeader.h"
#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiRequest.h"
#include "html/BwaHtmlDoctype.h"
#include "html/BwaHtmlElement.h"

namespace {

BwaHtmlElement* newElement(const char* tagName, const QString& text)
{
    return new BwaHtmlElement(QString::fromLatin1(tagName), text);
}

// Filled elements join the tree by pointer: what is appended by reference comes out empty.
void fillPage(BwaHtmlElement& html, const QString& title)
{
    auto* head = new BwaHtmlElement(QStringLiteral("head"));
    head->append(newElement("title", title));
    auto* body = new BwaHtmlElement(QStringLiteral("body"));
    body->append(newElement("h1", title));
    body->append(new BwaHtmlElement(QStringLiteral("hr")));
    auto* link = newElement("a", QStringLiteral("a file"));
    link->setAttribute(QStringLiteral("href"), QStringLiteral("file"));
    body->append(link);
    html.append(head).append(body);
}

} // namespace

void PageProcessor::processGetMethod(BwaFcgiRequest* request)
{
    // The tree escapes nothing, so what the client sent is escaped here. A variable holds one
    // character for each byte that came in: UTF-8 passes through as it is.
    const QString name = request->cgiRequest()->queryVariables().value(QStringLiteral("name"),
                                                                       QStringLiteral("stranger"));
    BwaHtmlElement html(QStringLiteral("html"));
    fillPage(html, QStringLiteral("Hello, %1").arg(name.toHtmlEscaped()));

    request->out() << ReplyHeader(QStringLiteral("text/html; charset=utf-8"))
                   << BwaHtmlDoctype(BwaHtmlDoctype::Html5) << html << '\n';
    delete request;
}
