// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "NoteProcessor.h"

#include "NoteJson.h"
#include "NoteStore.h"
#include "Replies.h"
#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiRequest.h"
#include "http/BwaHttp204StatusHeader.h"
#include "services/BwaAbstractFcgiService.h"
#include "sessions/BwaWebSession.h"

#include <QJsonObject>

NoteProcessor::NoteProcessor(BwaAbstractFcgiSessionIdentifier* identifier, NoteStore* store,
                             const BwaAbstractFcgiService* service)
    : BwaStandardFcgiRequestProcessor(identifier)
    , m_store(store)
    , m_service(service)
{
}

void NoteProcessor::processGetMethod(BwaFcgiRequest* request)
{
    if (const BwaWebSession* session = authenticateRequest(request)) {
        read(request, session->username());
    }
    delete request;
}

void NoteProcessor::processPutMethod(BwaFcgiRequest* request)
{
    if (const BwaWebSession* session = authenticateRequest(request)) {
        change(request, session->username());
    }
    delete request;
}

void NoteProcessor::processDeleteMethod(BwaFcgiRequest* request)
{
    if (const BwaWebSession* session = authenticateRequest(request)) {
        remove(request, session->username());
    }
    delete request;
}

void NoteProcessor::read(BwaFcgiRequest* request, const QString& user)
{
    Note note;
    if (m_store->read(user, noteId(request), note)) {
        sendJson(request, noteToJson(note));
    } else {
        request->sendHttpError(BwaFcgiRequest::NotFound);
    }
}

void NoteProcessor::change(BwaFcgiRequest* request, const QString& user)
{
    Note note;
    note.id = noteId(request);
    if (!readNote(request, note)) {
        return;
    }
    if (m_store->change(user, note)) {
        sendJson(request, noteToJson(note));
    } else {
        request->sendHttpError(BwaFcgiRequest::NotFound);
    }
}

void NoteProcessor::remove(BwaFcgiRequest* request, const QString& user)
{
    if (m_store->remove(user, noteId(request))) {
        request->out() << BwaHttp204StatusHeader();
    } else {
        request->sendHttpError(BwaFcgiRequest::NotFound);
    }
}

qint64 NoteProcessor::noteId(BwaFcgiRequest* request) const
{
    const QString path = m_service->servicePath() + QLatin1Char('/');
    return parseId(request->cgiRequest()->environment().pathInfo().mid(path.size()));
}
