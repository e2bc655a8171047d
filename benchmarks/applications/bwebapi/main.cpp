// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// The measured requests, answered as an application of this library would answer them.

#include "BwaStringStreaming.h"
#include "applications/bwebapi/ProfileProcessor.h"
#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiListener.h"
#include "fcgi/BwaFcgiRequest.h"
#include "http/BwaHttpJsonHeader.h"
#include "json/BwaJsonUtilities.h"
#include "services/BwaDispatcherFcgiService.h"
#include "services/BwaStandardFcgiRequestProcessor.h"
#include "services/BwaStandardFcgiService.h"
#include "sessions/BwaSessionTokenFcgiSessionIdentifier.h"
#include "sessions/BwaWebSessionManager.h"

#include <QCoreApplication>

namespace {

QString cookieValue(const BwaCgiEnvironment& environment, const QString& name)
{
    const QList<BwaHttpCookie> cookies = environment.cookies();
    for (const BwaHttpCookie& cookie : cookies) {
        if (cookie.name == name) {
            return cookie.value;
        }
    }
    return QString();
}

/** One query variable and one cookie. */
class HelloProcessor : public BwaStandardFcgiRequestProcessor
{
public:
    using BwaStandardFcgiRequestProcessor::BwaStandardFcgiRequestProcessor;

protected:
    void processGetMethod(BwaFcgiRequest* request) override
    {
        const BwaCgiRequest* const cgiRequest = request->cgiRequest();
        request->out() << BwaHttpJsonHeader() << "{\"hello\":\""
                       << cgiRequest->queryVariables().value(QStringLiteral("name"))
                       << "\",\"theme\":\""
                       << cookieValue(cgiRequest->environment(), QStringLiteral("theme"))
                       << "\"}\n";
        delete request;
    }
};

struct Order {
    unsigned int id;
    qint64 account;
    unsigned short quantity;
    double price;
    bool express;
    QString customer;
    QString address;
    QString note;
};

/** Eight typed fields of a JSON object. */
class OrderProcessor : public BwaStandardFcgiRequestProcessor
{
public:
    using BwaStandardFcgiRequestProcessor::BwaStandardFcgiRequestProcessor;

protected:
    void processPostMethod(BwaFcgiRequest* request) override
    {
        bool ok = false;
        const QVariantMap object = parseJsonContent(request, &ok).toMap();
        Order order = {};
        if (ok && readOrder(object, order)) {
            sendOrder(request, order);
        } else {
            request->sendHttpError(BwaFcgiRequest::BadRequest);
        }
        delete request;
    }

private:
    static bool readOrder(const QVariantMap& object, Order& order)
    {
        using Json = BwaJsonUtilities;
        long long account = 0;
        const bool ok = Json::integerValue(object, QStringLiteral("id"), order.id) &&
            Json::integerValue(object, QStringLiteral("account"), account) &&
            Json::integerValue(object, QStringLiteral("quantity"), order.quantity) &&
            Json::realNumberValue(object, QStringLiteral("price"), order.price) &&
            Json::booleanValue(object, QStringLiteral("express"), order.express) &&
            Json::stringValue(object, QStringLiteral("customer"), order.customer) &&
            Json::stringValue(object, QStringLiteral("address"), order.address) &&
            Json::stringValue(object, QStringLiteral("note"), order.note);
        order.account = account;
        return ok;
    }

    static void sendOrder(BwaFcgiRequest* request, const Order& order)
    {
        request->out() << BwaHttpJsonHeader() << "{\"id\":" << order.id
                       << ",\"account\":" << order.account << ",\"quantity\":" << order.quantity
                       << ",\"price\":" << order.price
                       << ",\"express\":" << (order.express ? "true" : "false")
                       << ",\"customer\":\"" << order.customer << "\",\"address\":\""
                       << order.address << "\",\"note\":\"" << order.note << "\"}\n";
    }
};

/** Counts the fields of a form. */
class FormProcessor : public BwaStandardFcgiRequestProcessor
{
public:
    using BwaStandardFcgiRequestProcessor::BwaStandardFcgiRequestProcessor;

protected:
    void processPostMethod(BwaFcgiRequest* request) override
    {
        BwaCgiRequest* const cgiRequest = request->cgiRequest();
        if (cgiRequest->processBodyContent()) {
            request->out() << BwaHttpJsonHeader()
                           << "{\"fields\":" << cgiRequest->formVariables().size() << "}\n";
        } else {
            request->sendHttpError(BwaFcgiRequest::BadRequest);
        }
        delete request;
    }
};

/** Tells the size of an uploaded file. */
class UploadProcessor : public BwaStandardFcgiRequestProcessor
{
public:
    using BwaStandardFcgiRequestProcessor::BwaStandardFcgiRequestProcessor;

protected:
    void processPostMethod(BwaFcgiRequest* request) override
    {
        BwaCgiRequest* const cgiRequest = request->cgiRequest();
        const QString name = QStringLiteral("file");
        if (cgiRequest->processBodyContent() && cgiRequest->files().contains(name)) {
            const BwaCgiFile file = cgiRequest->files().value(name);
            request->out() << BwaHttpJsonHeader() << "{\"size\":" << file.data().size() << "}\n";
        } else {
            request->sendHttpError(BwaFcgiRequest::BadRequest);
        }
        delete request;
    }
};

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    if (argc != 2) {
        qCritical("usage: %s SOCKET", argv[0]);
        return 2;
    }
    BwaWebSessionManager sessions;
    sessions.createSession(QStringLiteral("ada"),
                           QUuid(QStringLiteral("{6f1c8f0e-52a4-4f0f-9d53-0d1f5b7c9a21}")),
                           QUuid(QStringLiteral("{c2b8a7d4-3e19-4c6b-8f70-a5e4d3c2b190}")));
    BwaSessionTokenFcgiSessionIdentifier identifier(&sessions, QStringLiteral("benchmark"));

    BwaDispatcherFcgiService root;
    root.addService(QStringLiteral("hello"),
                    new BwaStandardFcgiService(new HelloProcessor(nullptr)));
    root.addService(QStringLiteral("json"),
                    new BwaStandardFcgiService(new OrderProcessor(nullptr)));
    root.addService(QStringLiteral("form"), new BwaStandardFcgiService(new FormProcessor(nullptr)));
    root.addService(QStringLiteral("upload"),
                    new BwaStandardFcgiService(new UploadProcessor(nullptr)));
    root.addDispatcherService(QStringLiteral("v1"))
        ->addDispatcherService(QStringLiteral("users"))
        ->addService(QStringLiteral("profile"),
                     new BwaStandardFcgiService(new ProfileProcessor(&identifier)));

    BwaFcgiListener listener({{QStringLiteral("/api"), &root}});
    QObject::connect(&listener, &BwaFcgiListener::listeningError,
                     [] { QCoreApplication::exit(1); });
    listener.setBacklog(4096);
    listener.listen(QString::fromLatin1(argv[1]));
    return application.exec();
}
