// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// A header value: the parser agrees with its literal model.

#include "Fuzzing.h"
#include "Texts.h"
#include "cgi/BwaCgiRequest.h"
#include "support/LiteralHeaderValue.h"
#include "support/QtPrinters.h"
#include "support/ShownText.h"

#include <gtest/gtest.h>

void fuzz(const QByteArray& input)
{
    for (const QString& text : textsOf(input)) {
        const auto expected = literalHeaderValue(text);

        EXPECT_EQ(shownElements(BwaCgiRequest::parseGenericHeader(text)), shownElements(expected));
        EXPECT_EQ(shownElement(BwaCgiEnvironment::parseContentType(text)),
                  shownElement(expected.first()));
    }
}
