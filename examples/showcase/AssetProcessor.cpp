// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "AssetProcessor.h"

#include "fcgi/BwaFcgiRequest.h"
#include "http/BwaHttpContentHeader.h"

#include <QFile>

#include <stdexcept>

namespace {

// A header block of an own kind. The page loads what comes from this API and nothing else: a script
// that somebody managed to write into it would not run, and no other page can frame it.
class AssetHeader : public BwaHttpContentHeader
{
public:
    using BwaHttpContentHeader::BwaHttpContentHeader;

    void render(std::ostream& stream) const override
    {
        renderContentType(stream);
        stream << "Content-Security-Policy: default-src 'none'; connect-src 'self'; "
                  "img-src 'self'; script-src 'self'; style-src 'self'; base-uri 'none'; "
                  "form-action 'none'; frame-ancestors 'none'\n"
                  "X-Content-Type-Options: nosniff\n"
                  "Referrer-Policy: no-referrer\n"
                  "Cache-Control: no-cache\n\n";
    }
};

} // namespace

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
    request->out() << AssetHeader(m_contentType);
    request->out().write(m_content.constData(), m_content.size());
    delete request;
}
