// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "fcgi/BwaFcgiListener.h"
#include "fcgi/BwaFcgiRequest.h"
#include "http/BwaHttpJsonHeader.h"
#include "services/BwaDispatcherFcgiService.h"
#include "services/BwaStandardFcgiRequestProcessor.h"
#include "services/BwaStandardFcgiService.h"

#include <QCoreApplication>

#include <cstdio>

//! [processor]
class TasksProcessor : public BwaStandardFcgiRequestProcessor
{
public:
    TasksProcessor()
        : BwaStandardFcgiRequestProcessor(nullptr) // no sessions: everybody may ask
    {
    }

protected:
    void processGetMethod(BwaFcgiRequest* request) override
    {
        request->out() << BwaHttpJsonHeader(QStringLiteral("utf-8")) << "[]\n";
        delete request; // completes the reply; always the last act
    }
};
//! [processor]

//! [main]
int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fputs("usage: tasks SOCKET\n", stderr);
        return 2;
    }
    QCoreApplication application(argc, argv);

    BwaDispatcherFcgiService root; // owns its services, and these their processors
    root.addService(QStringLiteral("tasks"), new BwaStandardFcgiService(new TasksProcessor));

    BwaFcgiListener listener({{QStringLiteral("/api"), &root}});
    QObject::connect(&listener, &BwaFcgiListener::listeningError, [] {
        std::fputs("tasks: cannot listen\n", stderr);
        QCoreApplication::exit(1);
    });
    listener.listen(QString::fromLatin1(argv[1]));
    return application.exec();
}
//! [main]
