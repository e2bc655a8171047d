// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiListener.h"
#include "fcgi/BwaFcgiRequest.h"
#include "http/BwaHttp201StatusJsonHeader.h"
#include "http/BwaHttpJsonHeader.h"
#include "json/BwaJsonUtilities.h"
#include "services/BwaDispatcherFcgiService.h"
#include "services/BwaStandardFcgiRequestProcessor.h"
#include "services/BwaStandardFcgiService.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QList>

#include <cstdio>

namespace {

struct Task {
    int id = 0;
    QString title;
    bool isDone = false;
};

QJsonObject toJson(const Task& task)
{
    return {{QStringLiteral("id"), task.id},
            {QStringLiteral("title"), task.title},
            {QStringLiteral("done"), task.isDone}};
}

void writeJson(BwaFcgiRequest* request, const QJsonDocument& json)
{
    request->out() << json.toJson(QJsonDocument::Compact).constData() << '\n';
}

//! [read]
// Reads a JSON object from the body; when there is none, answers and returns false.
bool readObject(BwaFcgiRequest* request, QVariantMap& object)
{
    const BwaCgiRequest* asked = request->cgiRequest();
    if (asked->environment().contentLength() == 0) {
        request->sendHttpError(BwaFcgiRequest::BadRequest);
        return false;
    }
    bool isJson = false;
    object = BwaStandardFcgiRequestProcessor::parseJsonContent(request, &isJson).toMap();
    if (!isJson && !asked->body().isEmpty()) {
        request->sendHttpError(BwaFcgiRequest::BadRequest); // what was read is no JSON
    } // another media type, or a body that ended early, has been answered
    return isJson;
}
//! [read]

} // namespace

class TasksProcessor : public BwaStandardFcgiRequestProcessor
{
public:
    TasksProcessor()
        : BwaStandardFcgiRequestProcessor(nullptr)
    {
    }

protected:
    void processGetMethod(BwaFcgiRequest* request) override
    {
        QJsonArray tasks;
        for (const Task& task : qAsConst(m_tasks)) {
            tasks.append(toJson(task));
        }
        request->out() << BwaHttpJsonHeader(QStringLiteral("utf-8"));
        writeJson(request, QJsonDocument(tasks));
        delete request;
    }

    //! [post]
    void processPostMethod(BwaFcgiRequest* request) override
    {
        QVariantMap object;
        if (readObject(request, object)) {
            add(request, object);
        }
        delete request;
    }

private:
    void add(BwaFcgiRequest* request, const QVariantMap& object)
    {
        QString title;
        if (!BwaJsonUtilities::stringValue(object, QStringLiteral("title"), title) ||
            title.isEmpty()) {
            request->sendHttpError(BwaFcgiRequest::BadRequest);
            return;
        }
        m_tasks.append({static_cast<int>(m_tasks.size()) + 1, title, false});
        request->out() << BwaHttp201StatusJsonHeader(QStringLiteral("utf-8"));
        writeJson(request, QJsonDocument(toJson(m_tasks.last())));
    }
    //! [post]

    QList<Task> m_tasks;
};

//! [main]
int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fputs("usage: tasks SOCKET\n", stderr);
        return 2;
    }
    QCoreApplication application(argc, argv);

    BwaDispatcherFcgiService root;
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
