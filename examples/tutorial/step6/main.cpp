// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "TasksApi.h"

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    TasksApi api;
    return BwaRestServer({{"/api", &api.service()}}).accessLog().run(QString::fromLatin1(argv[1]));
}
