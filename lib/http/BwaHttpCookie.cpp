// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "http/BwaHttpCookie.h"

#include "BwaStringStreaming.h"

#include <ostream>

BwaHttpCookie::BwaHttpCookie()
    : BwaHttpCookie(QString(), QString())
{
}

BwaHttpCookie::BwaHttpCookie(const QString& name, const QString& value)
    : BwaHttpCookie(name, value, 0, QString(), QString(), false, false)
{
}

BwaHttpCookie::BwaHttpCookie(const QString& name, const QString& value, unsigned int maxAge,
                             const QString& domain, const QString& path, bool secure, bool httpOnly)
    : name(name)
    , value(value)
    , maxAge(maxAge)
    , domain(domain)
    , path(path)
    , secure(secure)
    , httpOnly(httpOnly)
    , expired(false)
{
}

BwaHttpCookie::~BwaHttpCookie() = default;

void BwaHttpCookie::render(std::ostream& stream) const
{
    // Settled: no blank after the colon.
    stream << "Set-Cookie:" << name << '=' << value;
    if (expired) {
        // Settled: the text ends in a semicolon of its own, so a path or domain follows ";;".
        stream << "; Expires=Fri, 01-Jan-1971 01:00:00 GMT;";
    } else if (maxAge != 0) {
        stream << "; Max-Age=" << QString::number(maxAge);
    }
    if (!domain.isNull()) {
        stream << "; Domain=" << domain;
    }
    if (!path.isNull()) {
        stream << "; Path=" << path;
    }
    if (secure) {
        stream << "; Secure";
    }
    if (httpOnly) {
        stream << "; HttpOnly";
    }
}
