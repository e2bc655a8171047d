// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "Tasks.h"

constexpr int mostBodyBytes = 64 * 1024;

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);

    //! [main]
    Tasks tasks; // outlives the service, whose handlers use it
    BwaRestService api;
    api.limit(mostBodyBytes);
    tasks.addTo(api);
    //! [main]

    return BwaRestServer({{"/api", &api}}).accessLog().run(QString::fromLatin1(argv[1]));
}
