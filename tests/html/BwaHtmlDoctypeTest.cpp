// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "html/BwaHtmlDoctype.h"

#include "support/FailingStreams.h"
#include "support/RenderedWithFlushes.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <type_traits>

namespace {

struct DoctypeCase {
    const char* name;
    BwaHtmlDoctype::DocumentType documentType;
    int value;
    const char* expected;
};

void PrintTo(const DoctypeCase& testCase, std::ostream* stream)
{
    *stream << testCase.name;
}

class RenderDoctype : public testing::TestWithParam<DoctypeCase>
{
};

} // namespace

TEST_P(RenderDoctype, WritesExactlyTheseBytesAndNeverFlushes)
{
    EXPECT_EQ(renderedWithFlushes(BwaHtmlDoctype(GetParam().documentType)), GetParam().expected);
}

TEST_P(RenderDoctype, HasThisValueInTheEnumeration)
{
    EXPECT_EQ(static_cast<int>(GetParam().documentType), GetParam().value);
}

TEST_P(RenderDoctype, KeepsItsType)
{
    EXPECT_EQ(BwaHtmlDoctype(GetParam().documentType).documentType(), GetParam().documentType);
}

INSTANTIATE_TEST_SUITE_P(
    Members, RenderDoctype,
    testing::Values(DoctypeCase{"Html401Strict", BwaHtmlDoctype::Html401Strict, 0,
                                "<!DOCTYPE HTML PUBLIC \"-//W3C//DTD HTML 4.01//EN\""
                                " \"http://www.w3.org/TR/html4/strict.dtd\">"},
                    DoctypeCase{"Html401Transitional", BwaHtmlDoctype::Html401Transitional, 1,
                                "<!DOCTYPE HTML PUBLIC \"-//W3C//DTD HTML 4.01 Transitional//EN\""
                                " \"http://www.w3.org/TR/html4/loose.dtd\">"},
                    DoctypeCase{"Html401Frameset", BwaHtmlDoctype::Html401Frameset, 2,
                                "<!DOCTYPE HTML PUBLIC \"-//W3C//DTD HTML 4.01 Frameset//EN\""
                                " \"http://www.w3.org/TR/html4/frameset.dtd\">"},
                    DoctypeCase{"Xhtml10Strict", BwaHtmlDoctype::Xhtml10Strict, 3,
                                "<!DOCTYPE html PUBLIC \"-//W3C//DTD XHTML 1.0 Strict//EN\""
                                " \"http://www.w3.org/TR/xhtml1/DTD/xhtml1-strict.dtd\">"},
                    DoctypeCase{"Xhtml10TransitionalKeepsItsPath",
                                BwaHtmlDoctype::Xhtml10Transitional, 4,
                                "<!DOCTYPE html PUBLIC \"-//W3C//DTD XHTML 1.0 Transitional//EN\""
                                " \"http://www.w3.org/TR/xhtml1/DTD/xhtml1-loose.dtd\">"},
                    DoctypeCase{"Xhtml10FramesetKeepsItsPath", BwaHtmlDoctype::Xhtml10Frameset, 5,
                                "<!DOCTYPE html PUBLIC \"-//W3C//DTD XHTML 1.0 Frameset//EN\""
                                " \"http://www.w3.org/TR/xhtml1/DTD/html1-frameset.dtd\">"},
                    DoctypeCase{"Xhtml11KeepsItsPath", BwaHtmlDoctype::Xhtml11, 6,
                                "<!DOCTYPE html PUBLIC \"-//W3C//DTD XHTML 1.1//EN\""
                                " \"http://www.w3.org/TR/xhtml11/DTD/html11.dtd\">"},
                    DoctypeCase{"Html5", BwaHtmlDoctype::Html5, 7, "<!DOCTYPE html>"}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(BwaHtmlDoctype, GivenValuesOutsideTheEnumerationWritesNothing)
{
    for (const int value : {-2147483647 - 1, -1, 8, 255, 2147483647}) {
        std::ostringstream stream;

        stream << BwaHtmlDoctype(static_cast<BwaHtmlDoctype::DocumentType>(value));

        EXPECT_EQ(stream.str(), "") << value;
        EXPECT_TRUE(stream.good()) << value;
    }
}

TEST(BwaHtmlDoctype, CanOnlyBeMadeOfAType)
{
    EXPECT_FALSE(std::is_default_constructible_v<BwaHtmlDoctype>);
    EXPECT_TRUE((std::is_constructible_v<BwaHtmlDoctype, BwaHtmlDoctype::DocumentType>));
    EXPECT_TRUE((std::is_base_of_v<BwaAbstractCgiStreamableElement, BwaHtmlDoctype>));
}

TEST(BwaHtmlDoctype, WhenRenderedTwiceWritesTheSameBytesTwice)
{
    const BwaHtmlDoctype doctype(BwaHtmlDoctype::Html5);
    std::ostringstream stream;

    stream << doctype << doctype;

    EXPECT_EQ(stream.str(), "<!DOCTYPE html><!DOCTYPE html>");
}

TEST(BwaHtmlDoctype, GivenFailedStreamLeavesItFailedAndWritesNothing)
{
    std::ostringstream stream = failedStream();

    stream << BwaHtmlDoctype(BwaHtmlDoctype::Html5);

    EXPECT_TRUE(stream.fail());
    EXPECT_EQ(stream.str(), "");
}
