// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// routed-calls core|ROUTES CALLS: sends that many calls with two parameters to a service of that
// many routes, or as many requests to a processor of the core that replies the same.

#include "fcgi/BwaFcgiRequest.h"
#include "http/BwaHttpJsonHeader.h"
#include "rest/BwaRestService.h"
#include "services/BwaStandardFcgiRequestProcessor.h"
#include "services/BwaStandardFcgiService.h"
#include "testing/BwaTestRequest.h"

#include <cstdlib>
#include <cstring>

namespace {

class Processor : public BwaStandardFcgiRequestProcessor
{
public:
    using BwaStandardFcgiRequestProcessor::BwaStandardFcgiRequestProcessor;

protected:
    void processGetMethod(BwaFcgiRequest* request) override
    {
        request->out() << BwaHttpJsonHeader() << "{}";
        delete request;
    }
};

BwaRestReply reply(const BwaRestCall& call)
{
    const bool isThere = call.number("id") == 7 && call.number("port") == 3;
    return BwaRestReply::bytes(isThere ? "{}" : "", "application/json");
}

} // namespace

// What counts, by its name: see check-costs.
Q_NEVER_INLINE void callMeasured(BwaAbstractFcgiService& service, BwaFcgiRequest* request)
{
    service.processRequest(request);
}

int main(int /*argc*/, char** argv)
{
    BwaStandardFcgiService core(new Processor(nullptr));
    BwaRestService rest;
    for (int number = 0; number < std::atoi(argv[1]); ++number) {
        const QByteArray group = "/devices" + QByteArray::number(number + 70);
        rest.get((group + "/{id:int}/ports/{port:int}").constData(), &reply);
    }
    const bool isCore = std::strcmp(argv[1], "core") == 0;
    BwaAbstractFcgiService& service = isCore ? static_cast<BwaAbstractFcgiService&>(core) : rest;
    const BwaTestRequest request("GET", "/devices77/7/ports/3");
    bool areAnswered = true;
    for (int call = 0; call < std::atoi(argv[2]); ++call) {
        const BwaTestReply answer =
            request.sendTo([&](BwaFcgiRequest* sent) { callMeasured(service, sent); });
        areAnswered = answer.body == "{}" && areAnswered;
    }
    return areAnswered ? 0 : 1;
}
