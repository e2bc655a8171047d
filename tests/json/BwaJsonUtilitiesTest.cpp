// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "json/BwaJsonUtilities.h"

#include "support/JsonExtraction.h"
#include "support/QtPrinters.h"
#include "support/QtVersion.h"
#include "support/Skips.h"

#include <QChar>
#include <QDate>
#include <QJsonValue>
#include <QUuid>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

using testing::ElementsAre;

namespace {

const QString key = QStringLiteral("key");

QVariant unsignedNumber(qulonglong number)
{
    return QVariant(number);
}
QVariant signedNumber(qlonglong number)
{
    return QVariant(number);
}

const qlonglong lowest = std::numeric_limits<qlonglong>::min();

} // namespace

// Lookups

TEST(FieldValue, GivenAPresentKeyReturnsItsValue)
{
    const QVariantMap object{{key, signedNumber(-3)}};

    const QVariant value = BwaJsonUtilities::fieldValue(object, key);

    EXPECT_EQ(value.userType(), QMetaType::LongLong);
    EXPECT_EQ(value.toLongLong(), -3);
}

TEST(FieldValue, GivenAnAbsentKeyReturnsAnInvalidVariant)
{
    const QVariantMap object{{QStringLiteral("Key"), 1}};

    EXPECT_FALSE(BwaJsonUtilities::fieldValue(object, key).isValid());
    EXPECT_FALSE(BwaJsonUtilities::fieldValue(QVariantMap(), QString()).isValid());
}

TEST(FieldValue, GivenANullMemberReturnsAnInvalidVariant)
{
    EXPECT_FALSE(BwaJsonUtilities::fieldValue(QVariantMap{{key, QVariant()}}, key).isValid());
}

TEST(FieldValue, ComparesKeysExactly)
{
    const QString withNul = QString::fromLatin1("key\0", 4);
    const QVariantMap object{{QStringLiteral("KEY"), QStringLiteral("upper")},
                             {QStringLiteral("key "), QStringLiteral("blank")},
                             {withNul, QStringLiteral("nul")},
                             {QLatin1String(""), QStringLiteral("empty")}};

    EXPECT_FALSE(BwaJsonUtilities::fieldValue(object, key).isValid());
    EXPECT_EQ(BwaJsonUtilities::fieldValue(object, withNul).toString(), QLatin1String("nul"));
    EXPECT_EQ(BwaJsonUtilities::fieldValue(object, QString()).toString(), QLatin1String("empty"));
}

TEST(IsNullValue, GivenANullMemberIsTrue)
{
    EXPECT_TRUE(BwaJsonUtilities::isNullValue(QVariantMap{{key, QVariant()}}, key));
}

TEST(IsNullValue, GivenAnAbsentKeyIsFalse)
{
    const QVariantMap object{{QStringLiteral("Key"), QVariant()}};

    EXPECT_FALSE(BwaJsonUtilities::isNullValue(object, key));
    EXPECT_FALSE(BwaJsonUtilities::isNullValue(QVariantMap(), key));
}

TEST(IsNullValue, GivenAnyOtherJsonValueIsFalse)
{
    for (const QVariant& value :
         {QVariant(false), signedNumber(0), unsignedNumber(0), QVariant(0.0),
          QVariant(QLatin1String("")), QVariant(QVariantList()), QVariant(QVariantMap())}) {
        EXPECT_FALSE(BwaJsonUtilities::isNullValue(QVariantMap{{key, value}}, key))
            << value.typeName();
    }
}

TEST(IsNullValue, GivenAnyVariantThatCallsItselfNullIsTrue)
{
    if (withQt6()) {
        GTEST_SKIP() << "to Qt 6 a variant with a null string is not null";
    }
    for (const QVariant& value :
         {QVariant::fromValue(nullptr), QVariant(QString()), nullVariant(QMetaType::LongLong),
          nullVariant(QMetaType::QString)}) {
        EXPECT_TRUE(BwaJsonUtilities::isNullValue(QVariantMap{{key, value}}, key))
            << value.typeName();
    }
}

// Integers

namespace {

struct NumberCase {
    const char* name;
    std::function<std::string(const QVariant&)> extract;
    QVariant value;
    const char* expected;
};

void PrintTo(const NumberCase& testCase, std::ostream* stream)
{
    *stream << testCase.name;
}

class IntegerValue : public testing::TestWithParam<NumberCase>
{
};

template <typename Target>
std::string integer(const QVariant& value)
{
    return extracted(integerExtractor<Target>, value);
}

constexpr const char* refused = "refused";

std::string caseName(const testing::TestParamInfo<NumberCase>& info)
{
    return info.param.name;
}

} // namespace

TEST_P(IntegerValue, IsTakenWithinTheBoundsAndRefusedBeyond)
{
    EXPECT_EQ(GetParam().extract(GetParam().value), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    UnsignedChar, IntegerValue,
    testing::Values(
        NumberCase{"UnsignedZero", integer<unsigned char>, unsignedNumber(0), "0"},
        NumberCase{"Unsigned254", integer<unsigned char>, unsignedNumber(254), "254"},
        NumberCase{"Unsigned255", integer<unsigned char>, unsignedNumber(255), "255"},
        NumberCase{"Unsigned256", integer<unsigned char>, unsignedNumber(256), refused},
        NumberCase{"UnsignedLargest", integer<unsigned char>,
                   unsignedNumber(18446744073709551615ULL), refused},
        NumberCase{"SignedMinusOne", integer<unsigned char>, signedNumber(-1), refused},
        NumberCase{"SignedZero", integer<unsigned char>, signedNumber(0), "0"},
        NumberCase{"SignedOne", integer<unsigned char>, signedNumber(1), "1"},
        NumberCase{"Signed254", integer<unsigned char>, signedNumber(254), "254"},
        NumberCase{"Signed255", integer<unsigned char>, signedNumber(255), "255"},
        NumberCase{"Signed256", integer<unsigned char>, signedNumber(256), refused},
        NumberCase{"SignedLowest", integer<unsigned char>, signedNumber(lowest), refused},
        NumberCase{"SignedMinus255", integer<unsigned char>, signedNumber(-255), refused}),
    caseName);

INSTANTIATE_TEST_SUITE_P(
    SignedChar, IntegerValue,
    testing::Values(NumberCase{"UnsignedZero", integer<signed char>, unsignedNumber(0), "0"},
                    NumberCase{"Unsigned126", integer<signed char>, unsignedNumber(126), "126"},
                    NumberCase{"Unsigned127", integer<signed char>, unsignedNumber(127), "127"},
                    NumberCase{"Unsigned128", integer<signed char>, unsignedNumber(128), refused},
                    NumberCase{"UnsignedLargest", integer<signed char>,
                               unsignedNumber(18446744073709551615ULL), refused},
                    NumberCase{"SignedMinus129", integer<signed char>, signedNumber(-129), refused},
                    NumberCase{"SignedMinus128", integer<signed char>, signedNumber(-128), "-128"},
                    NumberCase{"SignedMinus127", integer<signed char>, signedNumber(-127), "-127"},
                    NumberCase{"SignedMinusOne", integer<signed char>, signedNumber(-1), "-1"},
                    NumberCase{"SignedZero", integer<signed char>, signedNumber(0), "0"},
                    NumberCase{"Signed126", integer<signed char>, signedNumber(126), "126"},
                    NumberCase{"Signed127", integer<signed char>, signedNumber(127), "127"},
                    NumberCase{"Signed128", integer<signed char>, signedNumber(128), refused},
                    NumberCase{"SignedLowest", integer<signed char>, signedNumber(lowest),
                               refused}),
    caseName);

INSTANTIATE_TEST_SUITE_P(
    UnsignedShort, IntegerValue,
    testing::Values(
        NumberCase{"UnsignedZero", integer<unsigned short>, unsignedNumber(0), "0"},
        NumberCase{"Unsigned65534", integer<unsigned short>, unsignedNumber(65534), "65534"},
        NumberCase{"Unsigned65535", integer<unsigned short>, unsignedNumber(65535), "65535"},
        NumberCase{"Unsigned65536", integer<unsigned short>, unsignedNumber(65536), refused},
        NumberCase{"SignedMinusOne", integer<unsigned short>, signedNumber(-1), refused},
        NumberCase{"SignedZero", integer<unsigned short>, signedNumber(0), "0"},
        NumberCase{"SignedOne", integer<unsigned short>, signedNumber(1), "1"},
        NumberCase{"Signed65534", integer<unsigned short>, signedNumber(65534), "65534"},
        NumberCase{"Signed65535", integer<unsigned short>, signedNumber(65535), "65535"},
        NumberCase{"Signed65536", integer<unsigned short>, signedNumber(65536), refused}),
    caseName);

INSTANTIATE_TEST_SUITE_P(
    Short, IntegerValue,
    testing::Values(NumberCase{"UnsignedZero", integer<short>, unsignedNumber(0), "0"},
                    NumberCase{"Unsigned32766", integer<short>, unsignedNumber(32766), "32766"},
                    NumberCase{"Unsigned32767", integer<short>, unsignedNumber(32767), "32767"},
                    NumberCase{"Unsigned32768", integer<short>, unsignedNumber(32768), refused},
                    NumberCase{"SignedMinus32769", integer<short>, signedNumber(-32769), refused},
                    NumberCase{"SignedMinus32768", integer<short>, signedNumber(-32768), "-32768"},
                    NumberCase{"SignedMinus32767", integer<short>, signedNumber(-32767), "-32767"},
                    NumberCase{"SignedMinusOne", integer<short>, signedNumber(-1), "-1"},
                    NumberCase{"Signed32766", integer<short>, signedNumber(32766), "32766"},
                    NumberCase{"Signed32767", integer<short>, signedNumber(32767), "32767"},
                    NumberCase{"Signed32768", integer<short>, signedNumber(32768), refused}),
    caseName);

INSTANTIATE_TEST_SUITE_P(
    UnsignedInt, IntegerValue,
    testing::Values(NumberCase{"UnsignedZero", integer<unsigned int>, unsignedNumber(0), "0"},
                    NumberCase{"Unsigned4294967294", integer<unsigned int>,
                               unsignedNumber(4294967294ULL), "4294967294"},
                    NumberCase{"Unsigned4294967295", integer<unsigned int>,
                               unsignedNumber(4294967295ULL), "4294967295"},
                    NumberCase{"Unsigned4294967296", integer<unsigned int>,
                               unsignedNumber(4294967296ULL), refused},
                    NumberCase{"SignedMinusOne", integer<unsigned int>, signedNumber(-1), refused},
                    NumberCase{"SignedZero", integer<unsigned int>, signedNumber(0), "0"},
                    NumberCase{"SignedOne", integer<unsigned int>, signedNumber(1), "1"},
                    NumberCase{"Signed4294967294", integer<unsigned int>,
                               signedNumber(4294967294LL), "4294967294"},
                    NumberCase{"Signed4294967295", integer<unsigned int>,
                               signedNumber(4294967295LL), "4294967295"},
                    NumberCase{"Signed4294967296", integer<unsigned int>,
                               signedNumber(4294967296LL), refused}),
    caseName);

INSTANTIATE_TEST_SUITE_P(
    Int, IntegerValue,
    testing::Values(
        NumberCase{"UnsignedZero", integer<int>, unsignedNumber(0), "0"},
        NumberCase{"Unsigned2147483646", integer<int>, unsignedNumber(2147483646), "2147483646"},
        NumberCase{"Unsigned2147483647", integer<int>, unsignedNumber(2147483647), "2147483647"},
        NumberCase{"Unsigned2147483648", integer<int>, unsignedNumber(2147483648ULL), refused},
        NumberCase{"SignedMinus2147483649", integer<int>, signedNumber(-2147483649LL), refused},
        NumberCase{"SignedMinus2147483648", integer<int>, signedNumber(-2147483648LL),
                   "-2147483648"},
        NumberCase{"SignedMinus2147483647", integer<int>, signedNumber(-2147483647), "-2147483647"},
        NumberCase{"SignedMinusOne", integer<int>, signedNumber(-1), "-1"},
        NumberCase{"Signed2147483646", integer<int>, signedNumber(2147483646), "2147483646"},
        NumberCase{"Signed2147483647", integer<int>, signedNumber(2147483647), "2147483647"},
        NumberCase{"Signed2147483648", integer<int>, signedNumber(2147483648LL), refused}),
    caseName);

INSTANTIATE_TEST_SUITE_P(
    UnsignedLongLong, IntegerValue,
    testing::Values(
        NumberCase{"UnsignedZero", integer<unsigned long long>, unsignedNumber(0), "0"},
        NumberCase{"UnsignedAboveSigned", integer<unsigned long long>,
                   unsignedNumber(9223372036854775808ULL), "9223372036854775808"},
        NumberCase{"UnsignedLargest", integer<unsigned long long>,
                   unsignedNumber(18446744073709551615ULL), "18446744073709551615"},
        NumberCase{"SignedLowest", integer<unsigned long long>, signedNumber(lowest), refused},
        NumberCase{"SignedMinusOne", integer<unsigned long long>, signedNumber(-1), refused},
        NumberCase{"SignedZero", integer<unsigned long long>, signedNumber(0), "0"},
        NumberCase{"SignedOne", integer<unsigned long long>, signedNumber(1), "1"},
        NumberCase{"SignedLargest", integer<unsigned long long>,
                   signedNumber(9223372036854775807LL), "9223372036854775807"}),
    caseName);

INSTANTIATE_TEST_SUITE_P(
    LongLong, IntegerValue,
    testing::Values(NumberCase{"UnsignedZero", integer<long long>, unsignedNumber(0), "0"},
                    NumberCase{"UnsignedBelowTheBound", integer<long long>,
                               unsignedNumber(9223372036854775806ULL), "9223372036854775806"},
                    NumberCase{"UnsignedAtTheBound", integer<long long>,
                               unsignedNumber(9223372036854775807ULL), "9223372036854775807"},
                    NumberCase{"UnsignedAboveTheBound", integer<long long>,
                               unsignedNumber(9223372036854775808ULL), refused},
                    NumberCase{"UnsignedLargest", integer<long long>,
                               unsignedNumber(18446744073709551615ULL), refused},
                    NumberCase{"SignedLowest", integer<long long>, signedNumber(lowest),
                               "-9223372036854775808"},
                    NumberCase{"SignedMinusOne", integer<long long>, signedNumber(-1), "-1"},
                    NumberCase{"SignedLargest", integer<long long>,
                               signedNumber(9223372036854775807LL), "9223372036854775807"}),
    caseName);

INSTANTIATE_TEST_SUITE_P(
    Float, IntegerValue,
    testing::Values(
        NumberCase{"UnsignedThree", integer<float>, unsignedNumber(3), "3"},
        NumberCase{"UnsignedRounded", integer<float>, unsignedNumber(16777217), "16777216"},
        NumberCase{"UnsignedLargest", integer<float>, unsignedNumber(18446744073709551615ULL),
                   "1.84467441e+19"},
        NumberCase{"SignedMinusThree", integer<float>, signedNumber(-3), "-3"},
        NumberCase{"SignedRounded", integer<float>, signedNumber(-16777217), "-16777216"},
        NumberCase{"SignedLowest", integer<float>, signedNumber(lowest), "-9.22337204e+18"}),
    caseName);

INSTANTIATE_TEST_SUITE_P(
    Double, IntegerValue,
    testing::Values(NumberCase{"UnsignedThree", integer<double>, unsignedNumber(3), "3"},
                    NumberCase{"UnsignedRounded", integer<double>,
                               unsignedNumber(9007199254740993ULL), "9007199254740992"},
                    NumberCase{"UnsignedLargest", integer<double>,
                               unsignedNumber(18446744073709551615ULL), "1.8446744073709552e+19"},
                    NumberCase{"SignedMinusThree", integer<double>, signedNumber(-3), "-3"},
                    NumberCase{"SignedRounded", integer<double>, signedNumber(-9007199254740993LL),
                               "-9007199254740992"},
                    NumberCase{"SignedLowest", integer<double>, signedNumber(lowest),
                               "-9.2233720368547758e+18"}),
    caseName);

INSTANTIATE_TEST_SUITE_P(
    LongDouble, IntegerValue,
    testing::Values(NumberCase{"UnsignedThree", integer<long double>, unsignedNumber(3), "3"},
                    NumberCase{"SignedMinusThree", integer<long double>, signedNumber(-3), "-3"},
                    NumberCase{"SignedLowest", integer<long double>, signedNumber(lowest),
                               "-9.2233720368547758e+18"}),
    caseName);

TEST(IntegerValueAsLongDouble, KeepsEveryDigitThatTheTypeHolds)
{
    if (underValgrind()) {
        GTEST_SKIP() << "to valgrind a long double is a double";
    }
    long double out = 0;

    EXPECT_TRUE(BwaJsonUtilities::integerValue(unsignedNumber(18446744073709551615ULL), out));
    EXPECT_EQ(out, static_cast<long double>(18446744073709551615ULL));
    EXPECT_TRUE(BwaJsonUtilities::integerValue(signedNumber(-9007199254740993LL), out));
    EXPECT_EQ(out, static_cast<long double>(-9007199254740993LL));
}

// Real numbers

namespace {

class RealNumberValue : public testing::TestWithParam<NumberCase>
{
};

template <typename Target>
std::string real(const QVariant& value)
{
    return extracted(realNumberExtractor<Target>, value);
}

const double infinity = std::numeric_limits<double>::infinity();
const double largestFloat = 3.4028234663852886e38;
const double largestDouble = 1.7976931348623157e308;

} // namespace

TEST_P(RealNumberValue, IsTakenWithinTheBoundsAndRefusedBeyond)
{
    EXPECT_EQ(GetParam().extract(GetParam().value), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Float, RealNumberValue,
    testing::Values(
        NumberCase{"Half", real<float>, 0.5, "0.5"},
        NumberCase{"MinusHalf", real<float>, -0.5, "-0.5"},
        NumberCase{"Rounded", real<float>, 0.1, "0.100000001"},
        NumberCase{"MinusZero", real<float>, -0.0, "-0"},
        NumberCase{"BelowTheBound", real<float>, std::nextafter(largestFloat, 0.0),
                   "3.40282347e+38"},
        NumberCase{"AtTheBound", real<float>, largestFloat, "3.40282347e+38"},
        NumberCase{"AboveTheBound", real<float>, std::nextafter(largestFloat, infinity), refused},
        NumberCase{"AtTheLowerBound", real<float>, -largestFloat, "-3.40282347e+38"},
        NumberCase{"BelowTheLowerBound", real<float>, std::nextafter(-largestFloat, -infinity),
                   refused},
        NumberCase{"RoundedBoundIsBeyond", real<float>, 3.4028235e38, refused},
        NumberCase{"TenToThe39", real<float>, 1e39, refused},
        NumberCase{"LargestDouble", real<float>, largestDouble, refused},
        NumberCase{"Infinity", real<float>, infinity, refused},
        NumberCase{"MinusInfinity", real<float>, -infinity, refused},
        NumberCase{"UnderflowsToZero", real<float>, 1e-50, "0"},
        NumberCase{"UnderflowsToMinusZero", real<float>, -1e-50, "-0"},
        NumberCase{"Signed", real<float>, signedNumber(-3), "-3"},
        NumberCase{"SignedLowest", real<float>, signedNumber(lowest), "-9.22337204e+18"},
        NumberCase{"Unsigned", real<float>, unsignedNumber(3), "3"},
        NumberCase{"UnsignedLargest", real<float>, unsignedNumber(18446744073709551615ULL),
                   "1.84467441e+19"}),
    caseName);

INSTANTIATE_TEST_SUITE_P(
    Double, RealNumberValue,
    testing::Values(
        NumberCase{"Half", real<double>, 0.5, "0.5"},
        NumberCase{"AsItStands", real<double>, 0.1, "0.10000000000000001"},
        NumberCase{"MinusZero", real<double>, -0.0, "-0"},
        NumberCase{"TenToThe39", real<double>, 1e39, "9.9999999999999994e+38"},
        NumberCase{"AtTheBound", real<double>, largestDouble, "1.7976931348623157e+308"},
        NumberCase{"AtTheLowerBound", real<double>, -largestDouble, "-1.7976931348623157e+308"},
        NumberCase{"Infinity", real<double>, infinity, refused},
        NumberCase{"MinusInfinity", real<double>, -infinity, refused},
        NumberCase{"Smallest", real<double>, 5e-324, "4.9406564584124654e-324"},
        NumberCase{"Signed", real<double>, signedNumber(-3), "-3"},
        NumberCase{"SignedLowest", real<double>, signedNumber(lowest), "-9.2233720368547758e+18"},
        NumberCase{"Unsigned", real<double>, unsignedNumber(3), "3"},
        NumberCase{"UnsignedLargest", real<double>, unsignedNumber(18446744073709551615ULL),
                   "1.8446744073709552e+19"}),
    caseName);

INSTANTIATE_TEST_SUITE_P(
    LongDouble, RealNumberValue,
    testing::Values(NumberCase{"Half", real<long double>, 0.5, "0.5"},
                    NumberCase{"AsItStands", real<long double>, 0.1, "0.10000000000000001"},
                    NumberCase{"AtTheBound", real<long double>, largestDouble,
                               "1.7976931348623157e+308"},
                    NumberCase{"AtTheLowerBound", real<long double>, -largestDouble,
                               "-1.7976931348623157e+308"},
                    NumberCase{"Infinity", real<long double>, infinity, refused},
                    NumberCase{"MinusInfinity", real<long double>, -infinity, refused},
                    NumberCase{"Signed", real<long double>, signedNumber(-3), "-3"},
                    NumberCase{"Unsigned", real<long double>, unsignedNumber(3), "3"}),
    caseName);

// No JSON text yields a NaN; one from elsewhere is no number either.
TEST(RealNumberValueOfNaN, IsRefused)
{
    const QVariant notANumber(std::numeric_limits<double>::quiet_NaN());
    float single = 1;
    double twofold = 1;
    long double extended = 1;

    EXPECT_FALSE(BwaJsonUtilities::realNumberValue(notANumber, single));
    EXPECT_FALSE(BwaJsonUtilities::realNumberValue(notANumber, twofold));
    EXPECT_FALSE(BwaJsonUtilities::realNumberValue(notANumber, extended));
}

// Booleans, texts, lists and objects

TEST(BooleanValue, IsStoredAsItStands)
{
    EXPECT_EQ(extracted(booleanExtractor, true, false), "true");
    EXPECT_EQ(extracted(booleanExtractor, false, true), "false");
}

TEST(BooleanValue, GivenNumbersAndTextsIsRefusedWhateverTheOutputHeld)
{
    for (const QVariant& value : {signedNumber(1), unsignedNumber(1), QVariant(1.0), QVariant(1),
                                  QVariant(QStringLiteral("true")), QVariant()}) {
        EXPECT_EQ(extracted(booleanExtractor, value, false), refused) << value.typeName();
        EXPECT_EQ(extracted(booleanExtractor, value, true), refused) << value.typeName();
    }
}

TEST(StringValue, IsStoredAsItStands)
{
    const QString text = QString::fromLatin1("a\0b ", 4) + QChar(0x20ac);
    QString out;

    EXPECT_TRUE(BwaJsonUtilities::stringValue(QVariant(text), out));

    EXPECT_EQ(out, text);
}

TEST(StringValue, KeepsNullAndEmptyApart)
{
    QString fromNull = QStringLiteral("canary");
    QString fromEmpty = QStringLiteral("canary");

    EXPECT_TRUE(BwaJsonUtilities::stringValue(QVariant(QString()), fromNull));
    EXPECT_TRUE(BwaJsonUtilities::stringValue(QVariant(QLatin1String("")), fromEmpty));

    EXPECT_TRUE(fromNull.isNull());
    EXPECT_TRUE(fromEmpty.isEmpty());
    EXPECT_FALSE(fromEmpty.isNull());
}

TEST(ListValue, IsStoredAsItStands)
{
    const QVariantList list = QVariantList() << 1.5 << QVariant() << QVariantList();
    QVariantList out = canary<QVariantList>();

    EXPECT_TRUE(BwaJsonUtilities::listValue(QVariant(list), out));
    EXPECT_EQ(out, list);

    EXPECT_TRUE(BwaJsonUtilities::listValue(QVariant(QVariantList()), out));
    EXPECT_TRUE(out.isEmpty());
}

TEST(ObjectValue, IsStoredAsItStands)
{
    const QVariantMap object{{key, 1.5}, {QStringLiteral("null"), QVariant()}};
    QVariantMap out = canary<QVariantMap>();

    EXPECT_TRUE(BwaJsonUtilities::objectValue(QVariant(object), out));
    EXPECT_EQ(out, object);

    EXPECT_TRUE(BwaJsonUtilities::objectValue(QVariant(QVariantMap()), out));
    EXPECT_TRUE(out.isEmpty());
}

TEST(ObjectValue, MayReplaceTheObjectItComesFrom)
{
    QVariantMap object{{key, QVariantMap{{QStringLiteral("inner"), true}}}};

    EXPECT_TRUE(BwaJsonUtilities::objectValue(object, key, object));

    EXPECT_EQ(object, (QVariantMap{{QStringLiteral("inner"), true}}));
}

// What each extractor takes of all that a variant may hold

namespace {

QList<QVariant> variantsOfManyTypes()
{
    const QString text = QStringLiteral("AB12");
    return QList<QVariant>() << QVariant() << QVariant(true) << signedNumber(7) << unsignedNumber(7)
                             << QVariant(7.0) << QVariant(text) << QVariant(QVariantList() << 7)
                             << QVariant(QVariantMap{{key, 7}}) << QVariant(7) << QVariant(7U)
                             << QVariant::fromValue(7.0F) << QVariant::fromValue(7L)
                             << QVariant::fromValue(7UL) << QVariant::fromValue(short(7))
                             << QVariant::fromValue(static_cast<unsigned short>(7))
                             << QVariant::fromValue(char('7'))
                             << QVariant::fromValue(static_cast<signed char>(7))
                             << QVariant::fromValue(static_cast<unsigned char>(7))
                             << QVariant(QChar(u'7')) << QVariant(text.toLatin1())
                             << QVariant(QStringList(text)) << QVariant(QVariantHash{{key, 7}})
                             << QVariant::fromValue(nullptr) << QVariant(QDate(2026, 1, 1))
                             << QVariant(QUuid()) << QVariant::fromValue(QJsonValue(7.0))
                             << QVariant::fromValue(QList<int>{7});
}

/** The names of the types that are taken, the output of every other being untouched. */
template <typename Target>
std::vector<std::string> typesTakenBy(const JsonExtractor<Target>& extractor,
                                      const Target& before = canary<Target>())
{
    std::vector<std::string> names;
    const QList<QVariant> variants = variantsOfManyTypes();
    for (const QVariant& value : variants) {
        const std::string outcome = extracted(extractor, value, before);
        if (outcome != refused) {
            names.emplace_back(value.isValid() ? value.typeName() : "invalid");
        }
    }
    names.erase(std::unique(names.begin(), names.end()), names.end());
    return names;
}

template <typename Target>
class TypesTaken : public testing::Test
{
};

using IntegerTargets =
    testing::Types<unsigned char, signed char, unsigned short, short, unsigned int, int,
                   unsigned long long, long long, float, double, long double>;
TYPED_TEST_SUITE(TypesTaken, IntegerTargets);

template <typename Target>
class TypesTakenAsReal : public testing::Test
{
};

using RealTargets = testing::Types<float, double, long double>;
TYPED_TEST_SUITE(TypesTakenAsReal, RealTargets);

} // namespace

TYPED_TEST(TypesTaken, AsIntegersAreTheTwoWideIntegersOnly)
{
    EXPECT_THAT(typesTakenBy(integerExtractor<TypeParam>), ElementsAre("qlonglong", "qulonglong"));
}

TYPED_TEST(TypesTakenAsReal, AreTheTwoWideIntegersAndDoubleOnly)
{
    EXPECT_THAT(typesTakenBy(realNumberExtractor<TypeParam>),
                ElementsAre("qlonglong", "qulonglong", "double"));
}

TEST(TypesTaken, AsABooleanIsBoolOnly)
{
    EXPECT_THAT(typesTakenBy(booleanExtractor, false), ElementsAre("bool"));
    EXPECT_THAT(typesTakenBy(booleanExtractor, true), ElementsAre("bool"));
}

TEST(TypesTaken, AsTextsAreStringsOnly)
{
    EXPECT_THAT(typesTakenBy(stringExtractor), ElementsAre("QString"));
    EXPECT_THAT(typesTakenBy(base64Extractor), ElementsAre("QString"));
    EXPECT_THAT(typesTakenBy(hexExtractor), ElementsAre("QString"));
}

TEST(TypesTaken, AsAListIsAListOnly)
{
    EXPECT_THAT(typesTakenBy(listExtractor), ElementsAre("QVariantList"));
}

TEST(TypesTaken, AsAnObjectIsAMapOnly)
{
    EXPECT_THAT(typesTakenBy(objectExtractor), ElementsAre("QVariantMap"));
}

TEST(IntegerValueOfADouble, IsRefusedEvenWhenItIsWhole)
{
    EXPECT_EQ(integer<int>(3.0), refused);
    EXPECT_EQ(integer<double>(3.0), refused);
    EXPECT_EQ(integer<long double>(3.0), refused);
}

TEST(TypedVariantWithoutAValue, GoesByItsType)
{
    EXPECT_EQ(integer<int>(nullVariant(QMetaType::LongLong)), "0");
    EXPECT_EQ(integer<int>(nullVariant(QMetaType::Int)), refused);
    EXPECT_EQ(real<double>(nullVariant(QMetaType::Double)), "0");
    EXPECT_EQ(extracted(booleanExtractor, nullVariant(QMetaType::Bool), true), "false");
    EXPECT_EQ(extracted(listExtractor, nullVariant(QMetaType::QVariantList)),
              extracted(listExtractor, QVariantList()));
}

// Members that are absent

namespace {

/** What the second and the third form make of a member that is not there. */
template <typename Target>
void expectAbsentMemberTakesTheDefault(const JsonExtractor<Target>& extractor, const Target& before,
                                       const Target& defaultValue)
{
    const QVariantMap object{{QStringLiteral("Key"), QVariant()}, {QString(), QVariant()}};
    Target out = before;

    EXPECT_FALSE(extractor.fromMember(object, key, out));
    EXPECT_EQ(out, before);

    EXPECT_TRUE(extractor.fromMemberOr(object, key, out, defaultValue));
    EXPECT_EQ(out, defaultValue);

    EXPECT_TRUE(extractor.fromMemberOr(object, key, out, out));
    EXPECT_EQ(out, defaultValue);
}

/** A member that is there but null is no reason for the default. */
template <typename Target>
void expectNullMemberIsRefused(const JsonExtractor<Target>& extractor, const Target& before)
{
    const QVariantMap object{{key, QVariant()}};
    Target out = before;

    EXPECT_FALSE(extractor.fromMember(object, key, out));
    EXPECT_FALSE(extractor.fromMemberOr(object, key, out, Target()));
    EXPECT_EQ(out, before);
}

template <typename Target>
class AbsentMember : public testing::Test
{
};
TYPED_TEST_SUITE(AbsentMember, IntegerTargets);

template <typename Target>
class AbsentRealMember : public testing::Test
{
};
TYPED_TEST_SUITE(AbsentRealMember, RealTargets);

} // namespace

TYPED_TEST(AbsentMember, OfAnIntegerIsRefusedOrTakesTheDefault)
{
    expectAbsentMemberTakesTheDefault(integerExtractor<TypeParam>, TypeParam(99), TypeParam(5));
    expectNullMemberIsRefused(integerExtractor<TypeParam>, TypeParam(99));
}

TYPED_TEST(AbsentRealMember, OfARealNumberIsRefusedOrTakesTheDefault)
{
    expectAbsentMemberTakesTheDefault(realNumberExtractor<TypeParam>, TypeParam(99),
                                      TypeParam(0.5));
    expectNullMemberIsRefused(realNumberExtractor<TypeParam>, TypeParam(99));
}

TEST(AbsentMember, OfABooleanIsRefusedOrTakesTheDefault)
{
    expectAbsentMemberTakesTheDefault(booleanExtractor, false, true);
    expectAbsentMemberTakesTheDefault(booleanExtractor, true, false);
    expectNullMemberIsRefused(booleanExtractor, true);
}

TEST(AbsentMember, OfATextIsRefusedOrTakesTheDefault)
{
    const QString before = QStringLiteral("canary");

    expectAbsentMemberTakesTheDefault(stringExtractor, before, QStringLiteral("default"));
    expectAbsentMemberTakesTheDefault(stringExtractor, before, QString());
    expectNullMemberIsRefused(stringExtractor, before);
}

TEST(AbsentMember, OfBytesIsRefusedOrTakesTheDefault)
{
    for (const auto& extractor : {base64Extractor, hexExtractor}) {
        expectAbsentMemberTakesTheDefault(extractor, QByteArray("canary"), QByteArray("no\n=text"));
        expectNullMemberIsRefused(extractor, QByteArray("canary"));
    }
}

TEST(AbsentMember, OfAListIsRefusedOrTakesTheDefault)
{
    expectAbsentMemberTakesTheDefault(listExtractor, canary<QVariantList>(),
                                      QVariantList() << QVariant());
    expectNullMemberIsRefused(listExtractor, canary<QVariantList>());
}

TEST(AbsentMember, OfAnObjectIsRefusedOrTakesTheDefault)
{
    expectAbsentMemberTakesTheDefault(objectExtractor, canary<QVariantMap>(),
                                      QVariantMap{{key, QVariant()}});
    expectNullMemberIsRefused(objectExtractor, canary<QVariantMap>());
}

TEST(PresentMember, WhenOutOfRangeOrOfAnotherTypeNeverTakesTheDefault)
{
    const QVariantMap object{{key, unsignedNumber(256)}, {QStringLiteral("text"), key}};
    unsigned char small = 99;
    QByteArray bytes("canary");

    EXPECT_FALSE(BwaJsonUtilities::integerValue(object, key, small, 5));
    EXPECT_FALSE(BwaJsonUtilities::integerValue(object, QStringLiteral("text"), small, 5));
    EXPECT_FALSE(BwaJsonUtilities::base64EncodedByteArrayValue(object, QStringLiteral("text"),
                                                               bytes, QByteArray("default")));
    EXPECT_EQ(small, 99);
    EXPECT_EQ(bytes, QByteArray("canary"));
}

TEST(PresentMember, LeavesTheObjectAsItWas)
{
    const QVariantMap object{{key, QStringLiteral("AB12")}};
    const QVariantMap before = object;
    QByteArray bytes;

    EXPECT_TRUE(BwaJsonUtilities::hexEncodedByteArrayValue(object, key, bytes));

    EXPECT_EQ(object, before);
}
