// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "Replies.h"

#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiRequest.h"
#include "http/BwaHttpJsonHeader.h"
#include "services/BwaAbstractFcgiRequestProcessor.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

QString fromUtf8Wire(const QString& text)
{
    return QString::fromUtf8(text.toLatin1());
}

QJsonObject variablesToJson(const QMultiHash<QString, QString>& variables, VariableNames encoding)
{
    QJsonObject object;
    const QList<QString> names = variables.uniqueKeys();
    for (const QString& name : names) {
        QJsonArray values;
        const QList<QString> latestFirst = variables.values(name);
        for (const QString& value : latestFirst) {
            values.prepend(fromUtf8Wire(value));
        }
        object.insert(encoding == VariableNames::Utf8 ? fromUtf8Wire(name) : name, values);
    }
    return object;
}

void sendJson(BwaFcgiRequest* request, const QJsonValue& value)
{
    request->out() << BwaHttpJsonHeader(QStringLiteral("utf-8"));
    writeJson(request, value);
}

void writeJson(BwaFcgiRequest* request, const QJsonValue& value)
{
    const QJsonDocument document =
        value.isArray() ? QJsonDocument(value.toArray()) : QJsonDocument(value.toObject());
    const QByteArray text = document.toJson(QJsonDocument::Compact) + '\n';
    request->out().write(text.constData(), text.size());
}

bool readJsonObject(BwaFcgiRequest* request, QVariantMap& object)
{
    const BwaCgiRequest* cgiRequest = request->cgiRequest();
    if (cgiRequest->environment().contentLength() == 0) {
        request->sendHttpError(BwaFcgiRequest::BadRequest);
        return false;
    }
    bool ok = false;
    const QVariant body = BwaAbstractFcgiRequestProcessor::parseJsonContent(request, &ok);
    if (ok && body.userType() == QMetaType::QVariantMap) {
        object = body.toMap();
        return true;
    }
    // A wrong media type and a short body have been answered; the body is then still empty.
    if (!cgiRequest->body().isEmpty()) {
        request->sendHttpError(BwaFcgiRequest::BadRequest);
    }
    return false;
}
