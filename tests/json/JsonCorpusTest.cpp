// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "json/BwaJson.h"
#include "support/JsonDescription.h"
#include "support/QtPrinters.h"

#include <QDir>
#include <QFile>
#include <QVariant>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <ostream>
#include <string>

using namespace std::string_literals;

namespace {

QDir corpus(const char* folder)
{
    return QDir(QStringLiteral(BWA_TEST_DATA_DIR "/json/") + QLatin1String(folder));
}

QStringList filesNamed(const char* pattern)
{
    return corpus("test_parsing").entryList({QLatin1String(pattern)}, QDir::Files, QDir::Name);
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return file.readAll();
}

// What the parser makes of a file: a description of its value, or "refused".
std::string verdict(const QString& path)
{
    bool ok = false;
    const QVariant value = BwaJson::parse(contentOf(path), &ok);

    EXPECT_TRUE(ok || !value.isValid()) << path.toStdString();
    return ok ? description(value) : "refused";
}

struct TransformCase {
    std::string name;
    std::string file;
    std::string value;
};

void PrintTo(const TransformCase& transformCase, std::ostream* stream)
{
    *stream << transformCase.name;
}

class JsonTransform : public testing::TestWithParam<TransformCase>
{
};

} // namespace

TEST(JsonCorpus, AcceptsEveryValidFile)
{
    const QStringList files = filesNamed("y_*.json");

    EXPECT_EQ(files.size(), 95);
    for (const QString& file : files) {
        EXPECT_NE(verdict(corpus("test_parsing").filePath(file)), "refused") << file.toStdString();
    }
}

TEST(JsonCorpus, RefusesEveryInvalidFile)
{
    const QStringList files = filesNamed("n_*.json");

    EXPECT_EQ(files.size(), 188);
    for (const QString& file : files) {
        EXPECT_EQ(verdict(corpus("test_parsing").filePath(file)), "refused") << file.toStdString();
    }
}

// Parsers may differ here. This one refuses what fits no type or is not Unicode.
TEST(JsonCorpus, PinsVerdictsOnDebatableFiles)
{
    const QStringList files = filesNamed("i_*.json");
    QStringList accepted;
    for (const QString& file : files) {
        if (verdict(corpus("test_parsing").filePath(file)) != "refused") {
            accepted.append(file);
        }
    }

    EXPECT_EQ(files.size(), 35);
    EXPECT_THAT(accepted,
                testing::ElementsAre(QStringLiteral("i_number_double_huge_neg_exp.json"),
                                     QStringLiteral("i_number_real_underflow.json"),
                                     QStringLiteral("i_structure_500_nested_arrays.json")));
}

TEST(JsonCorpus, PinsEveryTransformedFile)
{
    EXPECT_EQ(corpus("test_transform").entryList({QStringLiteral("*.json")}, QDir::Files).size(),
              22);
}

TEST_P(JsonTransform, GivesTypeAndValue)
{
    const QString path = corpus("test_transform").filePath(QString::fromStdString(GetParam().file));

    EXPECT_EQ(verdict(path), GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(
    Numbers, JsonTransform,
    testing::Values(
        TransformCase{"MostNegative", "number_-9223372036854775808.json",
                      "[qlonglong -9223372036854775808]"},
        TransformCase{"BelowMostNegative", "number_-9223372036854775809.json", "refused"},
        TransformCase{"One", "number_1.0.json", "[double 1]"},
        TransformCase{"JustAboveOne", "number_1.000000000000000005.json", "[double 1]"},
        TransformCase{"Integer", "number_1000000000000000.json", "[qulonglong 1000000000000000]"},
        TransformCase{"SmallerThan64Bit", "number_10000000000000000999.json",
                      "[qulonglong 10000000000000000999]"},
        TransformCase{"Underflow", "number_1e-999.json", "[double 0]"},
        TransformCase{"Exponent", "number_1e6.json", "[double 1000000]"},
        TransformCase{"Largest63Bit", "number_9223372036854775807.json",
                      "[qulonglong 9223372036854775807]"},
        TransformCase{"Above63Bit", "number_9223372036854775808.json",
                      "[qulonglong 9223372036854775808]"}),
    [](const auto& info) { return info.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Objects, JsonTransform,
    testing::Values(TransformCase{"ComposedKeyFirst", "object_key_nfc_nfd.json",
                                  "{e\xcc\x81: string NFD, \xc3\xa9: string NFC}"},
                    TransformCase{"DecomposedKeyFirst", "object_key_nfd_nfc.json",
                                  "{e\xcc\x81: string NFD, \xc3\xa9: string NFC}"},
                    TransformCase{"SameKeyDifferentValues", "object_same_key_different_values.json",
                                  "{a: qulonglong 2}"},
                    TransformCase{"SameKeySameValue", "object_same_key_same_value.json",
                                  "{a: qulonglong 1}"},
                    TransformCase{"SameKeyUnclearValues", "object_same_key_unclear_values.json",
                                  "{a: qulonglong 0}"}),
    [](const auto& info) { return info.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Strings, JsonTransform,
    testing::Values(
        TransformCase{"EscapedNul", "string_with_escaped_NULL.json", "[string A\0B]"s},
        TransformCase{"OneLoneSurrogate", "string_1_escaped_invalid_codepoint.json", "refused"},
        TransformCase{"OneSurrogateInUtf8", "string_1_invalid_codepoint.json", "refused"},
        TransformCase{"TwoLoneSurrogates", "string_2_escaped_invalid_codepoints.json", "refused"},
        TransformCase{"TwoSurrogatesInUtf8", "string_2_invalid_codepoints.json", "refused"},
        TransformCase{"ThreeLoneSurrogates", "string_3_escaped_invalid_codepoints.json", "refused"},
        TransformCase{"ThreeSurrogatesInUtf8", "string_3_invalid_codepoints.json", "refused"}),
    [](const auto& info) { return info.param.name; });
