// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// A JSON text: what the parser accepts, Qt's own parser accepts with the same value; written and
// parsed again it is the same, too; and no extractor writes to its output when it refuses.

#include "Fuzzing.h"
#include "json/BwaJson.h"
#include "support/JsonDescription.h"
#include "support/JsonExtraction.h"
#include "support/QtPrinters.h"

#include <QJsonDocument>

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

namespace {

const int deepestExtraction = 8; // containers whose members are extracted

// Qt's parser knows doubles and 64-bit integers only, so all numbers are compared as doubles.
QVariant withDoubles(const QVariant& value)
{
    if (value.userType() == QMetaType::QVariantList) {
        QVariantList list = value.toList();
        std::transform(list.begin(), list.end(), list.begin(), withDoubles);
        return list;
    }
    if (value.userType() == QMetaType::QVariantMap) {
        QVariantMap map = value.toMap();
        std::transform(map.begin(), map.end(), map.begin(), withDoubles);
        return map;
    }
    if (value.userType() == QMetaType::LongLong || value.userType() == QMetaType::ULongLong ||
        value.userType() == QMetaType::Double) {
        return value.toDouble() + 0.0; // no negative zero
    }
    return value.userType() == QMetaType::Nullptr ? QVariant() : value;
}

// The colons outside strings, of which every member of an object has one.
int writtenMembers(const QByteArray& text)
{
    int members = 0;
    bool isInString = false;
    for (int position = 0; position < text.size(); ++position) {
        if (text.at(position) == '"') {
            isInString = !isInString;
        } else if (isInString && text.at(position) == '\\') {
            ++position;
        } else if (!isInString && text.at(position) == ':') {
            ++members;
        }
    }
    return members;
}

int keptMembers(const QVariant& value)
{
    const bool isMap = value.userType() == QMetaType::QVariantMap;
    const QVariantList elements = isMap ? value.toMap().values() : value.toList();
    int members = isMap ? elements.size() : 0;
    for (const QVariant& element : elements) {
        members += keptMembers(element);
    }
    return members;
}

// Compares the value with that of Qt's parser, unless an object has a name twice: Qt then keeps any
// of the members, and leaks memory.
void expectQtAgrees(const QByteArray& text, const QVariant& value)
{
    if (writtenMembers(text) != keptMembers(value)) {
        return;
    }
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson("[" + text + "]", &error);
    const std::string expected = description(withDoubles(QVariantList() << value));
    const bool isBeyondQt = error.error == QJsonParseError::IllegalNumber || // an underflow
        error.error == QJsonParseError::DeepNesting ||
        expected.find("\xEF\xBB\xBF") != std::string::npos; // taken for a byte order mark
    if (!isBeyondQt) {
        ASSERT_EQ(error.error, QJsonParseError::NoError) << error.errorString().toStdString();
        EXPECT_EQ(description(withDoubles(document.toVariant())), expected);
    }
}

template <typename Target>
void expectFormsAgree(const JsonExtractor<Target>& extractor, const QVariant& value)
{
    const std::string outcome = extracted(extractor, value);
    EXPECT_NE(outcome.rfind("refused, but", 0), 0U) << outcome;
    EXPECT_NE(outcome.rfind("value: ", 0), 0U) << outcome;
}

void extractAll(const QVariant& value)
{
    expectFormsAgree(integerExtractor<unsigned char>, value);
    expectFormsAgree(integerExtractor<signed char>, value);
    expectFormsAgree(integerExtractor<unsigned short>, value);
    expectFormsAgree(integerExtractor<short>, value);
    expectFormsAgree(integerExtractor<unsigned int>, value);
    expectFormsAgree(integerExtractor<int>, value);
    expectFormsAgree(integerExtractor<unsigned long long>, value);
    expectFormsAgree(integerExtractor<long long>, value);
    expectFormsAgree(integerExtractor<float>, value);
    expectFormsAgree(integerExtractor<double>, value);
    expectFormsAgree(integerExtractor<long double>, value);
    expectFormsAgree(realNumberExtractor<float>, value);
    expectFormsAgree(realNumberExtractor<double>, value);
    expectFormsAgree(realNumberExtractor<long double>, value);
    expectFormsAgree(booleanExtractor, value);
    expectFormsAgree(base64Extractor, value);
    expectFormsAgree(hexExtractor, value);
    expectFormsAgree(listExtractor, value);
    expectFormsAgree(stringExtractor, value);
    expectFormsAgree(objectExtractor, value);
}

void expectMembersFound(const QVariantMap& object)
{
    for (auto member = object.constBegin(); member != object.constEnd(); ++member) {
        EXPECT_EQ(description(BwaJsonUtilities::fieldValue(object, member.key())),
                  description(member.value()));
        EXPECT_EQ(BwaJsonUtilities::isNullValue(object, member.key()), !member.value().isValid());
    }
}

void extractAllWithin(const QVariant& value, int depth)
{
    extractAll(value);
    expectMembersFound(value.toMap());
    if (depth == deepestExtraction) {
        return;
    }
    const QVariantList elements =
        value.userType() == QMetaType::QVariantMap ? value.toMap().values() : value.toList();
    for (const QVariant& element : elements) {
        extractAllWithin(element, depth + 1);
    }
}

// Writes values that no JSON text has: other types of numbers, lone surrogates, NaN and infinity.
void expectForeignValuesWritten(const QByteArray& bytes)
{
    const int size = static_cast<int>(bytes.size());
    QString text;
    for (const char byte : bytes.left(64)) {
        text += QChar(0xd7f0 + static_cast<unsigned char>(byte) * 8);
    }
    const QVariantList values = {text, size, static_cast<uint>(size), static_cast<float>(size),
                                 std::numeric_limits<double>::quiet_NaN()};
    bool isWritten = false;
    const QByteArray written = BwaJson::write(values, &isWritten);
    bool isRead = false;
    EXPECT_EQ(BwaJson::parse(written, &isRead).toList().size(), values.size());
    EXPECT_TRUE(isWritten && isRead);
}

void expectWrittenAndReadAgain(const QVariant& value)
{
    bool isWritten = false;
    const QByteArray text = BwaJson::write(value, &isWritten);
    EXPECT_TRUE(isWritten);
    EXPECT_EQ(description(BwaJson::parse(text)), description(value));
}

} // namespace

void fuzz(const QByteArray& input)
{
    bool ok = false;
    const QVariant value = BwaJson::parse(input, &ok);

    bool okAgain = false;
    EXPECT_EQ(description(BwaJson::parse(input, &okAgain)), description(value));
    EXPECT_EQ(okAgain, ok);
    expectForeignValuesWritten(input);
    if (ok) {
        expectQtAgrees(input, value);
        expectWrittenAndReadAgain(value);
        extractAllWithin(value, 0);
    } else {
        EXPECT_FALSE(value.isValid());
    }
}
