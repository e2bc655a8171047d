// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "cgi/BwaCgiRequest.h"

#include "support/GuardedBytes.h"
#include "support/LiteralUrlEncoding.h"
#include "support/MemoryCgiInput.h"
#include "support/QtPrinters.h"
#include "support/RandomSource.h"
#include "support/ShownText.h"
#include "support/Skips.h"

#include <gmock/gmock.h>

#include <new>
#include <string>
#include <utility>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const char* const urlEncoded = "application/x-www-form-urlencoded";
const char* const multipart = "multipart/form-data; boundary=B";

struct TextCase {
    const char* name;
    const char* text;
    const char* result;
};

std::string nameOf(const testing::TestParamInfo<TextCase>& info)
{
    return info.param.name;
}

QString text(const char* latin1)
{
    return QString::fromLatin1(latin1);
}

std::string shownFile(const BwaCgiFile& file)
{
    return shown(file.fileName()) + " " + shown(file.contentType()) + " " +
        file.data().toStdString();
}

QByteArray formField(const char* name, const QByteArray& value)
{
    return QByteArray("--B\r\nContent-Disposition: form-data; name=") + name + "\r\n\r\n" + value +
        "\r\n";
}

QByteArray fileField(const char* name, const char* fileName, const QByteArray& data)
{
    return QByteArray("--B\r\nContent-Disposition: form-data; name=") + name + "; filename=\"" +
        fileName + "\"\r\nContent-Type: image/png\r\n\r\n" + data + "\r\n";
}

// An input that has only the first bytes of a longer body.
MemoryCgiInput cutShort(const char* contentType, const QByteArray& body, const char* contentLength)
{
    MemoryCgiInput input(contentType, body);
    input.set("CONTENT_LENGTH", contentLength);
    return input;
}

// An application's own input, which hands out the memory that its bytes are in.
class RawInput : public MemoryCgiInput
{
public:
    RawInput(const char* contentType, const QByteArray& content)
        : MemoryCgiInput(contentType, content)
        , m_guarded(content)
    {
    }

    QByteArray read(unsigned int /*size*/) override { return m_guarded.bytes(); }

private:
    GuardedBytes m_guarded;
};

// Memory runs out at one of the reads.
class ShortOfMemory : public MemoryCgiInput
{
public:
    ShortOfMemory(const char* contentType, const QByteArray& content, int failingRead)
        : MemoryCgiInput(contentType, content)
        , m_failingRead(failingRead)
    {
    }

    QByteArray read(unsigned int size) override
    {
        if (--m_failingRead == 0) {
            throw std::bad_alloc();
        }
        return MemoryCgiInput::read(size);
    }

private:
    int m_failingRead;
};

} // namespace

// --- urlDecode

class UrlDecode : public testing::TestWithParam<TextCase>
{
};

TEST_P(UrlDecode, DecodesPlusAndEscapes)
{
    EXPECT_EQ(shown(BwaCgiRequest::urlDecode(text(GetParam().text))), GetParam().result);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, UrlDecode,
    testing::Values(
        TextCase{"Empty", "", "<null>"}, TextCase{"Plain", "abc-_.~", "abc-_.~"},
        TextCase{"Plus", "a+b", "a b"}, TextCase{"EscapedPlus", "a+b%2Bc", "a b+c"},
        TextCase{"LowerCaseDigits", "%2f%c3", "/\\u00C3"},
        TextCase{"MixedCaseDigits", "%cE%Ce", "\\u00CE\\u00CE"},
        TextCase{"Utf8StaysApart", "%C3%A9", "\\u00C3\\u00A9"},
        TextCase{"Nul", "a%00b", "a\\u0000b"}, TextCase{"LastCode", "%FF", "\\u00FF"},
        TextCase{"PercentAtTheEnd", "100%", "100%"}, TextCase{"OneDigitAtTheEnd", "100%4", "100%4"},
        TextCase{"NotHexadecimal", "%zz1", "%zz1"}, TextCase{"SecondNotHexadecimal", "%4g", "%4g"},
        TextCase{"PercentBeforeEscape", "%%41", "%A"}, TextCase{"ThreePercents", "%%%", "%%%"},
        TextCase{"DecodedPercentIsNotDecodedAgain", "%2541", "%41"},
        TextCase{"PlusAfterBrokenEscape", "%4+x", "%4 x"},
        TextCase{"PlusAndDigit", "%+5", "\\u0005"}, TextCase{"BlankAndDigit", "% 5", "\\u0005"},
        TextCase{"DigitAndBlank", "%5 ", "\\u0005"}, TextCase{"TabAndDigit", "%\t5", "\\u0005"},
        TextCase{"MinusAndDigit", "%-5", "%-5"}, TextCase{"HexPrefix", "%0x41", "%0x41"},
        TextCase{"TwoPluses", "%++", "%  "}, TextCase{"Latin1", "\xe9%e9", "\\u00E9\\u00E9"}),
    nameOf);

TEST(UrlDecodeText, GivenNullTextGivesNull)
{
    EXPECT_TRUE(BwaCgiRequest::urlDecode(QString()).isNull());
}

TEST(UrlDecodeText, GivenCharactersBeyondLatin1KeepsThem)
{
    EXPECT_EQ(BwaCgiRequest::urlDecode(QStringLiteral(u"\u20ac+\u20ac%41")),
              QStringLiteral(u"\u20ac \u20acA"));
}

TEST(UrlDecodeText, GivenAnyTwoCharactersConvertsThemAsANumberDoes)
{
    if (withQt6()) {
        GTEST_SKIP()
            << "Qt 6 converts other texts to numbers than Qt 5, whose rules the library keeps";
    }
    QString characters;
    for (ushort code = 0; code < 0x100; ++code) {
        characters.append(QChar(code));
    }
    characters.append(QStringLiteral(
        u"\u0660\u0665\u1680\u180e\u2000\u2003\u2028\u202f\u2212\u3000\ufeff\uff0b\uff15\uff21"));
    for (const QChar first : std::as_const(characters)) {
        for (const QChar second : std::as_const(characters)) {
            const QString escape = QString(QLatin1Char('%')) + first + second;

            const QString decoded = BwaCgiRequest::urlDecode(escape);

            ASSERT_EQ(shown(decoded), shown(literalUrlDecode(escape))) << shown(escape);
        }
    }
}

TEST(UrlDecodeText, GivenRandomTextAgreesWithTheLiteralRules)
{
    if (withQt6()) {
        GTEST_SKIP()
            << "Qt 6 converts other texts to numbers than Qt 5, whose rules the library keeps";
    }
    RandomSource random;
    const QString alphabet = QStringLiteral(u"%%%%+-04aFgx \t\u00a0\u00e9\u20ac") + QChar(0);
    for (int round = RandomSource::rounds(20000); round > 0; --round) {
        const QString input = random.text(alphabet, 16);

        const QString decoded = BwaCgiRequest::urlDecode(input);

        ASSERT_EQ(shown(decoded), shown(literalUrlDecode(input))) << shown(input);
    }
}

TEST(UrlDecodeText, GivenManyEscapesDecodesThemAll)
{
    EXPECT_EQ(BwaCgiRequest::urlDecode(text("%41").repeated(500000)),
              QString(500000, QLatin1Char('A')));
}

// --- parseUrlEncodedVariables

class ParseUrlEncodedVariables : public testing::TestWithParam<TextCase>
{
};

TEST_P(ParseUrlEncodedVariables, SplitsAndDecodes)
{
    EXPECT_EQ(shownVariables(BwaCgiRequest::parseUrlEncodedVariables(text(GetParam().text))),
              GetParam().result);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, ParseUrlEncodedVariables,
    testing::Values(TextCase{"One", "a=1", "a=1"}, TextCase{"Ampersand", "a=1&b=2", "a=1 b=2"},
                    TextCase{"Semicolon", "a=1;b=2", "a=1 b=2"},
                    TextCase{"RepeatedNameLastFirst", "a=1&a=2;b", "a=2,1 b="},
                    TextCase{"EqualValuesAreKept", "a=1&a=1", "a=1,1"}, TextCase{"Empty", "", "="},
                    TextCase{"EmptyPair", "a=1&&b=2", "= a=1 b=2"},
                    TextCase{"TrailingAmpersand", "a=1&", "= a=1"},
                    TextCase{"SeparatorsOnly", "&;", "=,,"}, TextCase{"NameOnly", "a", "a="},
                    TextCase{"EmptyName", "=1", "=1"},
                    TextCase{"EqualsSignInValue", "a=1=2", "a=1=2"},
                    TextCase{"EscapedEqualsSignDoesNotSplit", "a%3D=%3D1", "a===1"},
                    TextCase{"EscapedSeparatorsDoNotSplit", "a=%26%3B", "a=&;"},
                    TextCase{"NameIsDecoded", "a+%41=1", "a A=1"},
                    TextCase{"ValueIsDecoded", "a=+%41%C3", "a= A\\u00C3"},
                    TextCase{"NamesEqualAfterDecoding", "a=1&%61=2", "a=2,1"},
                    TextCase{"BrokenEscapesStay", "a=100%&b%=%zz", "a=100% b%=%zz"},
                    TextCase{"BlanksStay", " a = 1 ", " a = 1 "},
                    TextCase{"QuestionMarkStays", "?a=1", "?a=1"}),
    nameOf);

TEST(ParseUrlEncodedVariablesText, GivenEscapeCutByASeparatorDoesNotReadBeyondIt)
{
    EXPECT_EQ(shownVariables(BwaCgiRequest::parseUrlEncodedVariables(text("a=%4&1=%&%=41"))),
              "%=41 1=% a=%4");
}

TEST(ParseUrlEncodedVariablesText, GivenRandomTextAgreesWithTheLiteralRules)
{
    if (withQt6()) {
        GTEST_SKIP()
            << "Qt 6 converts other texts to numbers than Qt 5, whose rules the library keeps";
    }
    RandomSource random;
    const QString alphabet = QStringLiteral(u"aab==&&;;%%41+ \u00e9") + QChar(0);
    for (int round = RandomSource::rounds(20000); round > 0; --round) {
        const QString input = random.text(alphabet, 24);

        const auto variables = BwaCgiRequest::parseUrlEncodedVariables(input);

        ASSERT_EQ(shownVariables(variables), shownVariables(literalUrlEncodedVariables(input)))
            << shown(input);
    }
}

TEST(ParseUrlEncodedVariablesText, GivenManySeparatorsStoresAVariableForEach)
{
    const auto variables =
        BwaCgiRequest::parseUrlEncodedVariables(QString(1024 * 1024, QLatin1Char('&')));

    EXPECT_EQ(variables.size(), 1024 * 1024 + 1);
    EXPECT_EQ(variables.count(QString()), 1024 * 1024 + 1);
}

TEST(ParseUrlEncodedVariablesText, GivenCharactersWhoseLowByteIsASeparatorKeepsThem)
{
    const QString text = QStringLiteral(u"\u0125\u012b\u0126\u013b\u013d");

    const auto variables = BwaCgiRequest::parseUrlEncodedVariables(text);

    EXPECT_EQ(variables, (QMultiHash<QString, QString>{{text, QString()}}));
}

// --- construction

TEST(BwaCgiRequest, ReadsTheEnvironmentFromItsInput)
{
    MemoryCgiInput input;
    input.set("REQUEST_METHOD", "PATCH");

    const BwaCgiRequest request(&input);

    EXPECT_EQ(request.input(), &input);
    EXPECT_EQ(request.environment().input(), &input);
    EXPECT_EQ(request.environment().requestMethod(), text("PATCH"));
}

TEST(BwaCgiRequest, DecodesTheQueryStringAtOnce)
{
    MemoryCgiInput input;
    input.set("QUERY_STRING", "a=1&a=2;b");

    const BwaCgiRequest request(&input);

    EXPECT_THAT(request.queryVariables().values(text("a")), ElementsAre(text("2"), text("1")));
    EXPECT_EQ(request.queryVariables().value(text("a")), text("2"));
    EXPECT_TRUE(request.queryVariables().contains(text("b")));
    EXPECT_EQ(request.queryVariables().value(text("b")), text(""));
}

TEST(BwaCgiRequest, GivenEmptyQueryStringHasOneEmptyVariable)
{
    MemoryCgiInput input;

    const BwaCgiRequest request(&input);

    EXPECT_EQ(shownVariables(request.queryVariables()), "=");
}

TEST(BwaCgiRequest, ReadsNothingOfTheBodyAtConstruction)
{
    MemoryCgiInput input(urlEncoded, "x=1");

    const BwaCgiRequest request(&input);

    EXPECT_THAT(input.readSizes, IsEmpty());
    EXPECT_EQ(request.bodyBytesRead(), 0U);
    EXPECT_THAT(request.formVariables(), IsEmpty());
    EXPECT_THAT(request.files(), IsEmpty());
    EXPECT_EQ(request.body(), QByteArray());
}

// --- readFromBody

TEST(ReadFromBody, ReturnsTheNextBytesAndCountsThem)
{
    MemoryCgiInput input("text/plain", "abcdef");
    BwaCgiRequest request(&input);

    EXPECT_EQ(request.readFromBody(2), QByteArray("ab"));
    EXPECT_EQ(request.bodyBytesRead(), 2U);
    EXPECT_EQ(request.readFromBody(3), QByteArray("cde"));
    EXPECT_EQ(request.bodyBytesRead(), 5U);
    EXPECT_THAT(input.readSizes, ElementsAre(2U, 3U));
}

TEST(ReadFromBody, NeverAsksBeyondTheContentLength)
{
    MemoryCgiInput input = cutShort("text/plain", "abcdef", "4");
    BwaCgiRequest request(&input);

    EXPECT_EQ(request.readFromBody(3), QByteArray("abc"));
    EXPECT_EQ(request.readFromBody(4294967295U), QByteArray("d"));
    EXPECT_EQ(request.readFromBody(1), QByteArray());
    EXPECT_EQ(request.bodyBytesRead(), 4U);
    EXPECT_THAT(input.readSizes, ElementsAre(3U, 1U, 0U));
}

TEST(ReadFromBody, GivenNoContentLengthReadsNothing)
{
    MemoryCgiInput input;
    input.body = "abc";
    BwaCgiRequest request(&input);

    EXPECT_EQ(request.readFromBody(10), QByteArray());
    EXPECT_EQ(request.bodyBytesRead(), 0U);
}

TEST(ReadFromBody, GivenShortBodyCountsWhatCame)
{
    MemoryCgiInput input = cutShort("text/plain", "abc", "10");
    BwaCgiRequest request(&input);

    EXPECT_EQ(request.readFromBody(8), QByteArray("abc"));
    EXPECT_EQ(request.readFromBody(8), QByteArray());
    EXPECT_EQ(request.bodyBytesRead(), 3U);
    EXPECT_THAT(input.readSizes, ElementsAre(8U, 7U));
}

TEST(ReadFromBody, GivenTheLargestContentLengthAsksForNoMoreThanWanted)
{
    MemoryCgiInput input = cutShort("text/plain", "abc", "4294967295");
    BwaCgiRequest request(&input);

    EXPECT_EQ(request.readFromBody(2), QByteArray("ab"));
    EXPECT_EQ(request.readFromBody(4294967295U), QByteArray("c"));
    EXPECT_THAT(input.readSizes, ElementsAre(2U, 4294967293U));
}

// --- processBodyContent: the announced length

TEST(ProcessBodyContent, GivenNoContentLengthSucceedsWithoutReading)
{
    MemoryCgiInput input;
    input.set("CONTENT_TYPE", urlEncoded);
    input.body = "x=1";
    BwaCgiRequest request(&input);

    EXPECT_TRUE(request.processBodyContent());
    EXPECT_THAT(input.readSizes, IsEmpty());
    EXPECT_THAT(request.formVariables(), IsEmpty());
}

TEST(ProcessBodyContent, GivenContentLengthZeroOfAMultipartSucceedsWithoutReading)
{
    MemoryCgiInput input = cutShort(multipart, "--B--\r\n", "0");
    BwaCgiRequest request(&input);

    EXPECT_TRUE(request.processBodyContent());
    EXPECT_THAT(input.readSizes, IsEmpty());
}

TEST(ProcessBodyContent, WhenCalledAgainAfterSuccessReadsNoMore)
{
    MemoryCgiInput input(urlEncoded, "x=1");
    BwaCgiRequest request(&input);
    ASSERT_TRUE(request.processBodyContent());

    EXPECT_TRUE(request.processBodyContent());
    EXPECT_THAT(input.readSizes, ElementsAre(3U));
    EXPECT_EQ(shownVariables(request.formVariables()), "x=1");
}

// --- processBodyContent: URL-encoded forms

TEST(ProcessUrlEncodedBody, FillsTheFormVariables)
{
    MemoryCgiInput input(urlEncoded, "a=1&a=2&b=%41+c");
    BwaCgiRequest request(&input);

    EXPECT_TRUE(request.processBodyContent());
    EXPECT_EQ(shownVariables(request.formVariables()), "a=2,1 b=A c");
    EXPECT_EQ(request.body(), QByteArray());
    EXPECT_THAT(request.files(), IsEmpty());
    EXPECT_EQ(request.bodyBytesRead(), 15U);
}

TEST(ProcessUrlEncodedBody, LeavesTheQueryVariablesAlone)
{
    MemoryCgiInput input(urlEncoded, "a=1");
    input.set("QUERY_STRING", "a=2");
    BwaCgiRequest request(&input);

    EXPECT_TRUE(request.processBodyContent());
    EXPECT_EQ(shownVariables(request.formVariables()), "a=1");
    EXPECT_EQ(shownVariables(request.queryVariables()), "a=2");
}

TEST(ProcessUrlEncodedBody, GivenNoContentTypeIsAssumed)
{
    MemoryCgiInput input("", "x=1");
    BwaCgiRequest request(&input);

    EXPECT_TRUE(request.processBodyContent());
    EXPECT_EQ(shownVariables(request.formVariables()), "x=1");
}

TEST(ProcessUrlEncodedBody, GivenParametersOnlyIsAssumed)
{
    MemoryCgiInput input(" ; charset=utf-8", "x=1");
    BwaCgiRequest request(&input);

    EXPECT_TRUE(request.processBodyContent());
    EXPECT_EQ(shownVariables(request.formVariables()), "x=1");
}

TEST(ProcessUrlEncodedBody, GivenParametersOfTheMediaTypeIgnoresThem)
{
    MemoryCgiInput input(" application/x-www-form-urlencoded ; charset=utf-8", "x=%C3%A9");
    BwaCgiRequest request(&input);

    EXPECT_TRUE(request.processBodyContent());
    EXPECT_EQ(shownVariables(request.formVariables()), "x=\\u00C3\\u00A9");
}

TEST(ProcessUrlEncodedBody, ReadsTheBytesAsLatin1)
{
    MemoryCgiInput input(urlEncoded, "\xe9=\xc3\xa9");
    BwaCgiRequest request(&input);

    EXPECT_TRUE(request.processBodyContent());
    EXPECT_EQ(shownVariables(request.formVariables()), "\\u00E9=\\u00C3\\u00A9");
}

TEST(ProcessUrlEncodedBody, GivenAnyByteAboveAsciiTakesItForText)
{
    for (int code = 0x80; code < 0x100; ++code) {
        const QByteArray byte(1, static_cast<char>(code));
        MemoryCgiInput input(urlEncoded, byte + "=+" + byte);
        BwaCgiRequest request(&input);

        ASSERT_TRUE(request.processBodyContent());

        const std::string character = shown(QString(QChar(code)));
        ASSERT_EQ(shownVariables(request.formVariables()), character + "= " + character);
    }
}

TEST(ProcessUrlEncodedBody, GivenPiecesOfAnyLengthFindsTheirEnds)
{
    const QByteArray likeAnAmpersand("\xa6"); // but for its highest bit
    for (int nameSize = 1; nameSize <= 17; ++nameSize) {
        for (int valueSize = 0; valueSize <= 17; ++valueSize) {
            const QByteArray name(nameSize, 'n');
            const QByteArray value = likeAnAmpersand.repeated(valueSize);
            MemoryCgiInput input(urlEncoded, name + "=" + value + "%41&a=+");
            BwaCgiRequest request(&input);

            ASSERT_TRUE(request.processBodyContent());

            ASSERT_EQ(shownVariables(request.formVariables()),
                      "a=  " + name.toStdString() + "=" + shown(QString::fromLatin1(value + "A")));
        }
    }
}

TEST(ProcessUrlEncodedBody, GivenNulByteDropsTheRest)
{
    MemoryCgiInput input(urlEncoded,
                         QByteArray("a=1\0"
                                    "2&b=3",
                                    9));
    BwaCgiRequest request(&input);

    EXPECT_TRUE(request.processBodyContent());
    EXPECT_EQ(shownVariables(request.formVariables()), "a=1");
    EXPECT_EQ(request.bodyBytesRead(), 9U);
}

TEST(ProcessUrlEncodedBody, GivenRandomBytesAgreesWithTheLiteralRulesOfTheirText)
{
    if (withQt6()) {
        GTEST_SKIP()
            << "Qt 6 converts other texts to numbers than Qt 5, whose rules the library keeps";
    }
    RandomSource random;
    const QString alphabet = QStringLiteral(u"aab==&&;;%%%41fF+ \u0085\u00a0\u00e9\u00ff");
    for (int round = RandomSource::rounds(20000); round > 0; --round) {
        const QString body = random.text(alphabet, 24) + QLatin1Char('a');
        MemoryCgiInput input(urlEncoded, body.toLatin1());
        BwaCgiRequest request(&input);

        ASSERT_TRUE(request.processBodyContent());

        ASSERT_EQ(shownVariables(request.formVariables()),
                  shownVariables(literalUrlEncodedVariables(body)))
            << shown(body);
    }
}

struct LongFormCase {
    const char* name;
    QByteArray body;
};

class ProcessLongUrlEncodedBody : public testing::TestWithParam<LongFormCase>
{
};

// A long body is taken apart in pieces. EXPECT_EQ would print all of it.
TEST_P(ProcessLongUrlEncodedBody, AgreesWithItsTextInOnePiece)
{
    const QByteArray& body = GetParam().body;
    MemoryCgiInput input(urlEncoded, body);
    BwaCgiRequest request(&input);

    ASSERT_TRUE(request.processBodyContent());

    const QString text = QString::fromLatin1(body.constData());
    EXPECT_TRUE(shownVariables(request.formVariables()) ==
                shownVariables(BwaCgiRequest::parseUrlEncodedVariables(text)));
}

const QByteArray longValue(150000, 'x');

INSTANTIATE_TEST_SUITE_P(
    Cases, ProcessLongUrlEncodedBody,
    testing::Values(
        LongFormCase{"ManyFields", QByteArray("a=1&b=2;a=3&").repeated(20000)},
        LongFormCase{"SeparatorsOnly", QByteArray(150001, '&')},
        LongFormCase{"OneField", "a=" + longValue},
        LongFormCase{"SeparatorAtTheStart", "&a=" + longValue},
        LongFormCase{"SeparatorAtTheEnd", "a=" + longValue + "&"},
        LongFormCase{"LongFieldBehindManyFields", QByteArray("a=1&").repeated(40000) + longValue},
        LongFormCase{"ManyFieldsBehindALongField", longValue + QByteArray(";a=1").repeated(40000)},
        LongFormCase{"NulInTheSecondHalf",
                     QByteArray("a=1&").repeated(40000) + '\0' + QByteArray("a=2&").repeated(9)}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(ProcessUrlEncodedBody, GivenLongerInputStopsAtTheContentLength)
{
    MemoryCgiInput input = cutShort(urlEncoded, "x=123", "3");
    BwaCgiRequest request(&input);

    EXPECT_TRUE(request.processBodyContent());
    EXPECT_EQ(shownVariables(request.formVariables()), "x=1");
    EXPECT_THAT(input.readSizes, ElementsAre(3U));
}

TEST(ProcessUrlEncodedBody, GivenBytesWithoutANulBehindThemReadsNotBeyondThem)
{
    RawInput input(urlEncoded, "a=1&b=%41");
    BwaCgiRequest request(&input);

    EXPECT_TRUE(request.processBodyContent());
    EXPECT_EQ(shownVariables(request.formVariables()), "a=1 b=A");
}

TEST(ProcessUrlEncodedBody, GivenBytesWithoutANulBehindThemCountsNoFieldsBeyondThem)
{
    RawInput input(urlEncoded, "a=1&b=%41");
    BwaCgiRequest request(&input);
    BwaRequestLimits limits;
    limits.maxFormFields = 2;
    request.setRequestLimits(limits);

    EXPECT_TRUE(request.processBodyContent());
}

TEST(ProcessUrlEncodedBody, WhenTheBodyIsShortFails)
{
    MemoryCgiInput input = cutShort(urlEncoded, "a=1&b=2", "8");
    BwaCgiRequest request(&input);

    EXPECT_FALSE(request.processBodyContent());
    EXPECT_THAT(request.formVariables(), IsEmpty());
    EXPECT_EQ(request.body(), QByteArray());
    EXPECT_EQ(request.bodyBytesRead(), 7U);
}

TEST(ProcessUrlEncodedBody, WhenCalledAgainAfterFailureFailsAgain)
{
    MemoryCgiInput input = cutShort(urlEncoded, "a=1", "7");
    BwaCgiRequest request(&input);
    ASSERT_FALSE(request.processBodyContent());
    input.body += "&b=2";

    EXPECT_FALSE(request.processBodyContent());
    EXPECT_THAT(request.formVariables(), IsEmpty());
    EXPECT_EQ(request.bodyBytesRead(), 7U);
    EXPECT_THAT(input.readSizes, ElementsAre(7U, 4U));
}

TEST(ProcessUrlEncodedBody, WhenBytesWereReadBeforeFails)
{
    MemoryCgiInput input(urlEncoded, "a=1&b=2");
    BwaCgiRequest request(&input);
    request.readFromBody(4);

    EXPECT_FALSE(request.processBodyContent());
    EXPECT_THAT(request.formVariables(), IsEmpty());
    EXPECT_THAT(input.readSizes, ElementsAre(4U, 3U));
}

TEST(ProcessUrlEncodedBody, GivenAHugeAnnouncedLengthFailsOnTheShortBody)
{
    MemoryCgiInput input = cutShort(urlEncoded, "a=1", "4294967295");
    BwaCgiRequest request(&input);

    EXPECT_FALSE(request.processBodyContent());
    EXPECT_EQ(request.bodyBytesRead(), 3U);
}

// --- processBodyContent: other media types

class ProcessOtherBody : public testing::TestWithParam<TextCase>
{
};

TEST_P(ProcessOtherBody, KeepsTheBody)
{
    const QByteArray body("a=1\0&\xff\r\n", 8);
    MemoryCgiInput input(GetParam().text, body);
    BwaCgiRequest request(&input);

    EXPECT_TRUE(request.processBodyContent());
    EXPECT_EQ(request.body(), body);
    EXPECT_THAT(request.formVariables(), IsEmpty());
    EXPECT_THAT(request.files(), IsEmpty());
    EXPECT_THAT(input.readSizes, ElementsAre(8U));
}

INSTANTIATE_TEST_SUITE_P(
    MediaTypes, ProcessOtherBody,
    testing::Values(TextCase{"Json", "application/json", ""}, TextCase{"Text", "text/plain", ""},
                    TextCase{"Xml", "application/xml; charset=utf-8", ""},
                    TextCase{"CapitalsOfAForm", "Application/X-WWW-Form-URLencoded", ""},
                    TextCase{"CapitalsOfAMultipart", "Multipart/Form-Data; boundary=B", ""},
                    TextCase{"OtherMultipart", "multipart/mixed; boundary=B", ""},
                    TextCase{"LongerName", "application/x-www-form-urlencoded2", ""},
                    TextCase{"FormAsSecondElement", "text/plain, application/x-www-form-urlencoded",
                             ""}),
    nameOf);

TEST(ProcessOtherBodyText, WhenTheBodyIsShortFailsWithoutABody)
{
    MemoryCgiInput input = cutShort("application/json", "{\"a\":1}", "8");
    BwaCgiRequest request(&input);

    EXPECT_FALSE(request.processBodyContent());
    EXPECT_EQ(request.body(), QByteArray());
    EXPECT_EQ(request.bodyBytesRead(), 7U);
}

TEST(ProcessOtherBodyText, WhenCalledAgainAfterFailureFailsAgain)
{
    MemoryCgiInput input = cutShort("application/json", "{\"a\"", "7");
    BwaCgiRequest request(&input);
    ASSERT_FALSE(request.processBodyContent());
    input.body += ":1}";

    EXPECT_FALSE(request.processBodyContent());
    EXPECT_EQ(request.body(), QByteArray());
    EXPECT_EQ(request.bodyBytesRead(), 7U);
}

TEST(ProcessOtherBodyText, GivenAHugeAnnouncedLengthFailsOnTheShortBody)
{
    MemoryCgiInput input = cutShort("application/json", "{}", "2147483648");
    BwaCgiRequest request(&input);

    EXPECT_FALSE(request.processBodyContent());
    EXPECT_EQ(request.body(), QByteArray());
    EXPECT_EQ(request.bodyBytesRead(), 2U);
}

// --- processBodyContent: multipart forms

TEST(ProcessMultipartBody, StoresFieldsAndFiles)
{
    MemoryCgiInput input(multipart,
                         formField("a", "1") + fileField("f", "x.png", "\x89PNG") + "--B--\r\n");
    BwaCgiRequest request(&input);

    EXPECT_TRUE(request.processBodyContent());
    EXPECT_EQ(shownVariables(request.formVariables()), "a=1");
    ASSERT_EQ(request.files().size(), 1);
    EXPECT_EQ(shownFile(request.files().value(text("f"))), "x.png image/png \x89PNG");
    EXPECT_EQ(request.body(), QByteArray());
}

TEST(ProcessMultipartBody, GivenSeveralValuesOfAFieldKeepsThemAll)
{
    MemoryCgiInput input(multipart, formField("a", "1") + formField("a", "2") + "--B--\r\n");
    BwaCgiRequest request(&input);

    EXPECT_TRUE(request.processBodyContent());
    EXPECT_EQ(shownVariables(request.formVariables()), "a=2,1");
}

TEST(ProcessMultipartBody, GivenTwoFilesOfAFieldKeepsTheSecond)
{
    MemoryCgiInput input(multipart,
                         fileField("f", "1", "one") + fileField("f", "2", "two") + "--B--\r\n");
    BwaCgiRequest request(&input);

    EXPECT_TRUE(request.processBodyContent());
    ASSERT_EQ(request.files().size(), 1);
    EXPECT_EQ(shownFile(request.files().value(text("f"))), "2 image/png two");
}

TEST(ProcessMultipartBody, GivenFieldAndFileOfOneNameKeepsBoth)
{
    MemoryCgiInput input(multipart, formField("a", "1") + fileField("a", "2", "two") + "--B--\r\n");
    BwaCgiRequest request(&input);

    EXPECT_TRUE(request.processBodyContent());
    EXPECT_EQ(shownVariables(request.formVariables()), "a=1");
    EXPECT_EQ(shownFile(request.files().value(text("a"))), "2 image/png two");
}

TEST(ProcessMultipartBody, GivenEmptyFileNameStoresAFormVariable)
{
    MemoryCgiInput input(multipart, fileField("f", "", "data") + "--B--\r\n");
    BwaCgiRequest request(&input);

    EXPECT_TRUE(request.processBodyContent());
    EXPECT_EQ(shownVariables(request.formVariables()), "f=data");
    EXPECT_THAT(request.files(), IsEmpty());
}

TEST(ProcessMultipartBody, GivenFileWithoutContentTypeStoresPlainText)
{
    MemoryCgiInput input(
        multipart,
        "--B\r\nContent-Disposition: form-data; name=f; filename=x\r\n\r\n1\r\n--B--\r\n");
    BwaCgiRequest request(&input);

    EXPECT_TRUE(request.processBodyContent());
    EXPECT_EQ(shownFile(request.files().value(text("f"))), "x text/plain 1");
}

TEST(ProcessMultipartBody, GivenFileKeepsEveryByte)
{
    const QByteArray data("\0\xff\r\n--B\n\r\n--Bx", 14);
    MemoryCgiInput input(multipart, fileField("f", "x", data) + "--B--\r\n");
    BwaCgiRequest request(&input);

    EXPECT_TRUE(request.processBodyContent());
    EXPECT_EQ(request.files().value(text("f")).data(), data);
}

TEST(ProcessMultipartBody, ReadsFieldsAsLatin1UpToTheFirstNul)
{
    MemoryCgiInput input(multipart,
                         formField("a", "\xc3\xa9") +
                             formField("b",
                                       QByteArray("1\0"
                                                  "2",
                                                  3)) +
                             "--B--\r\n");
    BwaCgiRequest request(&input);

    EXPECT_TRUE(request.processBodyContent());
    EXPECT_EQ(shownVariables(request.formVariables()), "a=\\u00C3\\u00A9 b=1");
}

TEST(ProcessMultipartBody, DoesNotDecodeFieldValues)
{
    MemoryCgiInput input(multipart, formField("a", "1+%41") + "--B--\r\n");
    BwaCgiRequest request(&input);

    EXPECT_TRUE(request.processBodyContent());
    EXPECT_EQ(shownVariables(request.formVariables()), "a=1+%41");
}

TEST(ProcessMultipartBody, GivenNoPartsSucceeds)
{
    MemoryCgiInput input(multipart, "--B--\r\n");
    BwaCgiRequest request(&input);

    EXPECT_TRUE(request.processBodyContent());
    EXPECT_THAT(request.formVariables(), IsEmpty());
    EXPECT_THAT(request.files(), IsEmpty());
}

TEST(ProcessMultipartBody, WhenCalledAgainAfterSuccessReadsNoMore)
{
    MemoryCgiInput input(multipart, formField("a", "1") + "--B--\r\n");
    BwaCgiRequest request(&input);
    ASSERT_TRUE(request.processBodyContent());
    const int reads = input.readSizes.size();

    EXPECT_TRUE(request.processBodyContent());
    EXPECT_EQ(input.readSizes.size(), reads);
    EXPECT_EQ(shownVariables(request.formVariables()), "a=1");
}

TEST(ProcessMultipartBody, WhenTheClosingDelimiterHasComeIsCompleteWhateverWasAnnounced)
{
    const QByteArray body = formField("a", "1") + "--B--\r\n";
    MemoryCgiInput input = cutShort(multipart, body, "4294967295");
    BwaCgiRequest request(&input);

    EXPECT_TRUE(request.processBodyContent());
    EXPECT_EQ(shownVariables(request.formVariables()), "a=1");
    EXPECT_EQ(request.bodyBytesRead(), static_cast<unsigned int>(body.size()));
}

TEST(ProcessMultipartBody, GivenQuotedBoundaryUsesItsText)
{
    MemoryCgiInput input("multipart/form-data; charset=x; boundary=\"a;\\b\"",
                         "--a;b\r\nContent-Disposition: form-data; name=n\r\n\r\n1\r\n--a;b--\r\n");
    BwaCgiRequest request(&input);

    EXPECT_TRUE(request.processBodyContent());
    EXPECT_EQ(shownVariables(request.formVariables()), "n=1");
}

TEST(ProcessMultipartBody, GivenNoBoundaryParsesAgainstAnEmptyOne)
{
    MemoryCgiInput input("multipart/form-data",
                         "--\r\nContent-Disposition: form-data; name=n\r\n\r\n1\r\n----\r\n");
    BwaCgiRequest request(&input);

    EXPECT_TRUE(request.processBodyContent());
    EXPECT_EQ(shownVariables(request.formVariables()), "n=1");
}

class ProcessMultipartBodyFailure : public testing::TestWithParam<TextCase>
{
};

TEST_P(ProcessMultipartBodyFailure, KeepsNothing)
{
    MemoryCgiInput input(multipart,
                         formField("a", "1") + fileField("f", "x", "2") + GetParam().text);
    BwaCgiRequest request(&input);

    EXPECT_FALSE(request.processBodyContent());
    EXPECT_THAT(request.formVariables(), IsEmpty());
    EXPECT_THAT(request.files(), IsEmpty());
    EXPECT_EQ(request.body(), QByteArray());
    EXPECT_EQ(request.bodyBytesRead(), static_cast<unsigned int>(input.body.size()));
}

INSTANTIATE_TEST_SUITE_P(
    Cases, ProcessMultipartBodyFailure,
    testing::Values(
        TextCase{"EndsAfterAPart", "", ""}, TextCase{"EndsInTheDelimiter", "--B", ""},
        TextCase{"EndsAfterTheDelimiter", "--B\r\n", ""},
        TextCase{"EndsInTheHeader", "--B\r\nContent-Disposition: form-data; name=b\r\n", ""},
        TextCase{"EndsAfterTheHeader", "--B\r\nContent-Disposition: form-data; name=b\r\n\r\n", ""},
        TextCase{"EndsInTheContent",
                 "--B\r\nContent-Disposition: form-data; name=b\r\n\r\n12345678901234", ""},
        TextCase{"EndsInARefusedPart", "--B\r\nX: y\r\n\r\n12345678901234", ""},
        TextCase{"ClosingDelimiterWithoutLineEnd", "--B--", ""},
        TextCase{"ClosingDelimiterWithHalfALineEnd", "--B--\r", ""}),
    nameOf);

TEST(ProcessMultipartBody, WhenCutAnywhereBeforeTheEndFails)
{
    const QByteArray body = formField("a", "1") + fileField("f", "x", "2") + "--B--\r\n";
    for (int size = 1; size < body.size(); ++size) {
        MemoryCgiInput input(multipart, body.left(size));
        BwaCgiRequest request(&input);

        ASSERT_FALSE(request.processBodyContent()) << "cut after " << size << " bytes";
        ASSERT_TRUE(request.formVariables().isEmpty() && request.files().isEmpty());
    }
}

TEST(ProcessMultipartBody, WhenCalledAgainAfterFailureFailsAgain)
{
    MemoryCgiInput input(multipart, formField("a", "1"));
    BwaCgiRequest request(&input);
    ASSERT_FALSE(request.processBodyContent());

    EXPECT_FALSE(request.processBodyContent());
    EXPECT_THAT(request.formVariables(), IsEmpty());
}

// --- bodyProcessed and bodyFailure

TEST(BodyProcessed, GivenNoBodyIsTrueAtOnce)
{
    MemoryCgiInput input;

    EXPECT_TRUE(BwaCgiRequest(&input).bodyProcessed());
}

TEST(BodyProcessed, GivenABodyIsTrueOnceItHasBeenProcessed)
{
    MemoryCgiInput input("text/plain", "a");
    BwaCgiRequest request(&input);

    EXPECT_FALSE(request.bodyProcessed());
    ASSERT_TRUE(request.processBodyContent());
    EXPECT_TRUE(request.bodyProcessed());
}

TEST(BodyProcessed, WhenTheBodyIsShortStaysFalse)
{
    MemoryCgiInput input = cutShort("text/plain", "a", "2");
    BwaCgiRequest request(&input);

    ASSERT_FALSE(request.processBodyContent());
    EXPECT_FALSE(request.bodyProcessed());
}

TEST(BodyFailure, BeforeAndAfterSuccessIsNone)
{
    MemoryCgiInput input("text/plain", "a");
    BwaCgiRequest request(&input);

    EXPECT_EQ(request.bodyFailure(), BwaCgiRequest::BodyFailure::NoFailure);
    ASSERT_TRUE(request.processBodyContent());
    EXPECT_EQ(request.bodyFailure(), BwaCgiRequest::BodyFailure::NoFailure);
}

struct FailureCase {
    const char* name;
    MemoryCgiInput input;
    BwaCgiRequest::BodyFailure failure;
};

class FailedBody : public testing::TestWithParam<FailureCase>
{
};

TEST_P(FailedBody, TellsWhyEachTime)
{
    MemoryCgiInput input = GetParam().input;
    BwaCgiRequest request(&input);

    ASSERT_FALSE(request.processBodyContent());
    EXPECT_EQ(request.bodyFailure(), GetParam().failure);
    ASSERT_FALSE(request.processBodyContent());
    EXPECT_EQ(request.bodyFailure(), GetParam().failure);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, FailedBody,
    testing::Values(FailureCase{"ShortForm", cutShort(urlEncoded, "a=1", "9"),
                                BwaCgiRequest::BodyFailure::EndedEarly},
                    FailureCase{"ShortRawBody", cutShort("text/plain", "a=1", "9"),
                                BwaCgiRequest::BodyFailure::EndedEarly},
                    FailureCase{"ShortMultipart", cutShort(multipart, formField("a", "1"), "999"),
                                BwaCgiRequest::BodyFailure::EndedEarly},
                    FailureCase{"MultipartWithoutItsEnd",
                                {multipart, formField("a", "1")},
                                BwaCgiRequest::BodyFailure::NotClosed},
                    FailureCase{"ClosingDelimiterWithoutLineEnd",
                                {multipart, formField("a", "1") + "--B--"},
                                BwaCgiRequest::BodyFailure::NotClosed}),
    [](const auto& info) { return std::string(info.param.name); });

class BodyShortOfMemory : public testing::TestWithParam<TextCase>
{
};

TEST_P(BodyShortOfMemory, FailsForGoodAndKeepsNothing)
{
    ShortOfMemory input(GetParam().text, GetParam().result, 1);
    BwaCgiRequest request(&input);

    EXPECT_FALSE(request.processBodyContent());
    EXPECT_EQ(request.bodyFailure(), BwaCgiRequest::BodyFailure::OutOfMemory);
    EXPECT_FALSE(request.processBodyContent());
    EXPECT_EQ(request.body(), QByteArray());
    EXPECT_THAT(request.formVariables(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Cases, BodyShortOfMemory,
                         testing::Values(TextCase{"Form", urlEncoded, "a=1"},
                                         TextCase{"RawBody", "text/plain", "a"},
                                         TextCase{"Multipart", multipart, "--B--\r\n"}),
                         nameOf);

// What is left then is a form of its own, which must not be taken for the whole.
TEST(ProcessMultipartBody, WhenMemoryRunsOutAmidItFailsForGood)
{
    ShortOfMemory input(
        multipart, formField("a", QByteArray(4096, 'x')) + formField("b", "2") + "--B--\r\n", 2);
    BwaCgiRequest request(&input);

    EXPECT_FALSE(request.processBodyContent());
    EXPECT_FALSE(request.processBodyContent());
    EXPECT_EQ(request.bodyFailure(), BwaCgiRequest::BodyFailure::OutOfMemory);
    EXPECT_THAT(request.formVariables(), IsEmpty());
    EXPECT_EQ(request.bodyBytesRead(), 4096U);
}
