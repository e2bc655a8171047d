// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "TasksApi.h"
#include "fcgi/BwaFcgiListener.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fputs("usage: tasks SOCKET\n", stderr);
        return 2;
    }
    QCoreApplication application(argc, argv);
    TasksApi api;
    BwaFcgiListener listener({{QStringLiteral("/api"), &api.root()}});
    BwaRequestLimits limits;
    limits.maxBodySize = 64 * 1024; // bytes
    listener.setRequestLimits(limits);
    QObject::connect(&listener, &BwaFcgiListener::listeningError, [] {
        std::fputs("tasks: cannot listen\n", stderr);
        QCoreApplication::exit(1);
    });
    listener.listen(QString::fromLatin1(argv[1]));
    return application.exec();
}
