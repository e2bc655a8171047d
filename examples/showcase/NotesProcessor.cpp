// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "NotesProcessor.h"

#include "NoteJson.h"
#include "NoteStore.h"
#include "Replies.h"
#include "fcgi/BwaFcgiRequest.h"
#include "http/BwaHttp201StatusJsonHeader.h"
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
        QJsonArray array;
        const QList<Note> notes = m_store->notes(session->username());
        for (const Note& note : notes) {
            array.append(noteToJson(note));
        }
        sendJson(request, array);
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

void NotesProcessor::create(BwaFcgiRequest* request, const QString& user)
{
    Note note;
    if (!readNote(request, note)) {
        return;
    }
    m_store->create(user, note);
    const QString location = request->fullPath() + QStringLiteral("/%1").arg(note.id);
    request->out() << BwaHttp201StatusJsonHeader(QStringLiteral("utf-8"), location);
    writeJson(request, noteToJson(note));
}
