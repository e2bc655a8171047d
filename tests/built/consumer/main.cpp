// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// Built against the installed library, by its CMake package and by pkg-config.

#include "BWebApiLibInformation.h"
#include "BwaStringStreaming.h"
#include "fcgi/BwaFcgiListener.h"
#include "fcgi/BwaFcgiRequest.h"
#include "http/BwaHttpJsonHeader.h"
#include "services/BwaDispatcherFcgiService.h"
#include "services/BwaStandardFcgiRequestProcessor.h"
#include "services/BwaStandardFcgiService.h"

#include <QCoreApplication>

#include <fcgiapp.h>

#include <iostream>

class Processor : public BwaStandardFcgiRequestProcessor
{
public:
    using BwaStandardFcgiRequestProcessor::BwaStandardFcgiRequestProcessor;

protected:
    void processGetMethod(BwaFcgiRequest* request) override
    {
        request->out() << BwaHttpJsonHeader() << "{}" << std::endl;
        delete request;
    }
};

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    BwaDispatcherFcgiService root;
    root.addService(QStringLiteral("x"), new BwaStandardFcgiService(new Processor(nullptr)));
    BwaFcgiListener listener({{QStringLiteral("/api"), &root}});

    std::cout << BWebApiLibInformation::libraryName() << ' '
              << BWebApiLibInformation::libraryVersion() << std::endl;
    return FCGX_IsCGI() ? 0 : 1; // an application may call libfcgi, too
}
