// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "Replies.h"

#include "ReplyHeader.h"
#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiRequest.h"
#include "services/BwaAbstractFcgiRequestProcessor.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>
#include <QStringList>

#include <exception>
#include <ostream>

namespace {

constexpr unsigned int mostBytes = 64 * 1024; // of a body that holds no files

bool isTooLarge(BwaFcgiRequest* request)
{
    if (request->cgiRequest()->environment().contentLength() <= mostBytes) {
        return false;
    }
    request->sendHttpError(BwaFcgiRequest::PayloadTooLarge);
    return true;
}

const char* reasonOf(BwaCgiRequest::BodyFailure failure)
{
    switch (failure) {
    case BwaCgiRequest::BodyFailure::TooLarge:
        return "it is too large";
    case BwaCgiRequest::BodyFailure::TooManyFormFields:
        return "it has too many fields";
    case BwaCgiRequest::BodyFailure::TooManyParts:
        return "it has too many parts";
    case BwaCgiRequest::BodyFailure::NotClosed:
        return "its last boundary is missing";
    case BwaCgiRequest::BodyFailure::EndedEarly:
        return "it ended early";
    default:
        return "there is no memory for it";
    }
}

// The log says why; the client learns whether the body was beyond a limit.
void refuseBody(BwaFcgiRequest* request)
{
    using Failure = BwaCgiRequest::BodyFailure;
    const Failure failure = request->cgiRequest()->bodyFailure();
    const bool isBeyondLimit = failure == Failure::TooLarge ||
        failure == Failure::TooManyFormFields || failure == Failure::TooManyParts;
    request->err() << "A body was refused: " << reasonOf(failure);
    request->sendHttpError(isBeyondLimit ? BwaFcgiRequest::PayloadTooLarge
                                         : BwaFcgiRequest::BadRequest);
}

} // namespace

QString fromUtf8Wire(const QString& text)
{
    return QString::fromUtf8(text.toLatin1());
}

QJsonObject variablesToJson(const QMultiHash<QString, QString>& variables, VariableNames encoding)
{
    QMap<QString, QStringList> valuesByName;
    for (auto latest = variables.constBegin(); latest != variables.constEnd(); ++latest) {
        const QString& name = latest.key();
        valuesByName[encoding == VariableNames::Utf8 ? fromUtf8Wire(name) : name].prepend(
            fromUtf8Wire(latest.value()));
    }
    QJsonObject object;
    for (auto values = valuesByName.constBegin(); values != valuesByName.constEnd(); ++values) {
        // Not prepended to the array: that would move all its elements, each time.
        object.insert(values.key(), QJsonArray::fromStringList(values.value()));
    }
    return object;
}

// "+1" and "01" are numbers as well, but a resource has one address.
qint64 parseId(const QString& text)
{
    const qint64 id = text.toLongLong();
    return QString::number(id) == text ? id : 0;
}

void sendJson(BwaFcgiRequest* request, const QJsonValue& value)
{
    request->out() << ReplyHeader(QStringLiteral("application/json; charset=utf-8"));
    writeJson(request, value);
}

void writeJson(BwaFcgiRequest* request, const QJsonValue& value)
{
    const QJsonDocument document =
        value.isArray() ? QJsonDocument(value.toArray()) : QJsonDocument(value.toObject());
    const QByteArray text = document.toJson(QJsonDocument::Compact) + '\n';
    request->out().write(text.constData(), text.size());
}

bool readForm(BwaFcgiRequest* request, const char* mediaType)
{
    const QString type = BwaAbstractFcgiRequestProcessor::parseContentType(request).first;
    if (type.compare(QLatin1String(mediaType), Qt::CaseInsensitive) != 0) {
        request->sendHttpError(BwaFcgiRequest::UnsupportedMediaType);
        return false;
    }
    const bool holdsFiles = qstrcmp(mediaType, "multipart/form-data") == 0;
    if (!holdsFiles && isTooLarge(request)) {
        return false;
    }
    if (!request->cgiRequest()->processBodyContent()) {
        refuseBody(request);
        return false;
    }
    return true;
}

bool readJsonObject(BwaFcgiRequest* request, QVariantMap& object)
{
    const BwaCgiRequest* cgiRequest = request->cgiRequest();
    if (cgiRequest->environment().contentLength() == 0) {
        request->sendHttpError(BwaFcgiRequest::BadRequest);
        return false;
    }
    if (isTooLarge(request)) {
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

void finishKept(BwaFcgiRequest* request, const std::function<void()>& answer)
{
    try {
        answer();
    } catch (const std::exception& error) {
        request->err() << "Error in an answer that came later: " << error.what();
        request->sendHttpError(BwaFcgiRequest::InternalServerError);
    }
    delete request;
}
