// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiListener.h"
#include "fcgi/BwaFcgiRequest.h"
#include "http/BwaHttpJsonHeader.h"
#include "json/BwaJsonUtilities.h"
#include "services/BwaDispatcherFcgiService.h"
#include "services/BwaStandardFcgiRequestProcessor.h"
#include "services/BwaStandardFcgiService.h"

#include <QCoreApplication>

struct Greeting : BwaStandardFcgiRequestProcessor {
    using BwaStandardFcgiRequestProcessor::BwaStandardFcgiRequestProcessor;
    void processGetMethod(BwaFcgiRequest* request) override
    {
        request->out() << BwaHttpJsonHeader() << "{\"greeting\":\"Hello\"}\n";
        delete request; // completes the reply; always the last act
    }
};

struct Sum : BwaStandardFcgiRequestProcessor {
    using BwaStandardFcgiRequestProcessor::BwaStandardFcgiRequestProcessor;
    void processPostMethod(BwaFcgiRequest* request) override
    {
        if (request->cgiRequest()->environment().contentLength() > 0) {
            sendSum(request);
        } else {
            request->sendHttpError(BwaFcgiRequest::BadRequest);
        }
        delete request;
    }

    static void sendSum(BwaFcgiRequest* request)
    {
        bool ok = false;
        const QVariantMap body = parseJsonContent(request, &ok).toMap();
        int a = 0;
        int b = 0;
        if (BwaJsonUtilities::integerValue(body, QStringLiteral("a"), a) &&
            BwaJsonUtilities::integerValue(body, QStringLiteral("b"), b)) {
            request->out() << BwaHttpJsonHeader() << "{\"sum\":" << static_cast<qint64>(a) + b
                           << "}\n";
        } else if (ok || !request->cgiRequest()->body().isEmpty()) {
            request->sendHttpError(BwaFcgiRequest::BadRequest);
        } // otherwise the body could not be read, and parseJsonContent has answered
    }
};

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    BwaDispatcherFcgiService root; // the null pointers: no sessions, open to everybody
    root.addService(QStringLiteral("greeting"), new BwaStandardFcgiService(new Greeting(nullptr)));
    root.addService(QStringLiteral("sum"), new BwaStandardFcgiService(new Sum(nullptr)));

    BwaFcgiListener listener({{QStringLiteral("/api"), &root}});
    BwaRequestLimits limits;
    limits.maxBodySize = 64 * 1024; // bytes
    listener.setRequestLimits(limits);
    QObject::connect(&listener, &BwaFcgiListener::listeningError,
                     [] { QCoreApplication::exit(1); });
    listener.listen(QString::fromLatin1(argv[1])); // the socket that the web server connects to
    return application.exec();
}
