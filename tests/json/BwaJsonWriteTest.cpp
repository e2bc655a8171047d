// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "json/BwaJson.h"
#include "support/JsonDescription.h"
#include "support/QtPrinters.h"
#include "support/RandomSource.h"

#include <QByteArray>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QStringList>
#include <QVariant>

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <initializer_list>
#include <limits>
#include <ostream>
#include <string>

namespace {

QByteArray written(const QVariant& value)
{
    bool ok = false;
    const QByteArray text = BwaJson::write(value, &ok);

    EXPECT_EQ(ok, !text.isNull());
    return ok ? text : QByteArray("refused");
}

std::string readAgain(const QVariant& value)
{
    bool ok = false;
    const QVariant result = BwaJson::parse(written(value), &ok);

    return ok ? description(result) : "refused";
}

QVariant nestedLists(int depth, QVariant value = QVariant())
{
    for (int i = 0; i < depth; ++i) {
        value = QVariantList{value};
    }
    return value;
}

QVariant nestedMaps(int depth)
{
    QVariant value;
    for (int i = 0; i < depth; ++i) {
        value = QVariantMap{{QStringLiteral("a"), value}};
    }
    return value;
}

QString utf16(std::initializer_list<ushort> units)
{
    QString text;
    for (const ushort unit : units) {
        text.append(QChar(unit));
    }
    return text;
}

struct WriteCase {
    std::string name;
    QVariant value;
    QByteArray text;
};

void PrintTo(const WriteCase& writeCase, std::ostream* stream)
{
    *stream << writeCase.name;
}

class BwaJsonWrite : public testing::TestWithParam<WriteCase>
{
};

const auto nameOf = [](const auto& info) { return info.param.name; };

template <typename Number>
WriteCase number(const char* name, Number value, const char* text)
{
    return {name, QVariant::fromValue(value), text};
}

template <typename Number>
Number largest()
{
    return std::numeric_limits<Number>::max();
}

template <typename Number>
Number smallest()
{
    return std::numeric_limits<Number>::lowest();
}

} // namespace

TEST_P(BwaJsonWrite, GivesText)
{
    EXPECT_EQ(written(GetParam().value), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Scalars, BwaJsonWrite,
    testing::Values(WriteCase{"Invalid", QVariant(), "null"},
                    WriteCase{"NullPointer", QVariant::fromValue(nullptr), "null"},
                    WriteCase{"True", true, "true"}, WriteCase{"False", false, "false"}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Integers, BwaJsonWrite,
    testing::Values(number<signed char>("SignedChar", -128, "-128"),
                    number<unsigned char>("UnsignedChar", 255, "255"),
                    number<short>("Short", -32768, "-32768"),
                    number<unsigned short>("UnsignedShort", 65535, "65535"),
                    number("Int", smallest<int>(), "-2147483648"),
                    number("UnsignedInt", largest<unsigned int>(), "4294967295"),
                    number<long>("Long", -1, "-1"), number<unsigned long>("UnsignedLong", 1, "1"),
                    number<qlonglong>("BeyondDoublePrecision", 9007199254740993,
                                      "9007199254740993"),
                    number("Smallest64Bit", smallest<qlonglong>(), "-9223372036854775808"),
                    number("Largest63Bit", largest<qlonglong>(), "9223372036854775807"),
                    number("Largest64Bit", largest<qulonglong>(), "18446744073709551615")),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    RealNumbers, BwaJsonWrite,
    testing::Values(number("Fraction", 0.1, "0.1"), number("Negative", -149.95, "-149.95"),
                    number("Whole", 3.0, "3.0"), number("Zero", 0.0, "0.0"),
                    number("NegativeZero", -0.0, "-0.0"), number("Large", 1e300, "1e+300"),
                    number("Small", 5e-324, "5e-324"),
                    number("Largest", largest<double>(), "1.7976931348623157e+308"),
                    number("SeventeenDigits", 0.1 + 0.2, "0.30000000000000004"),
                    number("Beyond64Bit", 18446744073709551616.0, "18446744073709551616.0"),
                    number("Float", 0.1F, "0.1"), number("WholeFloat", 2.0F, "2.0"),
                    number("NotANumber", std::numeric_limits<double>::quiet_NaN(), "null"),
                    number("Infinity", std::numeric_limits<double>::infinity(), "null"),
                    number("NegativeInfinity", -std::numeric_limits<double>::infinity(), "null"),
                    number("InfiniteFloat", std::numeric_limits<float>::infinity(), "null")),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Strings, BwaJsonWrite,
    testing::Values(WriteCase{"Empty", QString::fromLatin1(""), R"("")"},
                    WriteCase{"Null", QString(), R"("")"},
                    WriteCase{"Plain", QStringLiteral("a/b'<&>"), R"("a/b'<&>")"},
                    WriteCase{"Quote", QStringLiteral("say \"x\""), R"("say \"x\"")"},
                    WriteCase{"Backslash", QStringLiteral("\\\\n"), R"("\\\\n")"},
                    WriteCase{"Named", QStringLiteral("\b\f\n\r\t"), R"("\b\f\n\r\t")"},
                    WriteCase{"Control", QStringLiteral("\x01\x0b\x1f"), R"("\u0001\u000b\u001f")"},
                    WriteCase{"Nul", utf16({'a', 0, 'b'}), R"("a\u0000b")"},
                    WriteCase{"EscapesWithin", QStringLiteral("a\"b\\c\nd"), R"("a\"b\\c\nd")"},
                    WriteCase{"Delete", QStringLiteral("\x7f"), "\"\x7f\""},
                    WriteCase{"TwoBytes", utf16({0xE9}), "\"\xc3\xa9\""},
                    WriteCase{"LineSeparator", utf16({0x2028}), "\"\xe2\x80\xa8\""},
                    WriteCase{"ByteOrderMark", utf16({0xFEFF, 'a'}), "\"\xef\xbb\xbf\x61\""},
                    WriteCase{"Noncharacter", utf16({0xFFFE}), "\"\xef\xbf\xbe\""},
                    WriteCase{"SurrogatePair", utf16({0xD83D, 0xDE00}), "\"\xf0\x9f\x98\x80\""}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    LoneSurrogates, BwaJsonWrite,
    testing::Values(WriteCase{"High", utf16({0xD83D}), "\"\xef\xbf\xbd\""},
                    WriteCase{"Low", utf16({0xDE00}), "\"\xef\xbf\xbd\""},
                    WriteCase{"HighBeforeText", utf16({0xD83D, 'a'}), "\"\xef\xbf\xbd\x61\""},
                    WriteCase{"Swapped", utf16({0xDE00, 0xD83D}), "\"\xef\xbf\xbd\xef\xbf\xbd\""},
                    WriteCase{"HighBeforePair", utf16({0xD83D, 0xD83D, 0xDE00}),
                              "\"\xef\xbf\xbd\xf0\x9f\x98\x80\""},
                    WriteCase{"InKey", QVariantMap{{utf16({0xD800}), 1}}, "{\"\xef\xbf\xbd\":1}"}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Containers, BwaJsonWrite,
    testing::Values(
        WriteCase{"EmptyList", QVariantList(), "[]"}, WriteCase{"EmptyMap", QVariantMap(), "{}"},
        WriteCase{"EmptyStrings", QStringList(), "[]"},
        WriteCase{"List", QVariantList({1, QVariant(), QVariantList({true})}), "[1,null,[true]]"},
        WriteCase{"Strings", QStringList({QStringLiteral("a"), QString()}), R"(["a",""])"},
        WriteCase{"SortedMap",
                  QVariantMap{{QStringLiteral("b"), QVariantMap{{QString(), 2.5}}},
                              {QStringLiteral("a\n"), QStringLiteral("x")}},
                  R"({"a\n":"x","b":{"":2.5}})"}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    WithoutText, BwaJsonWrite,
    testing::Values(
        WriteCase{"Bytes", QByteArray("x"), "refused"},
        WriteCase{"Character", QVariant::fromValue('x'), "refused"},
        WriteCase{"Date", QDateTime::fromSecsSinceEpoch(0), "refused"},
        WriteCase{"DateInList", QVariantList{QDateTime::fromSecsSinceEpoch(0)}, "refused"},
        WriteCase{"DateInMap", QVariantMap{{QString(), QDateTime::fromSecsSinceEpoch(0)}},
                  "refused"},
        WriteCase{"Lists1025", nestedLists(1025), "refused"},
        WriteCase{"Maps1025", nestedMaps(1025), "refused"},
        WriteCase{"StringsAt1025", nestedLists(1024, QStringList()), "refused"}),
    nameOf);

TEST(Write, WithoutAVerdictGivesTextOrNull)
{
    EXPECT_EQ(BwaJson::write(1), "1");
    EXPECT_TRUE(BwaJson::write(QByteArray("x")).isNull());
}

TEST(Write, GivenBigListStopsAtTheDepthOfOneBranchOnly)
{
    const QVariantList branches{nestedLists(1023), nestedLists(1023)};

    EXPECT_TRUE(written(branches) != "refused");
}

// What is written at the greatest depth can be read again.
TEST(Write, Given1024ContainersGivesAReadableText)
{
    EXPECT_TRUE(readAgain(nestedLists(1024)) == description(nestedLists(1024)));
    EXPECT_TRUE(readAgain(nestedMaps(1024)) == description(nestedMaps(1024)));
}

TEST(Write, GivenValuesOfTheCorpusGivesThemBack)
{
    const QStringList folders = {QStringLiteral("test_parsing"), QStringLiteral("test_transform")};
    int accepted = 0;
    for (const QString& folder : folders) {
        const QDir corpus(QStringLiteral(BWA_TEST_DATA_DIR "/json/") + folder);
        for (const QString& name : corpus.entryList({QStringLiteral("*.json")}, QDir::Files)) {
            QFile file(corpus.filePath(name));
            ASSERT_TRUE(file.open(QIODevice::ReadOnly));
            bool ok = false;
            const QVariant value = BwaJson::parse(file.readAll(), &ok);
            if (ok) {
                ++accepted;
                EXPECT_EQ(readAgain(value), description(value)) << name.toStdString();
            }
        }
    }

    EXPECT_EQ(accepted, 113);
}

TEST(Write, GivenRandomBitsAsADoubleGivesThemBack)
{
    RandomSource random;

    for (int round = RandomSource::rounds(5000); round > 0; --round) {
        quint64 bits = 0;
        for (int byte = 0; byte < 8; ++byte) {
            bits = bits << 8 | static_cast<quint64>(random.below(256));
        }
        double number = 0;
        std::memcpy(&number, &bits, sizeof number);
        const QVariant value = std::isfinite(number) ? QVariant(number) : QVariant();

        ASSERT_EQ(readAgain(number), description(value));
    }
}

TEST(Write, GivenRandomTextGivesItBack)
{
    RandomSource random;
    const QString alphabet =
        utf16({0, 1, 8, 9, 10, 31, ' ', '"', '\\', 'a', 0x7F, 0xE9, 0x2028, 0xFEFF, 0xFFFF});

    for (int round = RandomSource::rounds(5000); round > 0; --round) {
        const QString text = random.text(alphabet, 12);

        ASSERT_EQ(BwaJson::parse(written(text)).toString(), text);
    }
}
