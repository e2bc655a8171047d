// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "UploadProcessor.h"

#include "Replies.h"
#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiRequest.h"

#include <QCryptographicHash>
#include <QJsonObject>

namespace {

QJsonObject fileToJson(const BwaCgiFile& file)
{
    const QByteArray digest = QCryptographicHash::hash(file.data(), QCryptographicHash::Sha256);
    return QJsonObject{{QStringLiteral("name"), file.fileName()},
                       {QStringLiteral("sha256"), QString::fromLatin1(digest.toHex())},
                       {QStringLiteral("size"), file.data().size()},
                       {QStringLiteral("type"), file.contentType()}};
}

QJsonObject uploadToJson(const BwaCgiRequest& received)
{
    QJsonObject files;
    const QHash<QString, BwaCgiFile> uploads = received.files();
    for (auto upload = uploads.constBegin(); upload != uploads.constEnd(); ++upload) {
        files.insert(upload.key(), fileToJson(upload.value()));
    }
    return QJsonObject{
        {QStringLiteral("fields"), variablesToJson(received.formVariables(), VariableNames::Text)},
        {QStringLiteral("files"), files}};
}

} // namespace

void UploadProcessor::processPostMethod(BwaFcgiRequest* request)
{
    if (readForm(request, "multipart/form-data")) {
        sendJson(request, uploadToJson(*request->cgiRequest()));
    }
    delete request;
}
