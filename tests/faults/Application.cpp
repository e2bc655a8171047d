// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// An application that answers at once, after a while, or later: for faults and for long runs.
//
//     fault_application SOCKET

#include "BwaStringStreaming.h"
#include "StopSignals.h"
#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiListener.h"
#include "fcgi/BwaFcgiRequest.h"
#include "services/BwaAbstractFcgiRequestProcessor.h"
#include "services/BwaAbstractFcgiService.h"
#include "services/BwaDispatcherFcgiService.h"
#include "sessions/BwaSessionTokenFcgiSessionIdentifier.h"
#include "sessions/BwaWebSession.h"
#include "sessions/BwaWebSessionManager.h"

#include <QCoreApplication>
#include <QThread>
#include <QTimer>
#include <QUuid>

#include <functional>
#include <iostream>
#include <utility>

namespace {

const unsigned long whileServing = 50; // milliseconds
const int untilLater = 5;              // milliseconds
const int sessionLifetime = 200;       // milliseconds; so that they end during a run, too

using Answer = std::function<void(BwaFcgiRequest*)>;

/** Answers by a function. */
class Service : public BwaAbstractFcgiService
{
public:
    explicit Service(Answer answer)
        : m_answer(std::move(answer))
    {
    }

    void processRequest(BwaFcgiRequest* request) override { m_answer(request); }

private:
    Answer m_answer;
};

void answer(BwaFcgiRequest* request, const QString& text)
{
    request->out() << "Content-Type: text/plain\n\n" << text << "\n";
    delete request;
}

void answerAtOnce(BwaFcgiRequest* request)
{
    answer(request, QStringLiteral("at once"));
}

void answerSlowly(BwaFcgiRequest* request)
{
    QThread::msleep(whileServing);
    answer(request, QStringLiteral("slowly"));
}

void answerLater(BwaFcgiRequest* request)
{
    QTimer::singleShot(untilLater, [request] { answer(request, QStringLiteral("later")); });
}

// More than the buffers on the way hold.
void answerAtLength(BwaFcgiRequest* request)
{
    answer(request, QString(1000000, QLatin1Char('a')));
}

void countBody(BwaFcgiRequest* request)
{
    if (!request->cgiRequest()->processBodyContent()) {
        request->sendHttpError(BwaFcgiRequest::BadRequest);
        delete request;
        return;
    }
    const int fields = request->cgiRequest()->formVariables().size();
    const int files = request->cgiRequest()->files().size();
    answer(request, QStringLiteral("%1 fields, %2 files").arg(fields).arg(files));
}

void countMembers(BwaFcgiRequest* request)
{
    bool ok = false;
    const QVariant value = BwaAbstractFcgiRequestProcessor::parseJsonContent(request, &ok);
    answer(request, QStringLiteral("%1 members").arg(value.toMap().size()));
}

/** GET tells whether there is a session, POST makes one. */
class SessionService : public BwaAbstractFcgiService
{
public:
    SessionService()
        : m_identifier(&m_sessions, QStringLiteral("faults"))
    {
        // The one that the clients of long runs know.
        m_sessions.createSession(QStringLiteral("lasting"),
                                 QUuid(QStringLiteral("{11111111-1111-4111-8111-111111111111}")),
                                 QUuid(QStringLiteral("{22222222-2222-4222-8222-222222222222}")));
    }

    void processRequest(BwaFcgiRequest* request) override
    {
        if (request->cgiRequest()->environment().requestMethod() == QLatin1String("POST")) {
            m_sessions.createSession(QStringLiteral("short"), sessionLifetime, sessionLifetime);
            answer(request, QStringLiteral("made"));
        } else if (m_identifier.session(request)) {
            answer(request, QStringLiteral("known"));
        } else {
            m_identifier.sendUnauthorizedReply(request);
            delete request;
        }
    }

private:
    BwaWebSessionManager m_sessions;
    BwaSessionTokenFcgiSessionIdentifier m_identifier;
};

// The root owns what is added to it.
void addServices(BwaDispatcherFcgiService& root)
{
    root.addService(QStringLiteral("now"), new Service(answerAtOnce));
    root.addService(QStringLiteral("slow"), new Service(answerSlowly));
    root.addService(QStringLiteral("later"), new Service(answerLater));
    root.addService(QStringLiteral("long"), new Service(answerAtLength));
    root.addService(QStringLiteral("form"), new Service(countBody));
    root.addService(QStringLiteral("upload"), new Service(countBody));
    root.addService(QStringLiteral("json"), new Service(countMembers));
    root.addService(QStringLiteral("session"), new SessionService);
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    if (argc != 2) {
        std::cerr << "usage: " << argv[0] << " SOCKET\n";
        return 2;
    }
    StopSignals stopSignals;
    BwaDispatcherFcgiService root;
    addServices(root);
    BwaFcgiListener listener({{QStringLiteral("/api"), &root}});
    QObject::connect(&listener, &BwaFcgiListener::listeningError, &application,
                     [] { QCoreApplication::exit(1); });
    listener.listen(QString::fromLatin1(argv[1]));
    stopSignals.onFirst(&QCoreApplication::quit);
    return QCoreApplication::exec();
}
