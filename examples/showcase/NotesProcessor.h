// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef NOTESPROCESSOR_H
#define NOTESPROCESSOR_H

#include "services/BwaStandardFcgiRequestProcessor.h"

class NoteStore;

/** All notes of the user who is logged in: GET lists them, POST creates one. */
class NotesProcessor : public BwaStandardFcgiRequestProcessor
{
public:
    /** Neither is owned; both must outlive this. */
    NotesProcessor(BwaAbstractFcgiSessionIdentifier* identifier, NoteStore* store);

protected:
    void processGetMethod(BwaFcgiRequest* request) override;
    void processPostMethod(BwaFcgiRequest* request) override;

private:
    void create(BwaFcgiRequest* request, const QString& user);

    NoteStore* m_store;
};

#endif
