// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef REPLIES_H
#define REPLIES_H

#include <QHash>
#include <QString>
#include <QVariantMap>

#include <functional>

class BwaFcgiRequest;
class QJsonObject;
class QJsonValue;

/*
 * What the processors share. None of these deletes the request, but finishKept().
 */

/** Decodes the UTF-8 that browsers put into variables, names and cookies. */
QString fromUtf8Wire(const QString& text);

/** Multipart forms bring their names as text; everywhere else they are UTF-8 still. */
enum class VariableNames { Utf8, Text };

/** An array of values for each name, in the order of their arrival; takes linear time. */
QJsonObject variablesToJson(const QMultiHash<QString, QString>& variables,
                            VariableNames encoding = VariableNames::Utf8);

/** The id that @a text is, written as this API writes it; 0, which nothing has, for others. */
qint64 parseId(const QString& text);

/** Answers 200 with @a value, an object or an array. */
void sendJson(BwaFcgiRequest* request, const QJsonValue& value);
/** Writes @a value alone, for replies with a header of their own. */
void writeJson(BwaFcgiRequest* request, const QJsonValue& value);

/**
 * Reads the body of a form of exactly @a mediaType; false when a refusal was sent instead. An
 * urlencoded form may have 64 KiB, a multipart form what the listener allows.
 */
bool readForm(BwaFcgiRequest* request, const char* mediaType);
/** Reads a body of 64 KiB at most, a JSON object; false when a refusal was sent instead. */
bool readJsonObject(BwaFcgiRequest* request, QVariantMap& object);

/**
 * For a request that was kept to be answered later: calls @a answer and deletes @a request. The
 * library no longer catches for it, and an exception would end the process: a std::exception is
 * logged and answered with 500 here.
 */
void finishKept(BwaFcgiRequest* request, const std::function<void()>& answer);

#endif
