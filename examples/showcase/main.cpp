// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "Showcase.h"
#include "fcgi/BwaFcgiListener.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>

#include <algorithm>
#include <cstdio>
#include <iterator>

namespace {

// A path is bytes, not text: each becomes the character of that number, as Latin-1 has it, whatever
// the locale, and where a path is used each becomes a byte again.
QStringList argumentsAsGiven(int argc, char** argv)
{
    QStringList arguments;
    std::transform(argv, argv + argc, std::back_inserter(arguments),
                   [](const char* argument) { return QString::fromLatin1(argument); });
    return arguments;
}

void addOptions(QCommandLineParser& parser)
{
    parser.addHelpOption();
    parser.addOptions({
        {"socket", "The Unix socket, or address:port; descriptor 0 without it.", "path"},
        {"script-name", "What the front server calls the API; may be empty.", "name", "/api"},
        {"database", "The file that keeps accounts and notes, or postgresql: and its address.",
         "path"},
        {"files", "The folder that the front server may send from.", "path"},
        {"renderer", "The folder of swagger-ui-dist, for the page /docs.", "path"},
        {"token-lifetime", "Until a token expires; 10 minutes.", "ms", "600000"},
        {"session-age", "From the login to the session's end; 8 hours.", "ms", "28800000"},
        {"allow-http", "Cookies go over plain HTTP, too."},
        {"redis", "Keeps the sessions in Redis: its addresses, separated by commas.", "addresses"},
        {"redis-replicas", "Those that must have confirmed a change.", "number", "0"},
        {"redis-sentinels", "Addresses of Sentinels, separated by commas.", "addresses"},
        {"redis-master", "What the Sentinels call the primary.", "name"},
        {"demo-accounts", "Adds demo and guest, whose passwords everybody knows."},
        {"diagnostics", "Serves /statistics and /failure, for developers, to everybody."},
    });
}

QStringList listOf(const QString& addresses)
{
    return addresses.isEmpty() ? QStringList() : addresses.split(',');
}

SessionSettings sessionSettings(const QCommandLineParser& parser)
{
    SessionSettings settings;
    settings.tokenLifetime = parser.value("token-lifetime").toInt();
    settings.longestAge = parser.value("session-age").toLongLong();
    settings.allowsHttp = parser.isSet("allow-http");
    settings.redisAddresses = listOf(parser.value("redis"));
    settings.redisReplicas = parser.value("redis-replicas").toInt();
    settings.redisSentinels = listOf(parser.value("redis-sentinels"));
    settings.redisMaster = parser.value("redis-master");
    return settings;
}

ShowcaseSettings showcaseSettings(const QCommandLineParser& parser)
{
    ShowcaseSettings settings;
    settings.scriptName = parser.value("script-name");
    settings.database = parser.value("database");
    settings.files = QString::fromUtf8(parser.value("files").toLatin1());
    settings.renderer = QFile::decodeName(parser.value("renderer").toLatin1());
    settings.sessions = sessionSettings(parser);
    settings.hasDemoAccounts = parser.isSet("demo-accounts");
    settings.hasDiagnostics = parser.isSet("diagnostics");
    return settings;
}

int serve(const QString& socket, const ShowcaseSettings& settings)
{
    Showcase showcase(settings);
    BwaRestServer server({{settings.scriptName, &showcase.service()}});
    server.prepare([&showcase](BwaFcgiListener& listener) {
        listener.setBacklog(4096); // for many clients at once; the system may allow fewer
        showcase.diagnostics().count(listener);
    });
    return server.accessLog().run(socket);
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Serves the API of the demonstration, under the path /api, over FastCGI.");
    addOptions(parser);
    parser.process(argumentsAsGiven(argc, argv));
    if (!parser.isSet("database") || !parser.isSet("files")) {
        parser.showHelp(2);
    }
    const QString socket = parser.isSet("socket") ? parser.value("socket") : QString();
    try {
        return serve(socket, showcaseSettings(parser));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
