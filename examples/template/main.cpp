// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "Api.h"

#include <cstdio>

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fputs("usage: greeter SOCKET\n", stderr);
        return 2;
    }
    QCoreApplication application(argc, argv);
    Api api;
    return BwaRestServer({{"/api", &api}}).accessLog().run(QString::fromLatin1(argv[1]));
}
