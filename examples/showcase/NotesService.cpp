// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "NotesService.h"

#include "NotesProcessor.h"
#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiRequest.h"

NotesService::NotesService(BwaAbstractFcgiSessionIdentifier* identifier, NoteStore* store)
    : BwaStandardProcessableDispatcherFcgiService(new NotesProcessor(identifier, store))
    , m_note(identifier, store, this)
{
}

void NotesService::processRequest(BwaFcgiRequest* request)
{
    if (request->cgiRequest()->environment().pathInfo() == servicePath()) {
        processThisService(request);
    } else {
        m_note.processRequest(request);
    }
}
