// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "AssetProcessor.h"

#include "ReplyHeader.h"
#include "fcgi/BwaFcgiRequest.h"

#include <QFile>

#include <stdexcept>

AssetProcessor::AssetProcessor(const QString& fileName, const QString& contentType)
    : BwaStandardFcgiRequestProcessor(nullptr)
    , m_contentType(contentType)
{
    QFile file(QStringLiteral(":/page/") + fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        throw std::runtime_error("no such file of the page: " + fileName.toStdString());
    }
    m_content = file.readAll();
}

void AssetProcessor::processGetMethod(BwaFcgiRequest* request)
{
    request->out() << ReplyHeader(m_contentType, ReplyHeader::Copies::CheckedBeforeUse);
    request->out().write(m_content.constData(), m_content.size());
    delete request;
}
