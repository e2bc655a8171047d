// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// described-showcase: prints the OpenAPI document that the showcase serves, and of some bodies
// whether it takes them, as JSON: see validate.mjs.

#include "Showcase.h"
#include "json/BwaJson.h"
#include "testing/BwaTestRequest.h"

#include <QCoreApplication>
#include <QTemporaryDir>

#include <cstdio>

namespace {

QVariantMap tried(BwaRestService& service, const QByteArray& body)
{
    BwaTestRequest request("POST", "/order");
    request.setBody("application/json", body);
    const int status = request.sendTo(service).statusCode;
    return {{"method", "post"},
            {"path", "/order"},
            {"body", BwaJson::parse(body)},
            {"isTaken", status == 200}};
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QTemporaryDir folder;
    ShowcaseSettings settings;
    settings.database = folder.filePath("notes.db");
    settings.hasDiagnostics = true;
    Showcase showcase(settings);
    QVariantList tries;
    for (const char* body :
         {R"({"article":"tea","quantity":3,"price":2.5})",
          R"({"article":"tea","quantity":3,"price":2.5,"gift":true})",
          R"({"article":"tea","quantity":0,"price":2.5})",
          R"({"article":"","quantity":3,"price":2.5})", R"({"article":"tea","quantity":3})",
          R"({"article":"tea","quantity":3,"price":2.5,"sugar":1})"}) {
        tries.append(tried(showcase.service(), body));
    }
    const BwaTestReply document = BwaTestRequest("GET", "/openapi.json").sendTo(showcase.service());
    const QVariantMap all = {{"document", BwaJson::parse(document.body)}, {"tries", tries}};
    std::puts(BwaJson::write(all).constData());
    return 0;
}
