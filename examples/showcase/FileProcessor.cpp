// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "FileProcessor.h"

#include "fcgi/BwaFcgiRequest.h"

FileProcessor::FileProcessor(const QString& folder)
    : BwaStandardFcgiRequestProcessor(nullptr)
    , m_folder(folder)
{
}

// The name of the file is ours: a path must never be made of what the client sent.
void FileProcessor::processGetMethod(BwaFcgiRequest* request)
{
    request->sendStaticFile(m_folder + QStringLiteral("/welcome.txt"), QStringLiteral("text/plain"),
                            QList<BwaHttpCookie>());
    delete request;
}
