// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "Headers.h"
#include "Routes.h"
#include "html/BwaHtmlDoctype.h"
#include "html/BwaHtmlElement.h"

#include <QFile>
#include <QMap>

#include <sstream>
#include <stdexcept>

namespace {

const char* const html = "text/html; charset=utf-8";
const char* const css = "text/css; charset=utf-8";
const char* const javaScript = "text/javascript; charset=utf-8";

// A path that begins with ":/" is that of a file in the program.
BwaRestReply asset(const QString& path, const QByteArray& contentType)
{
    QFile file(path);
    if (!file.open(QFile::ReadOnly)) {
        throw std::runtime_error("cannot read " + path.toStdString());
    }
    return guarded(BwaRestReply::bytes(file.readAll(), contentType), "no-cache");
}

// Files are named by the program, never by a client.
void addPage(BwaRestGroup& group, const BwaRestReply& page,
             const QMap<QString, BwaRestReply>& files, const char* summary)
{
    group.get("", [page](const BwaRestCall&) { return page; }).says(summary);
    group
        .get("/{file}",
             [files](const BwaRestCall& call) {
                 return files.value(call.text("file"), BwaRestProblem(404));
             })
        .says("What the page consists of");
}

// Filled elements join the tree by pointer: what is appended by reference comes out empty.
void fillPage(BwaHtmlElement& root, const QString& title)
{
    auto* head = new BwaHtmlElement("head");
    head->append(new BwaHtmlElement("title", title));
    auto* body = new BwaHtmlElement("body");
    body->append(new BwaHtmlElement("h1", title));
    body->append(new BwaHtmlElement("hr"));
    auto* link = new BwaHtmlElement("a", "a file");
    link->setAttribute("href", "file");
    body->append(link);
    root.append(head).append(body);
}

// The tree escapes nothing, so what the client sent is escaped here. It writes a byte for each
// character: those of UTF-8 pass through.
BwaRestReply greeting(const BwaRestCall& call)
{
    const QString name = call.query("name").value(0, "stranger").toHtmlEscaped();
    BwaHtmlElement root("html");
    fillPage(root, "Hello, " + QString::fromLatin1(name.toUtf8()));
    std::ostringstream page;
    page << BwaHtmlDoctype(BwaHtmlDoctype::Html5) << root << '\n';
    return guarded(BwaRestReply::bytes(QByteArray::fromStdString(page.str()), html));
}

} // namespace

void addPages(BwaRestGroup& api)
{
    addPage(api.group("/app"), asset(":/page/page.html", html),
            {{"page.css", asset(":/page/page.css", css)},
             {"page.js", asset(":/page/page.js", javaScript)},
             {"icon.svg", asset(":/page/icon.svg", "image/svg+xml")}},
            "A page that uses the API");
    api.get("/page", greeting).says("A page of HTML nodes");
}

void addApiPage(BwaRestGroup& api, const QString& rendererFolder)
{
    QMap<QString, BwaRestReply> files = {{"api.js", asset(":/page/api.js", javaScript)}};
    if (!rendererFolder.isEmpty()) {
        const QString renderer = rendererFolder + "/swagger-ui";
        files.insert("swagger-ui.css", asset(renderer + ".css", css));
        files.insert("swagger-ui-bundle.js", asset(renderer + "-bundle.js", javaScript));
    }
    addPage(api.group("/docs"), asset(":/page/api.html", html), files,
            "A page that shows this document");
}
