// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef NOTESPROCESSOR_H
#define NOTESPROCESSOR_H

#include "services/BwaStandardFcgiRequestProcessor.h"

class NoteStore;

/**
 * The notes of the user who is logged in: GET lists 200 of them at most, those behind the note of
 * the id that the variable "after" holds or the first ones; POST creates one, or answers 409 when
 * the user has 1000.
 */
class NotesProcessor : public BwaStandardFcgiRequestProcessor
{
public:
    /** Neither is owned; both must outlive this. */
    NotesProcessor(BwaAbstractFcgiSessionIdentifier* identifier, NoteStore* store);

protected:
    void processGetMethod(BwaFcgiRequest* request) override;
    void processPostMethod(BwaFcgiRequest* request) override;

private:
    void list(BwaFcgiRequest* request, const QString& user);
    void create(BwaFcgiRequest* request, const QString& user);

    NoteStore* m_store;
};

#endif
