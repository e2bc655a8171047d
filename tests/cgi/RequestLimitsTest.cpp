// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "cgi/BwaCgiRequest.h"
#include "support/MemoryCgiInput.h"
#include "support/QtPrinters.h"
#include "support/ShownText.h"

#include <gmock/gmock.h>

#include <ostream>
#include <string>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const char* const urlEncoded = "application/x-www-form-urlencoded";
const char* const multipart = "multipart/form-data; boundary=B";

QByteArray field(const char* name)
{
    return QByteArray("--B\r\nContent-Disposition: form-data; name=") + name + "\r\n\r\n1\r\n";
}

QByteArray file(const char* name)
{
    return QByteArray("--B\r\nContent-Disposition: form-data; name=") + name +
        "; filename=x\r\n\r\n1\r\n";
}

BwaRequestLimits ofBodySize(unsigned int bytes)
{
    BwaRequestLimits limits;
    limits.maxBodySize = bytes;
    return limits;
}

BwaRequestLimits ofFormFields(unsigned int number)
{
    BwaRequestLimits limits;
    limits.maxFormFields = number;
    return limits;
}

BwaRequestLimits ofParts(unsigned int number)
{
    BwaRequestLimits limits;
    limits.maxParts = number;
    return limits;
}

struct LimitCase {
    const char* name;
    const char* contentType;
    QByteArray body;
    BwaRequestLimits limits;
    BwaCgiRequest::BodyFailure failure = BwaCgiRequest::BodyFailure::NoFailure;
};

void PrintTo(const LimitCase& limitCase, std::ostream* stream)
{
    *stream << limitCase.name;
}

std::string nameOf(const testing::TestParamInfo<LimitCase>& info)
{
    return info.param.name;
}

class BodyWithinLimits : public testing::TestWithParam<LimitCase>
{
};

class BodyBeyondLimits : public testing::TestWithParam<LimitCase>
{
};

} // namespace

TEST_P(BodyWithinLimits, IsProcessed)
{
    MemoryCgiInput input(GetParam().contentType, GetParam().body);
    BwaCgiRequest request(&input);
    request.setRequestLimits(GetParam().limits);

    EXPECT_TRUE(request.processBodyContent());
}

INSTANTIATE_TEST_SUITE_P(
    Cases, BodyWithinLimits,
    testing::Values(
        LimitCase{"NoLimits", urlEncoded, QByteArray(9999, '&'), BwaRequestLimits()},
        LimitCase{"FormOfThatSize", urlEncoded, "a=1&b", ofBodySize(5)},
        LimitCase{"JsonOfThatSize", "application/json", "[1,2]", ofBodySize(5)},
        LimitCase{"ThatManyFormFields", urlEncoded, "a=1&b;c", ofFormFields(3)},
        LimitCase{"SeparatorsBehindANul", urlEncoded, QByteArray("a=1&b\0&&", 8), ofFormFields(2)},
        LimitCase{"SeparatorsInJson", "application/json", "\"&&&;;;\"", ofFormFields(1)},
        LimitCase{"ThatManyFieldsOfAMultipart", multipart, field("a") + field("b") + "--B--\r\n",
                  ofFormFields(2)},
        LimitCase{"FilesBesideTheFields", multipart, field("a") + file("b") + "--B--\r\n",
                  ofFormFields(1)},
        LimitCase{"ThatManyParts", multipart, field("a") + file("b") + "--B--\r\n", ofParts(2)},
        LimitCase{"FormFieldsAreNoParts", urlEncoded, "a&b&c", ofParts(1)}),
    nameOf);

TEST_P(BodyBeyondLimits, FailsAndKeepsNothing)
{
    MemoryCgiInput input(GetParam().contentType, GetParam().body);
    BwaCgiRequest request(&input);
    request.setRequestLimits(GetParam().limits);

    EXPECT_FALSE(request.processBodyContent());
    EXPECT_EQ(request.bodyFailure(), GetParam().failure);
    EXPECT_EQ(request.bodyBytesRead(), static_cast<unsigned int>(input.position));
    EXPECT_THAT(request.formVariables(), IsEmpty());
    EXPECT_THAT(request.files(), IsEmpty());
    EXPECT_EQ(request.body(), QByteArray());
}

TEST_P(BodyBeyondLimits, FailsAgain)
{
    MemoryCgiInput input(GetParam().contentType, GetParam().body);
    BwaCgiRequest request(&input);
    request.setRequestLimits(GetParam().limits);
    request.processBodyContent();
    const int reads = input.readSizes.size();

    EXPECT_FALSE(request.processBodyContent());
    EXPECT_EQ(request.bodyFailure(), GetParam().failure);
    EXPECT_EQ(input.readSizes.size(), reads);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, BodyBeyondLimits,
    testing::Values(LimitCase{"FormOneByteTooLarge", urlEncoded, "a=1&bc", ofBodySize(5),
                              BwaCgiRequest::BodyFailure::TooLarge},
                    LimitCase{"JsonOneByteTooLarge", "application/json", "[1,23]", ofBodySize(5),
                              BwaCgiRequest::BodyFailure::TooLarge},
                    LimitCase{"MultipartTooLarge", multipart, field("a") + "--B--\r\n",
                              ofBodySize(5), BwaCgiRequest::BodyFailure::TooLarge},
                    LimitCase{"OneFormFieldTooMany", urlEncoded, "a=1&b;c&d", ofFormFields(3),
                              BwaCgiRequest::BodyFailure::TooManyFormFields},
                    LimitCase{"EmptyFormFieldsTooMany", urlEncoded, "&&;", ofFormFields(3),
                              BwaCgiRequest::BodyFailure::TooManyFormFields},
                    LimitCase{"OneFieldOfAMultipartTooMany", multipart,
                              field("a") + file("b") + field("c") + "--B--\r\n", ofFormFields(1),
                              BwaCgiRequest::BodyFailure::TooManyFormFields},
                    LimitCase{"OnePartTooMany", multipart,
                              field("a") + file("b") + file("c") + "--B--\r\n", ofParts(2),
                              BwaCgiRequest::BodyFailure::TooManyParts},
                    LimitCase{"OnePartTooManyFarFromTheEnd", multipart,
                              field("a") + field("b") + QByteArray(100000, 'x') + "\r\n" +
                                  field("c") + "--B--\r\n",
                              ofParts(1), BwaCgiRequest::BodyFailure::TooManyParts}),
    nameOf);

TEST(RequestLimits, CanBeAskedFor)
{
    MemoryCgiInput input;
    BwaCgiRequest request(&input);
    EXPECT_EQ(request.requestLimits().maxParts, 0U);

    request.setRequestLimits(ofParts(5));

    EXPECT_EQ(request.requestLimits().maxParts, 5U);
}

// Its size is part of what programs were compiled against: limits to come take reserved places.
TEST(RequestLimits, HaveRoomForFiveMore)
{
    EXPECT_EQ(sizeof(BwaRequestLimits), 8 * sizeof(unsigned int));
}

TEST(RequestLimits, GivenTooLargeABodyReadNothingOfIt)
{
    MemoryCgiInput input("application/json", "[1,23]");
    BwaCgiRequest request(&input);
    request.setRequestLimits(ofBodySize(5));

    request.processBodyContent();

    EXPECT_THAT(input.readSizes, IsEmpty());
}

TEST(RequestLimits, GivenALengthOfMoreThan31BitsCompareIt)
{
    MemoryCgiInput input;
    input.set("CONTENT_LENGTH", "2147483648");
    BwaCgiRequest request(&input);

    request.setRequestLimits(ofBodySize(2147483647));
    request.processBodyContent();
    EXPECT_THAT(input.readSizes, IsEmpty());

    request.setRequestLimits(ofBodySize(2147483648U));
    request.processBodyContent();
    EXPECT_THAT(input.readSizes, ElementsAre(2147483648U));
}

TEST(RequestLimits, DoNotHoldForWhatIsReadPieceByPiece)
{
    MemoryCgiInput input("text/plain", "a long body");
    BwaCgiRequest request(&input);
    request.setRequestLimits(ofBodySize(5));

    EXPECT_EQ(request.readFromBody(20), QByteArray("a long body"));
}

// Names that all fall into one bucket of the hash would be no slower here: nothing is inserted.
TEST(RequestLimits, GivenTooManyFieldsDecodeNoneOfThem)
{
    MemoryCgiInput input(urlEncoded, QByteArray(8 * 1024 * 1024, '&'));
    BwaCgiRequest request(&input);
    request.setRequestLimits(ofFormFields(1000));

    EXPECT_FALSE(request.processBodyContent());
    EXPECT_EQ(request.formVariables().capacity(), (QMultiHash<QString, QString>().capacity()));
}
