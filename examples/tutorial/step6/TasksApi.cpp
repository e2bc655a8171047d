// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "TasksApi.h"

#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiRequest.h"
#include "http/BwaHttp201StatusJsonHeader.h"
#include "http/BwaHttp204StatusHeader.h"
#include "http/BwaHttpJsonHeader.h"
#include "json/BwaJson.h"
#include "json/BwaJsonUtilities.h"
#include "services/BwaStandardFcgiRequestProcessor.h"
#include "services/BwaStandardFcgiService.h"
#include "services/BwaStandardProcessableDispatcherFcgiService.h"
#include "sessions/BwaWebSession.h"

#include <QMap>
#include <QVariant>

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

// For the tutorial only: a real application keeps salted hashes.
bool isPasswordRight(const QString& user, const QString& password)
{
    return user == QLatin1String("ann") && password == QLatin1String("tea and biscuits");
}

// The list, and below it a service for each task, named by its id.
class TasksService : public BwaStandardProcessableDispatcherFcgiService
{
public:
    explicit TasksService(BwaAbstractFcgiSessionIdentifier* identifier);

    const QMap<int, Task>& tasks() const { return m_tasks; }
    Task& task(int id) { return m_tasks[id]; }
    const Task& add(const QString& title);
    void remove(int id);

private:
    BwaAbstractFcgiSessionIdentifier* m_identifier; // not owned
    QMap<int, Task> m_tasks;
    int m_lastId;
};

// Answers for the list.
class TasksProcessor : public BwaStandardFcgiRequestProcessor
{
public:
    TasksProcessor(BwaAbstractFcgiSessionIdentifier* identifier, TasksService* service)
        : BwaStandardFcgiRequestProcessor(identifier)
        , m_service(service)
    {
    }

protected:
    void processGetMethod(BwaFcgiRequest* request) override
    {
        if (authenticateRequest(request)) {
            list(request);
        }
        delete request;
    }

    void processPostMethod(BwaFcgiRequest* request) override
    {
        if (authenticateRequest(request)) {
            add(request);
        }
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

// Answers for one task.
class TaskProcessor : public BwaStandardFcgiRequestProcessor
{
public:
    TaskProcessor(BwaAbstractFcgiSessionIdentifier* identifier, TasksService* service, int id)
        : BwaStandardFcgiRequestProcessor(identifier)
        , m_service(service)
        , m_id(id)
    {
    }

protected:
    void processGetMethod(BwaFcgiRequest* request) override
    {
        if (authenticateRequest(request)) {
            sendJson(request, toJson(m_service->task(m_id)));
        }
        delete request;
    }

    void processPutMethod(BwaFcgiRequest* request) override
    {
        if (authenticateRequest(request)) {
            change(request);
        }
        delete request;
    }

    void processDeleteMethod(BwaFcgiRequest* request) override
    {
        if (authenticateRequest(request)) {
            remove(request);
        }
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

TasksService::TasksService(BwaAbstractFcgiSessionIdentifier* identifier)
    : BwaStandardProcessableDispatcherFcgiService(new TasksProcessor(identifier, this))
    , m_identifier(identifier)
    , m_lastId(0)
{
}

const Task& TasksService::add(const QString& title)
{
    const int id = ++m_lastId;
    addService(QString::number(id),
               new BwaStandardFcgiService(new TaskProcessor(m_identifier, this, id)));
    return *m_tasks.insert(id, {id, title, false});
}

void TasksService::remove(int id)
{
    m_tasks.remove(id);
    removeService(QString::number(id))->deleteLater(); // it is still answering
}

// Logs in with POST, and out with DELETE.
class SessionProcessor : public BwaStandardFcgiRequestProcessor
{
public:
    SessionProcessor(BwaAbstractFcgiSessionIdentifier* identifier, BwaWebSessionManager* sessions)
        : BwaStandardFcgiRequestProcessor(identifier)
        , m_sessions(sessions)
    {
    }

protected:
    void processPostMethod(BwaFcgiRequest* request) override
    {
        QVariantMap object;
        if (readObject(request, object)) {
            logIn(request, object);
        }
        delete request;
    }

    void processDeleteMethod(BwaFcgiRequest* request) override
    {
        if (BwaWebSession* session = authenticateRequest(request)) {
            session->remove();
            request->out() << BwaHttp204StatusHeader();
        }
        delete request;
    }

private:
    void logIn(BwaFcgiRequest* request, const QVariantMap& object)
    {
        QString user;
        QString password;
        BwaJsonUtilities::stringValue(object, QStringLiteral("user"), user);
        BwaJsonUtilities::stringValue(object, QStringLiteral("password"), password);
        if (!isPasswordRight(user, password)) {
            request->sendHttpError(BwaFcgiRequest::Forbidden);
            return;
        }
        const int tokenLifetime = 15 * 60 * 1000; // milliseconds
        const int removalDelay = 60 * 60 * 1000;  // milliseconds
        const BwaWebSession* session = m_sessions->createSession(user, tokenLifetime, removalDelay);
        const QString authorization =
            QStringLiteral("SESSION-TOKEN %1:%2")
                .arg(session->sessionId().toString(), session->token().toString());
        request->out() << BwaHttp201StatusJsonHeader(QStringLiteral("utf-8"));
        writeJson(request, QVariantMap{{QStringLiteral("authorization"), authorization}});
    }

    BwaWebSessionManager* m_sessions; // not owned
};

} // namespace

//! [api]
TasksApi::TasksApi()
    : m_identifier(&m_sessions, QStringLiteral("tasks"))
{
    m_root.addService(QStringLiteral("tasks"), new TasksService(&m_identifier));
    m_root.addService(QStringLiteral("session"),
                      new BwaStandardFcgiService(new SessionProcessor(&m_identifier, &m_sessions)));
}
//! [api]
