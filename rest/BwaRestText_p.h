// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWARESTTEXT_P_H
#define BWARESTTEXT_P_H

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QString>

/** Decodes texts of requests and encodes texts of replies. */
namespace BwaRestText {

/** @a bytes decoded from UTF-8; never null. @throws BwaRestProblem 400 when they are not UTF-8 */
QString fromUtf8(const QByteArray& bytes);
/**
 * The same for bytes that are in a QString, each as one Latin-1 character, as CGI variables are.
 */
QString fromUtf8(const QString& bytes);
/**
 * The pairs of a query string or form in their order (application/x-www-form-urlencoded); a name
 * without "=" has an empty value. @throws BwaRestProblem 400 when the text is not UTF-8
 */
QList<QPair<QString, QString>> urlEncodedPairs(const QString& text);
/** Whether @a name can be the name of a header (RFC 9110, section 5.1). */
bool isToken(const QByteArray& name);
/** Whether @a value can be the value of a header: it has no CR, LF or NUL. */
bool isHeaderValue(const QByteArray& value);
/** @a tag in quotes; bytes that no entity tag may contain are percent-encoded (RFC 9110, 8.8.3). */
QByteArray entityTag(const QByteArray& tag);
/** Whether @a list, as in If-None-Match, contains @a tag, strong or weak, or is "*". */
bool listHasEntityTag(const QByteArray& list, const QByteArray& tag);
/** @a path percent-encoded, as the path of a URL. */
QByteArray encodedPath(const QString& path);
/** @a url; characters that no URL may contain are percent-encoded. */
QByteArray encodedUrl(const QString& url);

} // namespace BwaRestText

#endif
