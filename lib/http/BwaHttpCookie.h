// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAHTTPCOOKIE_H
#define BWAHTTPCOOKIE_H

#include "http/BwaAbstractCgiStreamableElement.h"

#include <QString>

/**
 * A cookie: one that a request brought, or one to be set by a reply.
 *
 * Nothing is quoted, escaped or checked. A value that comes from outside must not hold ";", CR or
 * LF (RFC 6265, section 4.1.1).
 */
class BWA_EXPORT BwaHttpCookie : public BwaAbstractCgiStreamableElement
{
public:
    /** A session cookie with a null name and a null value. */
    BwaHttpCookie();
    /** A session cookie: no lifetime, domain or path, neither secure nor httpOnly. */
    BwaHttpCookie(const QString& name, const QString& value);
    /** A cookie with all its attributes, not expired; @a maxAge in seconds. */
    BwaHttpCookie(const QString& name, const QString& value, unsigned int maxAge,
                  const QString& domain, const QString& path, bool secure, bool httpOnly);
    ~BwaHttpCookie() override;

    BwaHttpCookie(const BwaHttpCookie&) = default;
    BwaHttpCookie& operator=(const BwaHttpCookie&) = default;

    /** Writes the "Set-Cookie:" line without its line end. */
    void render(std::ostream& stream) const override;

    QString name;        /**< Written unchanged. */
    QString value;       /**< Written unchanged. */
    unsigned int maxAge; /**< Lifetime in seconds; 0 writes no lifetime. */
    QString domain;      /**< Null writes no domain; an empty text writes an empty one. */
    QString path;        /**< Null writes no path; an empty text writes an empty one. */
    bool secure;         /**< For encrypted connections only. */
    bool httpOnly;       /**< Scripts of a page cannot read it. */
    bool expired;        /**< Makes the client delete the cookie; maxAge is then not written. */
};

#endif
