// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "Headers.h"
#include "Routes.h"
#include "html/BwaHtmlDoctype.h"
#include "html/BwaHtmlElement.h"

#include <QFile>

#include <sstream>
#include <stdexcept>

namespace {

// A file that is compiled into the program.
QByteArray content(const QString& fileName)
{
    QFile file(":/page/" + fileName);
    if (!file.open(QFile::ReadOnly)) {
        throw std::runtime_error("no such file of the page: " + fileName.toStdString());
    }
    return file.readAll();
}

void addAsset(BwaRestGroup& api, const char* path, const char* fileName, const char* type)
{
    BwaRestReply reply = guarded(BwaRestReply::bytes(content(fileName), type), "no-cache");
    api.get(path, [reply](const BwaRestCall&) { return reply; });
}

// Filled elements join the tree by pointer: what is appended by reference comes out empty.
void fillPage(BwaHtmlElement& html, const QString& title)
{
    auto* head = new BwaHtmlElement("head");
    head->append(new BwaHtmlElement("title", title));
    auto* body = new BwaHtmlElement("body");
    body->append(new BwaHtmlElement("h1", title));
    body->append(new BwaHtmlElement("hr"));
    auto* link = new BwaHtmlElement("a", "a file");
    link->setAttribute("href", "file");
    body->append(link);
    html.append(head).append(body);
}

// The tree escapes nothing, so what the client sent is escaped here. It writes a byte for each
// character: those of UTF-8 pass through.
BwaRestReply greeting(const BwaRestCall& call)
{
    const QString name = call.query("name").value(0, "stranger").toHtmlEscaped();
    BwaHtmlElement html("html");
    fillPage(html, "Hello, " + QString::fromLatin1(name.toUtf8()));
    std::ostringstream page;
    page << BwaHtmlDoctype(BwaHtmlDoctype::Html5) << html << '\n';
    return guarded(
        BwaRestReply::bytes(QByteArray::fromStdString(page.str()), "text/html; charset=utf-8"));
}

} // namespace

void addPages(BwaRestGroup& api)
{
    addAsset(api, "/app", "page.html", "text/html; charset=utf-8");
    addAsset(api, "/app/page.css", "page.css", "text/css; charset=utf-8");
    addAsset(api, "/app/page.js", "page.js", "text/javascript; charset=utf-8");
    addAsset(api, "/app/icon.svg", "icon.svg", "image/svg+xml");
    api.get("/page", greeting).says("A page of HTML nodes");
}
