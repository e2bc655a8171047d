// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "Accounts.h"
#include "AssetProcessor.h"
#include "ClientProcessor.h"
#include "CountingService.h"
#include "Database.h"
#include "DownloadProcessor.h"
#include "EchoProcessor.h"
#include "FailingProcessor.h"
#include "FileProcessor.h"
#include "FormProcessor.h"
#include "NoteStore.h"
#include "NotesService.h"
#include "OrderProcessor.h"
#include "PageProcessor.h"
#include "PasswordChecker.h"
#include "SessionIdentifier.h"
#include "SessionProcessor.h"
#include "Statistics.h"
#include "StatisticsProcessor.h"
#include "StopSignals.h"
#include "UploadProcessor.h"
#include "fcgi/BwaFcgiListener.h"
#include "services/BwaDispatcherFcgiService.h"
#include "services/BwaStandardFcgiService.h"
#include "services/BwaStandardProcessableDispatcherFcgiService.h"
#include "sessions/BwaWebSessionManager.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDebug>
#include <QElapsedTimer>

#include <algorithm>
#include <iostream>
#include <iterator>
#include <stdexcept>

namespace {

struct Options {
    QString socket;
    QString scriptName;
    QString database;
    QString files;
    SessionLifetimes lifetimes;
    bool demoAccounts;
    bool diagnostics;
};

QCommandLineOption option(const char* name, const char* description, const char* valueName,
                          const char* defaultValue = "")
{
    return QCommandLineOption(QString::fromLatin1(name), QString::fromLatin1(description),
                              QString::fromLatin1(valueName), QString::fromLatin1(defaultValue));
}

// A path is bytes, not text: each becomes the character of that number, as Latin-1 has it, whatever
// the locale, and where a path is used each becomes a byte again.
QStringList argumentsAsGiven(int argc, char** argv)
{
    QStringList arguments;
    std::transform(argv, argv + argc, std::back_inserter(arguments),
                   [](const char* argument) { return QString::fromLatin1(argument); });
    return arguments;
}

Options parseCommandLine(const QStringList& arguments)
{
    const auto socket = option("socket",
                               "The Unix socket, or address:port, for the front server; "
                               "descriptor 0 without it.",
                               "path");
    const auto scriptName = option(
        "script-name", "What the front server calls the API, /api; empty for one that names none.",
        "name", "/api");
    const auto database = option("database", "The file that keeps accounts and notes.", "path");
    const auto files = option("files", "The folder that the front server may send from.", "path");
    const auto token =
        option("token-lifetime", "Until a token expires; 10 minutes.", "ms", "600000");
    const auto removal =
        option("removal-delay", "From then to the session's end; 1 minute.", "ms", "60000");
    const auto longestAge = option("session-age",
                                   "From the login to the session's end, however "
                                   "often the token is renewed; 8 hours.",
                                   "ms", "28800000");
    const auto accounts = option("demo-accounts",
                                 "Adds the accounts demo and guest, whose "
                                 "passwords everybody knows.",
                                 "");
    const auto diagnostics = option("diagnostics",
                                    "Serves /statistics and /failure, which are for "
                                    "developers, to everybody.",
                                    "");
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Serves the API of the demonstration, under the path /api, over FastCGI."));
    parser.addHelpOption();
    parser.addOptions(
        {socket, scriptName, database, files, token, removal, longestAge, accounts, diagnostics});
    parser.process(arguments);
    if (!parser.isSet(database) || !parser.isSet(files)) {
        parser.showHelp(2);
    }
    return {parser.isSet(socket) ? parser.value(socket) : QString(),
            parser.value(scriptName),
            parser.value(database),
            parser.value(files),
            {parser.value(token).toInt(), parser.value(removal).toInt(),
             parser.value(longestAge).toInt()},
            parser.isSet(accounts),
            parser.isSet(diagnostics)};
}

// The tree of the API; the root owns what is added to it.
void addOpenServices(BwaDispatcherFcgiService& root, const QString& files)
{
    const auto add = [&root](const char* name, BwaAbstractFcgiRequestProcessor* processor) {
        root.addService(QString::fromLatin1(name), new BwaStandardFcgiService(processor));
    };
    add("echo", new EchoProcessor(nullptr));
    add("client", new ClientProcessor(nullptr));
    add("form", new FormProcessor(nullptr));
    add("upload", new UploadProcessor(nullptr));
    add("order", new OrderProcessor(nullptr));
    add("file", new FileProcessor(files));
    add("download", new DownloadProcessor(nullptr));
    add("page", new PageProcessor(nullptr));
}

// The web page, and below it what it consists of.
BwaAbstractFcgiService* newPageService()
{
    const auto newAsset = [](const char* fileName, const char* contentType) {
        return new AssetProcessor(QString::fromLatin1(fileName), QString::fromLatin1(contentType));
    };
    auto* page = new BwaStandardProcessableDispatcherFcgiService(
        newAsset("page.html", "text/html; charset=utf-8"));
    page->addService(QStringLiteral("page.css"),
                     new BwaStandardFcgiService(newAsset("page.css", "text/css; charset=utf-8")));
    page->addService(
        QStringLiteral("page.js"),
        new BwaStandardFcgiService(newAsset("page.js", "text/javascript; charset=utf-8")));
    page->addService(QStringLiteral("icon.svg"),
                     new BwaStandardFcgiService(newAsset("icon.svg", "image/svg+xml")));
    return page;
}

// The largest upload. Without the others a small body could hold enough fields to take seconds.
BwaRequestLimits bodyLimits()
{
    BwaRequestLimits limits;
    limits.maxBodySize = 16 * 1024 * 1024; // bytes
    limits.maxFormFields = 200;
    limits.maxParts = 220; // fields and files
    return limits;
}

// Known to everybody who has read this: for the demonstration only.
void addDemoAccounts(Accounts& accounts)
{
    accounts.add(QStringLiteral("demo"), QStringLiteral("tea and biscuits"));
    accounts.add(QStringLiteral("guest"), QStringLiteral("coffee and cake"));
}

// Logs each request, and ends the application when listening has failed or all is answered.
void listen(BwaFcgiListener& listener, const QString& socket)
{
    QObject::connect(&listener, &BwaFcgiListener::requestCompleted,
                     [](const QString& path, int status, qint64 bytes, qint64 milliseconds) {
                         qInfo() << path << status << bytes << "bytes" << milliseconds << "ms";
                     });
    QObject::connect(&listener, &BwaFcgiListener::listeningError, [&listener, socket] {
        std::cerr << "cannot listen on " << (socket.isNull() ? "descriptor 0" : qPrintable(socket))
                  << ": " << qPrintable(listener.errorString()) << std::endl;
        QCoreApplication::exit(1);
    });
    QObject::connect(&listener, &BwaFcgiListener::drained, &QCoreApplication::quit);
    listener.setRequestLimits(bodyLimits());
    listener.setBacklog(4096); // for many clients at once; the system may allow fewer
    listener.listen(socket);
}

int serve(QCoreApplication& application, const Options& options)
{
    StopSignals stopSignals;

    Database database(options.database);
    Accounts accounts(database);
    if (options.demoAccounts) {
        addDemoAccounts(accounts);
    }
    PasswordChecker passwords;
    NoteStore notes(database);
    BwaWebSessionManager sessions;
    SessionIdentifier identifier(&sessions);

    BwaDispatcherFcgiService top;
    // Without a script name the whole path comes as path info.
    BwaDispatcherFcgiService& root =
        options.scriptName.isEmpty() ? *top.addDispatcherService(QStringLiteral("api")) : top;
    addOpenServices(root, options.files);
    root.addService(QStringLiteral("session"),
                    new BwaStandardFcgiService(new SessionProcessor(
                        &identifier, &sessions, &accounts, &passwords, options.lifetimes)));
    root.addService(QStringLiteral("notes"), new NotesService(&identifier, &notes));

    root.addService(QStringLiteral("app"), newPageService());

    QElapsedTimer clock;
    clock.start();
    Statistics statistics;
    if (options.diagnostics) {
        root.addService(QStringLiteral("failure"),
                        new BwaStandardFcgiService(new FailingProcessor(nullptr)));
        root.addService(QStringLiteral("statistics"),
                        new BwaStandardFcgiService(new StatisticsProcessor(&statistics, &clock)));
    }
    CountingService counting(&top, &statistics, &clock);
    BwaFcgiListener listener({{options.scriptName, &counting}});
    stopSignals.onFirst([&listener] { listener.stopAccepting(); });
    listen(listener, options.socket);
    const int status = application.exec();
    passwords.finish(); // the listener must not end before the requests that wait for an answer
    return status;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    const Options options = parseCommandLine(argumentsAsGiven(argc, argv));
    try {
        return serve(application, options);
    } catch (const std::exception& error) {
        std::cerr << error.what() << std::endl;
        return 1;
    }
}
