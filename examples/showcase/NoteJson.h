// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef NOTEJSON_H
#define NOTEJSON_H

class BwaFcgiRequest;
class QJsonObject;
struct Note;

QJsonObject noteToJson(const Note& note);

/**
 * Reads a body {"title": text, "text": text}, of 200 and 5000 characters at most; the text may be
 * missing.
 *
 * @return false when a refusal was sent instead; @a note is then to be forgotten
 */
bool readNote(BwaFcgiRequest* request, Note& note);

#endif
