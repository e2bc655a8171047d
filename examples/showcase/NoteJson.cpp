// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "NoteJson.h"

#include "NoteStore.h"
#include "Replies.h"
#include "fcgi/BwaFcgiRequest.h"
#include "json/BwaJsonUtilities.h"

#include <QJsonObject>

namespace {

// In characters; the page knows them, too.
constexpr int longestTitle = 200;
constexpr int longestText = 5000;

} // namespace

QJsonObject noteToJson(const Note& note)
{
    return QJsonObject{{QStringLiteral("id"), note.id},
                       {QStringLiteral("text"), note.text},
                       {QStringLiteral("title"), note.title}};
}

bool readNote(BwaFcgiRequest* request, Note& note)
{
    QVariantMap object;
    if (!readJsonObject(request, object)) {
        return false;
    }
    if (!BwaJsonUtilities::stringValue(object, QStringLiteral("title"), note.title) ||
        !BwaJsonUtilities::stringValue(object, QStringLiteral("text"), note.text,
                                       QStringLiteral("")) ||
        note.title.size() > longestTitle || note.text.size() > longestText) {
        request->sendHttpError(BwaFcgiRequest::BadRequest);
        return false;
    }
    return true;
}
