// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// A query string or form body: decoding and splitting agree with their literal model.

#include "Fuzzing.h"
#include "Texts.h"
#include "cgi/BwaCgiRequest.h"
#include "support/LiteralUrlEncoding.h"
#include "support/QtPrinters.h"
#include "support/ShownText.h"

#include <gtest/gtest.h>

void fuzz(const QByteArray& input)
{
    for (const QString& text : textsOf(input)) {
        EXPECT_EQ(shown(BwaCgiRequest::urlDecode(text)), shown(literalUrlDecode(text)));
        EXPECT_EQ(shownVariables(BwaCgiRequest::parseUrlEncodedVariables(text)),
                  shownVariables(literalUrlEncodedVariables(text)));
    }
}
