// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// Parses a Cookie header. The list of cookies equals that of a literal model; name and value of a
// single cookie, joined again, give its text.

#include "Fuzzing.h"
#include "Texts.h"
#include "cgi/BwaCgiEnvironment.h"
#include "support/QtPrinters.h"
#include "support/ShownText.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string shownCookie(const QString& name, const QString& value)
{
    return "[" + shown(name) + "|" + shown(value) + "]";
}

std::string literalCookies(const QString& text)
{
    std::string cookies;
    const QStringList parts = text.split(QStringLiteral("; "));
    for (const QString& part : parts) {
        const int equals = part.indexOf(QLatin1Char('='));
        const QString name = part.left(std::max(0, equals));
        const QString value = part.right(part.size() - equals - 1);
        if (!name.isEmpty() || !value.isEmpty()) {
            cookies += shownCookie(name, value);
        }
    }
    return cookies;
}

} // namespace

void fuzz(const QByteArray& input)
{
    for (const QString& text : textsOf(input)) {
        std::string cookies;
        for (const BwaHttpCookie& cookie : BwaCgiEnvironment::parseCookies(text)) {
            cookies += shownCookie(cookie.name, cookie.value);
        }
        EXPECT_EQ(cookies, literalCookies(text));

        const BwaHttpCookie whole = BwaCgiEnvironment::parseCookie(text);
        const bool hasName = text.contains(QLatin1Char('='));
        EXPECT_EQ(hasName ? whole.name + QLatin1Char('=') + whole.value : whole.value, text);
        EXPECT_FALSE(whole.name.contains(QLatin1Char('=')));
    }
}
