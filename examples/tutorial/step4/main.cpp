// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiListener.h"
#include "fcgi/BwaFcgiRequest.h"
#include "http/BwaHttp201StatusJsonHeader.h"
#include "http/BwaHttp204StatusHeader.h"
#include "http/BwaHttpJsonHeader.h"
#include "json/BwaJson.h"
#include "json/BwaJsonUtilities.h"
#include "services/BwaDispatcherFcgiService.h"
#include "services/BwaStandardFcgiRequestProcessor.h"
#include "services/BwaStandardFcgiService.h"
#include "services/BwaStandardProcessableDispatcherFcgiService.h"

#include <QCoreApplication>
#include <QMap>
#include <QVariant>

#include <cstdio>

namespace {

constexpr int longestTitle = 200; // characters
constexpr int mostTasks = 1000;

struct Task {
    int id = 0;
    QString title;
    bool isDone = false;
};

QVariantMap toJson(const Task& task)
{
    return {{QStringLiteral("id"), task.id},
            {QStringLiteral("title"), task.title},
            {QStringLiteral("done"), task.isDone}};
}

void writeJson(BwaFcgiRequest* request, const QVariant& json)
{
    request->out() << BwaJson::write(json).constData() << '\n';
}

void sendJson(BwaFcgiRequest* request, const QVariant& json)
{
    request->out() << BwaHttpJsonHeader(QStringLiteral("utf-8"));
    writeJson(request, json);
}

// Reads a JSON object from the body; when there is none, answers and returns false.
bool readObject(BwaFcgiRequest* request, QVariantMap& object)
{
    const BwaCgiRequest* asked = request->cgiRequest();
    if (asked->environment().contentLength() == 0) {
        request->sendHttpError(BwaFcgiRequest::BadRequest);
        return false;
    }
    const QVariant json = BwaStandardFcgiRequestProcessor::parseJsonContent(request);
    if (BwaJsonUtilities::objectValue(json, object)) {
        return true;
    }
    if (!asked->body().isEmpty()) {
        request->sendHttpError(BwaFcgiRequest::BadRequest); // what was read is no JSON object
    } // another media type, or a body that ended early, has been answered
    return false;
}

} // namespace

//! [service]
// The list, and below it a service for each task, named by its id.
class TasksService : public BwaStandardProcessableDispatcherFcgiService
{
public:
    TasksService();

    const QMap<int, Task>& tasks() const { return m_tasks; }
    Task& task(int id) { return m_tasks[id]; }
    const Task& add(const QString& title);
    void remove(int id);

private:
    QMap<int, Task> m_tasks;
    int m_lastId;
};
//! [service]

// Answers for the list.
class TasksProcessor : public BwaStandardFcgiRequestProcessor
{
public:
    explicit TasksProcessor(TasksService* service)
        : BwaStandardFcgiRequestProcessor(nullptr)
        , m_service(service)
    {
    }

protected:
    void processGetMethod(BwaFcgiRequest* request) override
    {
        list(request);
        delete request;
    }

    void processPostMethod(BwaFcgiRequest* request) override
    {
        add(request);
        delete request;
    }

private:
    void list(BwaFcgiRequest* request) const
    {
        QVariantList tasks;
        for (const Task& task : m_service->tasks()) {
            tasks.append(toJson(task));
        }
        sendJson(request, tasks);
    }

    void add(BwaFcgiRequest* request)
    {
        QVariantMap object;
        if (!readObject(request, object)) {
            return;
        }
        QString title;
        if (!BwaJsonUtilities::stringValue(object, QStringLiteral("title"), title) ||
            title.isEmpty() || title.size() > longestTitle) {
            request->sendHttpError(BwaFcgiRequest::BadRequest);
            return;
        }
        if (m_service->tasks().size() >= mostTasks) {
            request->sendHttpError(BwaFcgiRequest::InsufficientStorage);
            return;
        }
        const Task& task = m_service->add(title);
        request->out() << BwaHttp201StatusJsonHeader(QStringLiteral("utf-8"));
        writeJson(request, toJson(task));
    }

    TasksService* m_service; // not owned
};

//! [task-processor]
// Answers for one task.
class TaskProcessor : public BwaStandardFcgiRequestProcessor
{
public:
    TaskProcessor(TasksService* service, int id)
        : BwaStandardFcgiRequestProcessor(nullptr)
        , m_service(service)
        , m_id(id)
    {
    }

protected:
    void processGetMethod(BwaFcgiRequest* request) override
    {
        sendJson(request, toJson(m_service->task(m_id)));
        delete request;
    }

    void processPutMethod(BwaFcgiRequest* request) override
    {
        change(request);
        delete request;
    }

    void processDeleteMethod(BwaFcgiRequest* request) override
    {
        remove(request);
        delete request;
    }

private:
    void change(BwaFcgiRequest* request)
    {
        QVariantMap object;
        if (!readObject(request, object)) {
            return;
        }
        Task& task = m_service->task(m_id);
        if (!BwaJsonUtilities::booleanValue(object, QStringLiteral("done"), task.isDone)) {
            request->sendHttpError(BwaFcgiRequest::BadRequest); // and task is as it was
            return;
        }
        sendJson(request, toJson(task));
    }

    void remove(BwaFcgiRequest* request)
    {
        m_service->remove(m_id);
        request->out() << BwaHttp204StatusHeader();
    }

    TasksService* m_service; // not owned
    int m_id;
};
//! [task-processor]

//! [tasks]
TasksService::TasksService()
    : BwaStandardProcessableDispatcherFcgiService(new TasksProcessor(this))
    , m_lastId(0)
{
}

const Task& TasksService::add(const QString& title)
{
    const int id = ++m_lastId;
    addService(QString::number(id), new BwaStandardFcgiService(new TaskProcessor(this, id)));
    return *m_tasks.insert(id, {id, title, false});
}

void TasksService::remove(int id)
{
    m_tasks.remove(id);
    removeService(QString::number(id))->deleteLater(); // it is still answering
}
//! [tasks]

//! [main]
int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fputs("usage: tasks SOCKET\n", stderr);
        return 2;
    }
    QCoreApplication application(argc, argv);

    BwaDispatcherFcgiService root;
    root.addService(QStringLiteral("tasks"), new TasksService);

    BwaFcgiListener listener({{QStringLiteral("/api"), &root}});
    BwaRequestLimits limits;
    limits.maxBodySize = 64 * 1024; // bytes
    listener.setRequestLimits(limits);
    QObject::connect(&listener, &BwaFcgiListener::listeningError, [] {
        std::fputs("tasks: cannot listen\n", stderr);
        QCoreApplication::exit(1);
    });
    listener.listen(QString::fromLatin1(argv[1]));
    return application.exec();
}
//! [main]
