// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "Api.h"
#include "fcgi/BwaFcgiListener.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fputs("usage: greeter SOCKET\n", stderr);
        return 2;
    }
    QCoreApplication application(argc, argv);
    Api api;
    BwaFcgiListener listener({{QStringLiteral("/api"), &api}});
    BwaRequestLimits limits;
    limits.maxBodySize = 64 * 1024; // bytes, as in lighttpd.conf
    listener.setRequestLimits(limits);
    QObject::connect(&listener, &BwaFcgiListener::listeningError, [] {
        std::fputs("greeter: cannot listen\n", stderr);
        QCoreApplication::exit(1);
    });
    listener.listen(QString::fromLatin1(argv[1]));
    return application.exec();
}
