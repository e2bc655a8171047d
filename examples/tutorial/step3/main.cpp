// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiListener.h"
#include "fcgi/BwaFcgiRequest.h"
#include "http/BwaHttp201StatusJsonHeader.h"
#include "http/BwaHttpJsonHeader.h"
#include "json/BwaJson.h"
#include "json/BwaJsonUtilities.h"
#include "services/BwaDispatcherFcgiService.h"
#include "services/BwaStandardFcgiRequestProcessor.h"
#include "services/BwaStandardFcgiService.h"

#include <QCoreApplication>
#include <QList>
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

//! [read]
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
        QVariantList tasks;
        for (const Task& task : qAsConst(m_tasks)) {
            tasks.append(toJson(task));
        }
        request->out() << BwaHttpJsonHeader(QStringLiteral("utf-8"));
        writeJson(request, tasks);
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
            title.isEmpty() || title.size() > longestTitle) {
            request->sendHttpError(BwaFcgiRequest::BadRequest);
            return;
        }
        if (m_tasks.size() >= mostTasks) {
            request->sendHttpError(BwaFcgiRequest::InsufficientStorage);
            return;
        }
        m_tasks.append({static_cast<int>(m_tasks.size()) + 1, title, false});
        request->out() << BwaHttp201StatusJsonHeader(QStringLiteral("utf-8"));
        writeJson(request, toJson(m_tasks.last()));
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

    //! [limits]
    BwaFcgiListener listener({{QStringLiteral("/api"), &root}});
    BwaRequestLimits limits;
    limits.maxBodySize = 64 * 1024; // bytes
    listener.setRequestLimits(limits);
    //! [limits]
    QObject::connect(&listener, &BwaFcgiListener::listeningError, [] {
        std::fputs("tasks: cannot listen\n", stderr);
        QCoreApplication::exit(1);
    });
    listener.listen(QString::fromLatin1(argv[1]));
    return application.exec();
}
//! [main]
