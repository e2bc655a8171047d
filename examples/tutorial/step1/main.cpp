// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

//! [all]
#include <bwebapi/rest.h>

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);

    BwaRestService api;
    api.get("/tasks", [](const BwaRestCall&) { return BwaRestReply(QVariantList()); });

    return BwaRestServer({{"/api", &api}}).accessLog().run(QString::fromLatin1(argv[1]));
}
//! [all]
