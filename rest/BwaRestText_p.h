// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWARESTTEXT_P_H
#define BWARESTTEXT_P_H

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QString>

/** How texts are written in requests and replies. */
namespace BwaRestText {

/** The text that @a bytes are in UTF-8; never null. @throws BwaRestProblem 400: they are none */
QString fromUtf8(const QByteArray& bytes);
/** The same for bytes that came as Latin-1 characters, one a byte, as those of CGI variables. */
QString fromUtf8(const QString& bytes);
/**
 * The pairs of a query string or form in their order (application/x-www-form-urlencoded); a name
 * without "=" has an empty value. @throws BwaRestProblem 400: not UTF-8
 */
QList<QPair<QString, QString>> urlEncodedPairs(const QString& text);
/** A name of headers (RFC 9110, section 5.1). */
bool isToken(const QByteArray& name);
/** May stand in a header: without CR, LF and NUL. */
bool isHeaderValue(const QByteArray& value);
/** @a tag in quotes, percent-encoded where no entity tag may hold its bytes (RFC 9110, 8.8.3). */
QByteArray entityTag(const QByteArray& tag);
/** A list such as If-None-Match holds @a tag, be it strong or weak, or is "*". */
bool listHasEntityTag(const QByteArray& list, const QByteArray& tag);
/** @a path as part of a URL. */
QByteArray encodedPath(const QString& path);
/** @a url with percent escapes in place of what no URL may hold. */
QByteArray encodedUrl(const QString& url);

} // namespace BwaRestText

#endif
