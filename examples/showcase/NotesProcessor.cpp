// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "NotesProcessor.h"

#include "NoteJson.h"
#include "NoteStore.h"
#include "Replies.h"
#include "ReplyHeader.h"
#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiRequest.h"
#include "sessions/BwaWebSession.h"

#include <QJsonArray>
#include <QJsonObject>

NotesProcessor::NotesProcessor(BwaAbstractFcgiSessionIdentifier* identifier, NoteStore* store)
    : BwaStandardFcgiRequestProcessor(identifier)
    , m_store(store)
{
}

void NotesProcessor::processGetMethod(BwaFcgiRequest* request)
{
    if (const BwaWebSession* session = authenticateRequest(request)) {
        list(request, session->username());
    }
    delete request;
}

void NotesProcessor::processPostMethod(BwaFcgiRequest* request)
{
    if (const BwaWebSession* session = authenticateRequest(request)) {
        create(request, session->username());
    }
    delete request;
}

void NotesProcessor::list(BwaFcgiRequest* request, const QString& user)
{
    const QString after =
        request->cgiRequest()->queryVariables().value(QStringLiteral("after"), QStringLiteral("0"));
    const qint64 id = parseId(after);
    if (id == 0 && after != QLatin1String("0")) {
        request->sendHttpError(BwaFcgiRequest::BadRequest);
        return;
    }
    QJsonArray array;
    const QList<Note> notes = m_store->notes(user, id);
    for (const Note& note : notes) {
        array.append(noteToJson(note));
    }
    sendJson(request, array);
}

void NotesProcessor::create(BwaFcgiRequest* request, const QString& user)
{
    Note note;
    if (!readNote(request, note)) {
        return;
    }
    if (!m_store->create(user, note)) {
        request->sendHttpError(BwaFcgiRequest::Conflict);
        return;
    }
    const QString location = request->fullPath() + QStringLiteral("/%1").arg(note.id);
    request->out() << ReplyHeader::created(location);
    writeJson(request, noteToJson(note));
}
