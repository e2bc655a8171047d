// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef NOTEPROCESSOR_H
#define NOTEPROCESSOR_H

#include "services/BwaStandardFcgiRequestProcessor.h"

class BwaAbstractFcgiService;
class NoteStore;

/** One note of the user who is logged in, by its id behind the service's path. */
class NoteProcessor : public BwaStandardFcgiRequestProcessor
{
public:
    /** None is owned; all must outlive this. */
    NoteProcessor(BwaAbstractFcgiSessionIdentifier* identifier, NoteStore* store,
                  const BwaAbstractFcgiService* service);

protected:
    void processGetMethod(BwaFcgiRequest* request) override;
    void processPutMethod(BwaFcgiRequest* request) override;
    void processDeleteMethod(BwaFcgiRequest* request) override;

private:
    void read(BwaFcgiRequest* request, const QString& user);
    void change(BwaFcgiRequest* request, const QString& user);
    void remove(BwaFcgiRequest* request, const QString& user);
    qint64 noteId(BwaFcgiRequest* request) const;

    NoteStore* m_store;
    const BwaAbstractFcgiService* m_service;
};

#endif
