// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// Base64 and hexadecimal strings: the verdict is that of a regular expression, the bytes are those
// that Qt decodes, and a refusal leaves the output untouched.

#include "Fuzzing.h"
#include "Texts.h"
#include "support/JsonExtraction.h"
#include "support/QtPrinters.h"

#include <QRegExp>

#include <gtest/gtest.h>

namespace {

// What all three forms of the extractor must make of @a text.
std::string expected(const QString& pattern, const QString& text, const QByteArray& decoded)
{
    return QRegExp(pattern).exactMatch(text) ? textOf(decoded) : "refused";
}

} // namespace

void fuzz(const QByteArray& input)
{
    const QString base64 =
        QStringLiteral("(?:[A-Za-z0-9+/]{4})*(?:[A-Za-z0-9+/]{2}==|[A-Za-z0-9+/]{3}=)?");
    const QString hex = QStringLiteral("(?:[0-9A-Fa-f]{2})*");
    for (const QString& text : textsOf(input)) {
        EXPECT_EQ(extracted(base64Extractor, text),
                  expected(base64, text, QByteArray::fromBase64(text.toLatin1())));
        EXPECT_EQ(extracted(hexExtractor, text),
                  expected(hex, text, QByteArray::fromHex(text.toLatin1())));
    }
}
