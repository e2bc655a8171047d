// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "support/JsonExtraction.h"
#include "support/QtPrinters.h"

#include <QRegExp>

#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <string>

// Base64 and hexadecimal texts: verdicts against regular expressions, and results.

namespace {

struct EncodedCase {
    const char* name;
    QString text;
    QByteArray expected; // null when the text is refused
};

void PrintTo(const EncodedCase& testCase, std::ostream* stream)
{
    *stream << testCase.name;
}

/** The decoded bytes, or null when the text is refused; never null for a text that is taken. */
QByteArray decoded(const JsonExtractor<QByteArray>& extractor, const QString& text)
{
    QByteArray bytes("canary");
    if (extractor.fromValue(QVariant(text), bytes)) {
        return bytes.isNull() ? QByteArray("") : bytes;
    }
    EXPECT_EQ(bytes, QByteArray("canary"));
    return QByteArray();
}

std::string caseName(const testing::TestParamInfo<EncodedCase>& info)
{
    return info.param.name;
}

class Base64Value : public testing::TestWithParam<EncodedCase>
{
};

class HexValue : public testing::TestWithParam<EncodedCase>
{
};

QString text(const char* latin1)
{
    return QString::fromLatin1(latin1);
}

} // namespace

TEST_P(Base64Value, IsDecodedOrRefused)
{
    const QByteArray bytes = decoded(base64Extractor, GetParam().text);

    EXPECT_EQ(bytes, GetParam().expected);
    EXPECT_EQ(bytes.isNull(), GetParam().expected.isNull());
}

INSTANTIATE_TEST_SUITE_P(
    Taken, Base64Value,
    testing::Values(EncodedCase{"Empty", text(""), QByteArray("")},
                    EncodedCase{"Null", QString(), QByteArray("")},
                    EncodedCase{"OneByte", text("QQ=="), QByteArray("A")},
                    EncodedCase{"TwoBytes", text("QUI="), QByteArray("AB")},
                    EncodedCase{"ThreeBytes", text("QUJD"), QByteArray("ABC")},
                    EncodedCase{"FourBytes", text("QUJDRA=="), QByteArray("ABCD")},
                    EncodedCase{"PlusAndSlash", text("+/+/"), QByteArray("\xfb\xff\xbf")},
                    EncodedCase{"Zeros", text("AAA="), QByteArray("\0\0", 2)},
                    EncodedCase{"UnusedBitsSet", text("QR=="), QByteArray("A")}),
    caseName);

INSTANTIATE_TEST_SUITE_P(
    Refused, Base64Value,
    testing::Values(EncodedCase{"TwoWithoutPadding", text("QQ"), QByteArray()},
                    EncodedCase{"TwoWithOnePaddingSign", text("QQ="), QByteArray()},
                    EncodedCase{"ThreeWithoutPadding", text("QUI"), QByteArray()},
                    EncodedCase{"OneCharacter", text("Q"), QByteArray()},
                    EncodedCase{"ThreePaddingSigns", text("Q==="), QByteArray()},
                    EncodedCase{"PaddingOnly", text("===="), QByteArray()},
                    EncodedCase{"OnePaddingSign", text("="), QByteArray()},
                    EncodedCase{"FourAndPadding", text("QUJD===="), QByteArray()},
                    EncodedCase{"PaddingInside", text("QQ==QQ=="), QByteArray()},
                    EncodedCase{"PaddingBeforeACharacter", text("QQ=A"), QByteArray()},
                    EncodedCase{"TrailingLineFeed", text("QQ==\n"), QByteArray()},
                    EncodedCase{"LineFeedAsTheFourth", text("QUJ\n"), QByteArray()},
                    EncodedCase{"LeadingBlanks", text("    QQ=="), QByteArray()},
                    EncodedCase{"BlankInside", text("QU D"), QByteArray()},
                    EncodedCase{"UrlAlphabet", text("-_-_"), QByteArray()},
                    EncodedCase{"NulAtTheEnd", QString::fromLatin1("QUJD\0", 5), QByteArray()},
                    EncodedCase{"NulAsTheFourth", QString::fromLatin1("QUJ\0", 4), QByteArray()},
                    EncodedCase{"NulInFront", QString::fromLatin1("\0QUJD\0\0\0", 8), QByteArray()},
                    EncodedCase{"NonLatin1Letter", text("QUJ") + QChar(0x0141), QByteArray()},
                    EncodedCase{"FullWidthLetter", text("QUJ") + QChar(0xff21), QByteArray()},
                    EncodedCase{"FullWidthPadding", text("QUJ") + QChar(0xff1d), QByteArray()}),
    caseName);

TEST_P(HexValue, IsDecodedOrRefused)
{
    const QByteArray bytes = decoded(hexExtractor, GetParam().text);

    EXPECT_EQ(bytes, GetParam().expected);
    EXPECT_EQ(bytes.isNull(), GetParam().expected.isNull());
}

INSTANTIATE_TEST_SUITE_P(
    Taken, HexValue,
    testing::Values(EncodedCase{"Empty", text(""), QByteArray("")},
                    EncodedCase{"Null", QString(), QByteArray("")},
                    EncodedCase{"MixedCase", text("aBfF"), QByteArray("\xab\xff")},
                    EncodedCase{"Digits", text("0019"), QByteArray("\x00\x19", 2)},
                    EncodedCase{"EveryDigit", text("0123456789abcdefABCDEF"),
                                QByteArray("\x01\x23\x45\x67\x89\xab\xcd\xef\xab\xcd\xef")}),
    caseName);

INSTANTIATE_TEST_SUITE_P(
    Refused, HexValue,
    testing::Values(EncodedCase{"ThreeDigits", text("abc"), QByteArray()},
                    EncodedCase{"OneDigit", text("a"), QByteArray()},
                    EncodedCase{"NoDigit", text("ag"), QByteArray()},
                    EncodedCase{"Prefix", text("0x12"), QByteArray()},
                    EncodedCase{"TrailingLineFeed", text("ab\n"), QByteArray()},
                    EncodedCase{"LineFeedAsTheSecond", text("a\n"), QByteArray()},
                    EncodedCase{"BlanksInside", text("ab  cd"), QByteArray()},
                    EncodedCase{"NulAtTheEnd", QString::fromLatin1("ab\0", 3), QByteArray()},
                    EncodedCase{"TwoNulsAtTheEnd", QString::fromLatin1("ab\0\0", 4), QByteArray()},
                    EncodedCase{"FullWidthDigit", text("a") + QChar(0xff11), QByteArray()},
                    EncodedCase{"ArabicDigit", text("a") + QChar(0x0661), QByteArray()}),
    caseName);

namespace {

QRegExp base64Pattern()
{
    return QRegExp(text("(?:[A-Za-z0-9+\\/]{4})*(?:[A-Za-z0-9+\\/]{2}==|[A-Za-z0-9+\\/]{3}=)?"));
}

QRegExp hexPattern()
{
    return QRegExp(text("(?:[A-Fa-f0-9]{2})*"));
}

/** Checks both extractors on one text against the patterns and Qt's decoders. */
class Oracle
{
public:
    testing::AssertionResult agreesOn(const QString& candidate)
    {
        const bool isBase64 = m_base64.exactMatch(candidate);
        const bool isHex = m_hex.exactMatch(candidate);
        m_accepted += isBase64 || isHex;
        m_refused += !isBase64 || !isHex;
        const bool agrees = isAsExpected(base64Extractor, candidate, isBase64,
                                         QByteArray::fromBase64(candidate.toLatin1())) &&
            isAsExpected(hexExtractor, candidate, isHex, QByteArray::fromHex(candidate.toLatin1()));
        return agrees ? testing::AssertionSuccess()
                      : testing::AssertionFailure() << textOf(candidate);
    }

    /** Both verdicts have occurred often enough for the comparison to mean something. */
    bool hasSeenBothVerdicts() const { return m_accepted > 10 && m_refused > 10; }

private:
    static bool isAsExpected(const JsonExtractor<QByteArray>& extractor, const QString& candidate,
                             bool accepted, const QByteArray& bytes)
    {
        QByteArray out("canary");
        const bool taken = extractor.fromValue(QVariant(candidate), out);
        return taken == accepted && out == (accepted ? bytes : QByteArray("canary"));
    }

    QRegExp m_base64 = base64Pattern();
    QRegExp m_hex = hexPattern();
    int m_accepted = 0;
    int m_refused = 0;
};

} // namespace

TEST(EncodedBytes, GivenEveryBmpCharacterInEveryPlaceAgreeWithThePatterns)
{
    Oracle oracle;
    for (int code = 0; code < 0x10000; ++code) {
        for (int place = 0; place < 4; ++place) {
            QString candidate = text("ABab");
            candidate[place] = QChar(static_cast<ushort>(code));

            ASSERT_TRUE(oracle.agreesOn(candidate));
        }
    }
    EXPECT_TRUE(oracle.hasSeenBothVerdicts());
}

namespace {

/** The texts of @a length characters of @a alphabet. */
QStringList textsOf(const QString& alphabet, int length)
{
    if (length == 0) {
        return QStringList(QString());
    }
    QStringList texts;
    for (const QString& start : textsOf(alphabet, length - 1)) {
        for (const QChar character : alphabet) {
            texts.append(start + character);
        }
    }
    return texts;
}

} // namespace

TEST(EncodedBytes, GivenEveryShortTextOfAFewCharactersAgreeWithThePatterns)
{
    Oracle oracle;
    for (int length = 0; length <= 6; ++length) {
        const QStringList texts = textsOf(QString::fromLatin1("Az=\n\0", 5), length);
        for (const QString& candidate : texts) {
            ASSERT_TRUE(oracle.agreesOn(candidate));
        }
    }
    EXPECT_TRUE(oracle.hasSeenBothVerdicts());
}

TEST(EncodedBytes, GivenRandomTextsAgreeWithThePatterns)
{
    const unsigned int seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const auto below = [&random](int bound) {
        return std::uniform_int_distribution<int>(0, bound - 1)(random);
    };
    const QString valid = text("ABCDEFabcdef0123456789");
    const QString foreign =
        QString::fromLatin1("==\n\r \0-_gZ+/\xe9", 13) + QChar(0x0141) + QChar(0xff21);
    Oracle oracle;
    for (int round = 0; round < 20000; ++round) {
        QString candidate;
        for (int left = below(25); left > 0; --left) {
            candidate.append(valid.at(below(valid.size())));
        }
        for (int left = below(3); left > 0; --left) {
            candidate.append(QLatin1Char('='));
        }
        for (int left = below(3); left > 0; --left) {
            candidate.insert(below(candidate.size() + 1), foreign.at(below(foreign.size())));
        }

        ASSERT_TRUE(oracle.agreesOn(candidate));
    }
    EXPECT_TRUE(oracle.hasSeenBothVerdicts());
}

TEST(EncodedBytes, GivenLongTextsAreDecodedWhole)
{
    const QByteArray bytes(300001, '\x5a');

    EXPECT_EQ(decoded(base64Extractor, QString::fromLatin1(bytes.toBase64())), bytes);
    EXPECT_EQ(decoded(hexExtractor, QString::fromLatin1(bytes.toHex())), bytes);
}
