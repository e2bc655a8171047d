// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "BwaStringStreaming.h"

#include "support/FailingStreams.h"
#include "support/Rendered.h"
#include "support/RenderedWithFlushes.h"

#include <QString>

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace {

struct TextCase {
    const char* name;
    QString text;
    std::string expected;
};

void PrintTo(const TextCase& testCase, std::ostream* stream)
{
    *stream << testCase.name;
}

class StreamString : public testing::TestWithParam<TextCase>
{
};

QString everyLatin1Character()
{
    QString text;
    for (int code = 1; code < 256; ++code) {
        text.append(QLatin1Char(static_cast<char>(code)));
    }
    return text;
}

std::string everyByte()
{
    std::string bytes;
    for (int code = 1; code < 256; ++code) {
        bytes.push_back(static_cast<char>(code));
    }
    return bytes;
}

} // namespace

TEST_P(StreamString, WritesExactlyTheseBytesAndNeverFlushes)
{
    EXPECT_EQ(renderedWithFlushes(GetParam().text), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, StreamString,
    testing::Values(
        TextCase{"Plain", QStringLiteral("text"), "text"}, TextCase{"Null", QString(), ""},
        TextCase{"Empty", QLatin1String(""), ""},
        TextCase{"EveryLatin1Character", everyLatin1Character(), everyByte()},
        TextCase{"NulInside", QString::fromLatin1("a\0b", 3), "a"},
        TextCase{"NulInFront", QString::fromLatin1("\0b", 2), ""},
        TextCase{"NulAtTheEnd", QString::fromLatin1("a\0", 2), "a"},
        TextCase{"BeyondLatin1", QStringLiteral("\u0100\u20ac\u0142"), "???"},
        TextCase{"SurrogatePair", QStringLiteral("a\U0001f600b"), "a??b"},
        TextCase{"LoneSurrogate", QString(QChar(0xd800)), "?"},
        TextCase{"LowByteOfNulIsNoNul", QString(QChar(0x0100)) + QLatin1Char('x'), "?x"},
        TextCase{"LineEndsPassThrough", QStringLiteral("a\r\nb\n"), "a\r\nb\n"},
        TextCase{"LongText", QString(100000, QLatin1Char('x')), std::string(100000, 'x')}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(BwaStringStreaming, WhenStreamedReturnsTheSameStream)
{
    std::ostringstream stream;

    std::ostream& returned = stream << QStringLiteral("a");

    EXPECT_EQ(&returned, &stream);
}

TEST(BwaStringStreaming, GivenNullLeavesTheStreamGood)
{
    std::ostringstream stream;

    stream << QString() << "b" << QStringLiteral("c");

    EXPECT_TRUE(stream.good());
    EXPECT_EQ(stream.str(), "bc");
}

TEST(BwaStringStreaming, GivenNulCutsThatTextOnly)
{
    std::ostringstream stream;

    stream << QString::fromLatin1("a\0b", 3) << QStringLiteral("c");

    EXPECT_EQ(stream.str(), "ac");
}

TEST(BwaStringStreaming, GivenFailedStreamLeavesItFailedAndWritesNothing)
{
    std::ostringstream stream = failedStream();

    stream << QStringLiteral("a");

    EXPECT_EQ(stream.rdstate(), std::ios_base::failbit);
    EXPECT_EQ(stream.str(), "");
}

TEST(BwaStringStreaming, GivenStreamThatBreaksLeavesItBad)
{
    BreakingBuffer buffer(2);
    std::ostream stream(&buffer);

    stream << QStringLiteral("abc");

    EXPECT_TRUE(stream.bad());
    EXPECT_EQ(buffer.text, "ab");
}
