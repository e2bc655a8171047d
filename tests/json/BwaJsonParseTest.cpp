// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "json/BwaJson.h"
#include "support/JsonDescription.h"
#include "support/QtPrinters.h"
#include "support/RandomSource.h"

#include <QByteArray>
#include <QStringList>
#include <QVariant>

#include <gtest/gtest.h>

#include <ostream>
#include <string>

using namespace std::string_literals;

namespace {

std::string parsed(const std::string& text)
{
    bool ok = false;
    const QVariant value = BwaJson::parse(QByteArray::fromStdString(text), &ok);

    return ok ? description(value) : "refused";
}

// What leads to a member whose key its object has twice, in one text.
std::string repeatedIn(const char* text)
{
    QStringList repeated(QStringLiteral("of an earlier text"));
    BwaJson::parse(text, nullptr, &repeated);
    return repeated.join(QLatin1Char(' ')).toStdString();
}

// [[[core]]]
std::string nestedArrays(int depth, const std::string& core)
{
    return std::string(depth, '[') + core + std::string(depth, ']');
}

// {"a":{"a":{"a":core}}}
std::string nestedObjects(int depth, const std::string& core)
{
    std::string text;
    for (int i = 0; i < depth; ++i) {
        text += R"({"a":)";
    }
    return text + core + std::string(depth, '}');
}

struct ValueCase {
    std::string name;
    std::string text;
    std::string value; // as description() writes it
};

void PrintTo(const ValueCase& valueCase, std::ostream* stream)
{
    *stream << valueCase.name;
}

class ParseAccepted : public testing::TestWithParam<ValueCase>
{
};

struct RefusedCase {
    std::string name;
    std::string text;
};

void PrintTo(const RefusedCase& refusedCase, std::ostream* stream)
{
    *stream << refusedCase.name;
}

class ParseRefused : public testing::TestWithParam<RefusedCase>
{
};

const auto nameOf = [](const auto& info) { return info.param.name; };

} // namespace

TEST_P(ParseAccepted, GivesTypeAndValue)
{
    EXPECT_EQ(parsed(GetParam().text), GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(
    Scalars, ParseAccepted,
    testing::Values(ValueCase{"Null", "null", "invalid"}, ValueCase{"True", "true", "true"},
                    ValueCase{"False", "false", "false"}, ValueCase{"String", R"("x")", "string x"},
                    ValueCase{"Number", "3", "qulonglong 3"},
                    ValueCase{"BlanksAround", " \t\r\n3 \t\r\n", "qulonglong 3"}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Numbers, ParseAccepted,
    testing::Values(
        ValueCase{"Zero", "[0]", "[qulonglong 0]"},
        ValueCase{"Largest63Bit", "[9223372036854775807]", "[qulonglong 9223372036854775807]"},
        ValueCase{"Smallest64Bit", "[9223372036854775808]", "[qulonglong 9223372036854775808]"},
        ValueCase{"Largest64Bit", "[18446744073709551615]", "[qulonglong 18446744073709551615]"},
        ValueCase{"BeyondDoublePrecision", "[9007199254740993]", "[qulonglong 9007199254740993]"},
        ValueCase{"Negative", "[-3]", "[qlonglong -3]"},
        ValueCase{"MostNegative", "[-9223372036854775808]", "[qlonglong -9223372036854775808]"},
        ValueCase{"Fraction", "[3.0]", "[double 3]"},
        ValueCase{"NegativeFraction", "[-0.5]", "[double -0.5]"},
        ValueCase{"NegativeZeroFraction", "[-0.0]", "[double -0]"},
        ValueCase{"Exponent", "[1e2]", "[double 100]"},
        ValueCase{"NegativeExponent", "[25E-2]", "[double 0.25]"},
        ValueCase{"Underflow", "[1e-400]", "[double 0]"},
        ValueCase{"EightDigitsBehindThePoint", "[1.00390625]", "[double 1.00390625]"},
        ValueCase{"LargestDouble", "[1.7976931348623157e308]", "[double 1.7976931348623157e+308]"}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Strings, ParseAccepted,
    testing::Values(ValueCase{"Empty", R"([""])", "[string ]"},
                    ValueCase{"Escapes", R"(["\"\\\/\b\f\n\r\t"])", "[string \"\\/\b\f\n\r\t]"},
                    ValueCase{"EscapedNul", R"(["a\u0000b"])", "[string a\0b]"s},
                    ValueCase{"SurrogatePair", R"(["\ud83d\ude00"])", "[string \xf0\x9f\x98\x80]"},
                    ValueCase{"Utf8", "[\"\xc3\xa9\"]", "[string \xc3\xa9]"},
                    ValueCase{"ByteOrderMarkInside", "[\"a\xef\xbb\xbf\"]",
                              "[string a\xef\xbb\xbf]"},
                    ValueCase{"ByteOrderMarkInFront",
                              "[\"\xef\xbb\xbf"
                              "a\"]",
                              "[string \xef\xbb\xbf"
                              "a]"},
                    ValueCase{"EscapedByteOrderMark", R"(["\ufeffa"])",
                              "[string \xef\xbb\xbf"
                              "a]"},
                    ValueCase{"OnlyByteOrderMark", R"(["\ufeff"])", "[string \xef\xbb\xbf]"},
                    ValueCase{"Noncharacter", R"(["\uFFFE"])", "[string \xef\xbf\xbe]"},
                    ValueCase{"Delete", "[\"\x7f\"]", "[string \x7f]"}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Structures, ParseAccepted,
    testing::Values(ValueCase{"EmptyArray", "[]", "[]"}, ValueCase{"EmptyObject", "{}", "{}"},
                    ValueCase{"ArrayInOrder", R"([3, "x", null, true, []])",
                              "[qulonglong 3, string x, invalid, true, []]"},
                    ValueCase{"Object", R"({"b": -1, "a": {"c": [1.5]}})",
                              "{a: {c: [double 1.5]}, b: qlonglong -1}"},
                    ValueCase{"NullInObject", R"({"a": null})", "{a: invalid}"},
                    ValueCase{"EmptyKey", R"({"": 1})", "{: qulonglong 1}"},
                    ValueCase{"ByteOrderMarkInKey", R"({"\ufeffa": 1})",
                              "{\xef\xbb\xbf"
                              "a: qulonglong 1}"},
                    ValueCase{"RepeatedKeyLastWins", R"({"a": 1, "b": 2, "a": "x"})",
                              "{a: string x, b: qulonglong 2}"},
                    ValueCase{"RepeatedKeyLastIsNull", R"({"a": 1, "a": null})", "{a: invalid}"}),
    nameOf);

TEST_P(ParseRefused, GivesFalseAndInvalidVariant)
{
    bool ok = true;

    const QVariant value = BwaJson::parse(QByteArray::fromStdString(GetParam().text), &ok);

    EXPECT_FALSE(ok);
    EXPECT_FALSE(value.isValid());
}

TEST_P(ParseRefused, PrintsNothing)
{
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();

    parsed(GetParam().text);

    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

INSTANTIATE_TEST_SUITE_P(Texts, ParseRefused,
                         testing::Values(RefusedCase{"Empty", ""}, RefusedCase{"Blanks", "  "},
                                         RefusedCase{"LineEnd", "\n"}, RefusedCase{"Nul", "\0"s},
                                         RefusedCase{"ByteOrderMark", "\xef\xbb\xbf[]"},
                                         RefusedCase{"TextAfterValue", "[1]x"},
                                         RefusedCase{"SecondValue", "{} {}"},
                                         RefusedCase{"NulAfterValue", "[1]\0"s},
                                         RefusedCase{"VerticalTab", "[\v1]"},
                                         RefusedCase{"NoBreakSpace",
                                                     "[\xc2\xa0"
                                                     "1]"}),
                         nameOf);

INSTANTIATE_TEST_SUITE_P(
    Structures, ParseRefused,
    testing::Values(RefusedCase{"OpenArray", "[1,2"}, RefusedCase{"OpenObject", R"({"a":1)"},
                    RefusedCase{"CommaAtEnd", "[1,]"}, RefusedCase{"CommaAtStart", "[,1]"},
                    RefusedCase{"CommaAtObjectEnd", R"({"a":1,})"}, RefusedCase{"BareKey", "{a:1}"},
                    RefusedCase{"SingleQuotes", "['a']"}, RefusedCase{"Comment", "[1/*x*/]"},
                    RefusedCase{"MissingComma", "[1 2]"}, RefusedCase{"NumberAsKey", "{1:1}"}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Numbers, ParseRefused,
    testing::Values(RefusedCase{"LeadingZero", "[01]"}, RefusedCase{"NegativeLeadingZero", "[-01]"},
                    RefusedCase{"Plus", "[+1]"}, RefusedCase{"Minus", "[-]"},
                    RefusedCase{"EmptyExponent", "[1e]"},
                    RefusedCase{"EmptySignedExponent", "[1e+]"},
                    RefusedCase{"NoIntegerPart", "[.5]"}, RefusedCase{"NoFraction", "[5.]"},
                    RefusedCase{"Hexadecimal", "[0x10]"}, RefusedCase{"Nan", "[NaN]"},
                    RefusedCase{"Infinity", "[-Infinity]"},
                    RefusedCase{"Above64Bit", "[18446744073709551616]"},
                    RefusedCase{"Below64Bit", "[-9223372036854775809]"},
                    RefusedCase{"ThirtyDigits", "[123456789012345678901234567890]"},
                    RefusedCase{"Overflow", "[1e400]"}, RefusedCase{"NegativeOverflow", "[-1e400]"},
                    RefusedCase{"JustAboveDouble", "[1.7976931348623159e308]"}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Strings, ParseRefused,
    testing::Values(RefusedCase{"Open", R"(["a)"}, RefusedCase{"UnknownEscape", R"(["\q"])"},
                    RefusedCase{"HexadecimalEscape", R"(["\x41"])"},
                    RefusedCase{"ShortUnicodeEscape", R"(["\u12"])"},
                    RefusedCase{"LoneHighSurrogate", R"(["\ud800"])"},
                    RefusedCase{"LoneLowSurrogate", R"(["\udc00"])"},
                    RefusedCase{"RawTab", "[\"\t\"]"}, RefusedCase{"RawLineFeed", "[\"\n\"]"},
                    RefusedCase{"RawNul", "[\"\0\"]"s}, RefusedCase{"InvalidUtf8", "[\"\xff\"]"},
                    RefusedCase{"OverlongUtf8", "[\"\xc0\x80\"]"},
                    RefusedCase{"SurrogateInUtf8", "[\"\xed\xa0\x80\"]"},
                    RefusedCase{"InvalidUtf8InKey", "{\"\xe9\":1}"}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Depth, ParseRefused,
    testing::Values(RefusedCase{"Arrays1025", nestedArrays(1025, "")},
                    RefusedCase{"ArraysAroundNumber1025", nestedArrays(1025, "1")},
                    RefusedCase{"Objects1025", nestedObjects(1025, "1")},
                    RefusedCase{"ArraysAroundEmptyObject1025", nestedArrays(1024, "{}")},
                    RefusedCase{"Arrays100000", nestedArrays(100000, "")},
                    RefusedCase{"OpenArrays100000", std::string(100000, '[')}),
    nameOf);

// Compared outside the expectations, which would print thousands of brackets.

TEST(Parse, Accepts1024NestedArrays)
{
    EXPECT_TRUE(parsed(nestedArrays(1024, "")) == nestedArrays(1024, ""));
}

TEST(Parse, AcceptsNumberIn1024NestedArrays)
{
    EXPECT_TRUE(parsed(nestedArrays(1024, "1")) == nestedArrays(1024, "qulonglong 1"));
}

TEST(Parse, AcceptsNumberIn1024NestedObjects)
{
    EXPECT_TRUE(parsed(nestedObjects(1024, "1")) != "refused");
}

TEST(Parse, WhenPreviousTextWasRefusedAcceptsNextOne)
{
    ASSERT_EQ(parsed("[18446744073709551616]"), "refused");
    ASSERT_EQ(parsed(nestedArrays(2000, "")), "refused");

    EXPECT_EQ(parsed("[1]"), "[qulonglong 1]");
}

TEST(Parse, WhenNextTextIsParsedKeepsEarlierValue)
{
    bool ok = false;
    const QVariant first = BwaJson::parse(R"({"name": "first", "list": ["x"]})", &ok);

    parsed(R"({"name": "other", "list": ["y"]})");

    EXPECT_EQ(description(first), "{list: [string x], name: string first}");
}

TEST(Parse, GivenTextThatFillsItsMemoryReadsNotBeyondIt)
{
    // A raw slice: no terminator and no spare bytes belong to the text.
    const char bytes[] = {'[', '1', '2', ']', '3'};
    bool ok = false;

    const QVariant value = BwaJson::parse(QByteArray::fromRawData(bytes, 4), &ok);

    EXPECT_TRUE(ok);
    EXPECT_EQ(description(value), "[qulonglong 12]");
}

TEST(Parse, GivenLongStringKeepsAllOfIt)
{
    const std::string text(1 << 20, 'x');

    EXPECT_EQ(parsed("[\"" + text + "\"]"), "[string " + text + "]");
}

// Texts of up to three words, at every distance from a boundary of words.
TEST(Parse, GivenACharacterAboveAsciiAnywhereReadsIt)
{
    for (int size = 0; size < 24; ++size) {
        for (int position = 0; position <= size; ++position) {
            const std::string text = std::string(size, 'a').insert(position, "\xc3\xa9");

            ASSERT_EQ(parsed("{\"" + text + "\":\"" + text + "\"}"),
                      "{" + text + ": string " + text + "}");
        }
    }
}

// Whatever makes strings and keys fast: they are those that were written.
TEST(Parse, GivenRandomMembersReturnsThem)
{
    RandomSource random;
    const QString alphabet = QStringLiteral(u"aabcd \u007f\u00c3\u00a9\u00e9\u20ac\ufeff");
    for (int round = RandomSource::rounds(5000); round > 0; --round) {
        QVariantMap members;
        QStringList texts;
        for (int count = random.below(8); count > 0; --count) {
            const QString key = random.text(alphabet, random.oneIn(4) ? 40 : 5);
            const QString value = random.text(alphabet, 40);
            members.insert(key, value);
            texts.append(QStringLiteral("\"%1\":\"%2\"").arg(key, value));
        }
        const QString text = QLatin1Char('{') + texts.join(QLatin1Char(',')) + QLatin1Char('}');
        bool ok = false;

        const QVariant value = BwaJson::parse(text.toUtf8(), &ok);

        ASSERT_TRUE(ok) << text.toStdString();
        ASSERT_EQ(value.toMap(), members) << text.toStdString();
    }
}

TEST(Parse, GivenAKeyTwiceTellsWhatLeadsToIt)
{
    EXPECT_EQ(repeatedIn(R"({"a":1,"b":2,"a":3})"), "a");
    EXPECT_EQ(repeatedIn(R"({"a":1,"\u0061":3})"), "a");
    EXPECT_EQ(repeatedIn(R"({"a":1,"b":[0,{"c":{"d":1,"d":2}}],"e":{"f":1,"f":2}})"), "b 1 c d");
    EXPECT_EQ(repeatedIn(R"([[],[{"a":1,"a":[{"b":1,"b":2}],"a":1}]])"), "1 0 a 0 b");
}

TEST(Parse, GivenNoKeyTwiceTellsSo)
{
    EXPECT_EQ(repeatedIn(R"({"a":{"a":1},"b":[{"a":1},{"a":1}],"A":1})"), "");
    EXPECT_EQ(repeatedIn(R"({"a":1,"a":2)"), "");
}
