// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef ASSETPROCESSOR_H
#define ASSETPROCESSOR_H

#include "services/BwaStandardFcgiRequestProcessor.h"

#include <QByteArray>

/** GET: a file of the web page, which is compiled into the program. */
class AssetProcessor : public BwaStandardFcgiRequestProcessor
{
public:
    /** Throws std::runtime_error when page.qrc names no such file. */
    AssetProcessor(const QString& fileName, const QString& contentType);

protected:
    void processGetMethod(BwaFcgiRequest* request) override;

private:
    QString m_contentType;
    QByteArray m_content;
};

#endif
