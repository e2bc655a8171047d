// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef NOTESSERVICE_H
#define NOTESSERVICE_H

#include "NoteProcessor.h"
#include "services/BwaStandardProcessableDispatcherFcgiService.h"

/**
 * Serves the list of notes at its own path and every note at a path below it. A dispatcher looks
 * for children by name; notes have no names, so everything below goes to one processor.
 */
class NotesService : public BwaStandardProcessableDispatcherFcgiService
{
public:
    /** Neither is owned; both must outlive this. */
    NotesService(BwaAbstractFcgiSessionIdentifier* identifier, NoteStore* store);

    void processRequest(BwaFcgiRequest* request) override;

private:
    NoteProcessor m_note;
};

#endif
