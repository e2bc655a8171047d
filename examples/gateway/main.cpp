// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "Gateway.h"

#include <QCommandLineParser>
#include <QFile>

#include <cstdio>
#include <iostream>

namespace {

//! [serve]
int serve(const QString& socket, const GatewaySettings& settings)
{
    try {
        Gateway gateway(settings);
        return BwaRestServer({{"/api", &gateway.service()}}).accessLog().run(socket);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "gateway: %s\n", failure.what());
        return 1;
    }
}
//! [serve]

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    QCommandLineParser options;
    options.addHelpOption();
    options.addOptions({{"socket", "Listen at this path; else on descriptor 0.", "path"},
                        {"accounts", "The file of the users.", "file", "accounts"},
                        {"folder", "Where firmware images are.", "folder", "firmware"},
                        {"origin", "Pages of this origin may use the API; repeatable.", "origin"},
                        {"allow-http", "Cookies go over plain HTTP, too."},
                        {"hash", "Print the hash of the password on standard input."}});
    options.process(application);
    if (options.isSet("hash")) {
        std::string password;
        std::getline(std::cin, password);
        return std::puts(Accounts::hash(QByteArray::fromStdString(password))) < 0 ? 1 : 0;
    }

    GatewaySettings settings;
    settings.accounts = options.value("accounts");
    settings.folder = options.value("folder");
    settings.origins = options.values("origin");
    settings.allowsHttp = options.isSet("allow-http");
    const QByteArray path =
        QFile::encodeName(options.value("socket")); // its bytes are Latin-1 here
    return serve(options.isSet("socket") ? QString::fromLatin1(path) : QString(), settings);
}
