// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef FILEPROCESSOR_H
#define FILEPROCESSOR_H

#include "services/BwaStandardFcgiRequestProcessor.h"

#include <QString>

/** GET: a file that the front server sends itself (X-Sendfile). */
class FileProcessor : public BwaStandardFcgiRequestProcessor
{
public:
    /** @a folder is absolute, and the front server may send what is in it. */
    explicit FileProcessor(const QString& folder);

protected:
    void processGetMethod(BwaFcgiRequest* request) override;

private:
    QString m_folder;
};

#endif
