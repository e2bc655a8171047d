// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "cgi/BwaCgiMultipartFormDataReader.h"

#include "cgi/BwaCgiRequest.h"
#include "support/MemoryCgiInput.h"
#include "support/QtPrinters.h"
#include "support/ShownText.h"

#include <gmock/gmock.h>

#include <istream>
#include <iterator>
#include <string>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const char* const withBoundary = "multipart/form-data; boundary=B";
// The start of a body with one field, 47 bytes long.
const char* const openField = "--B\r\nContent-Disposition: form-data; name=a\r\n\r\n";

QString text(const char* latin1)
{
    return QString::fromLatin1(latin1);
}

// A reader with the request that it reads.
struct Reading {
    explicit Reading(const QByteArray& body, const char* contentType = withBoundary)
        : input(contentType, body)
        , request(&input)
        , reader(&request)
    {
    }

    // A body of which more is announced than will come.
    Reading(const QByteArray& body, int announcedLength)
        : input(withBoundary, body)
        , request((input.set("CONTENT_LENGTH", QByteArray::number(announcedLength).constData()),
                   &input))
        , reader(&request)
    {
    }

    bool nextPart() { return reader.nextPart(name, filename, contentType); }

    MemoryCgiInput input;
    BwaCgiRequest request;
    BwaCgiMultipartFormDataReader reader;
    QString name;
    QString filename;
    QString contentType;
};

// All parts of a body: "name filename contentType content" each in brackets, then how it ended.
std::string partsOf(const QByteArray& body, const char* contentType = withBoundary)
{
    Reading reading(body, contentType);
    std::string parts;
    while (reading.nextPart()) {
        const QByteArray content = reading.reader.readAllFromPart();
        parts += "[" + shown(reading.name) + " " + shown(reading.filename) + " " +
            shownName(reading.contentType) + " " + content.toStdString() + "]";
    }
    return parts + (reading.reader.failed() ? "failed" : "complete");
}

// The verdict on one part's header and what it yields: "name filename contentType", or "refused".
std::string headerOf(const QByteArray& header)
{
    Reading reading("");
    QString name;
    QString filename;
    QString contentType;
    if (!reading.reader.processPartHeader(header, name, filename, contentType)) {
        return "refused";
    }
    return shown(name) + " " + shown(filename) + " " + shownName(contentType);
}

struct BytesCase {
    const char* name;
    QByteArray bytes;
    const char* result;
};

std::string nameOf(const testing::TestParamInfo<BytesCase>& info)
{
    return info.param.name;
}

} // namespace

// --- construction

TEST(BwaCgiMultipartFormDataReader, TakesItsDelimitersFromTheBoundary)
{
    Reading reading("");

    EXPECT_EQ(reading.reader.request(), &reading.request);
    EXPECT_EQ(reading.reader.delimiter(), QByteArray("\r\n--B\r\n"));
    EXPECT_EQ(reading.reader.closeDelimiter(), QByteArray("\r\n--B--\r\n"));
    EXPECT_EQ(reading.reader.lookahead(), QByteArray("\r\n"));
    EXPECT_FALSE(reading.reader.failed());
    EXPECT_THAT(reading.input.readSizes, IsEmpty());
}

class MultipartDelimiter : public testing::TestWithParam<BytesCase>
{
};

TEST_P(MultipartDelimiter, ComesFromTheContentType)
{
    Reading reading("", GetParam().bytes.constData());

    EXPECT_EQ(reading.reader.delimiter(),
              QByteArray("\r\n--") + GetParam().result + QByteArray("\r\n"));
    EXPECT_EQ(reading.reader.closeDelimiter(),
              QByteArray("\r\n--") + GetParam().result + QByteArray("--\r\n"));
    EXPECT_FALSE(reading.reader.failed());
    EXPECT_EQ(reading.reader.request(), &reading.request);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, MultipartDelimiter,
    testing::Values(BytesCase{"Quoted", "multipart/form-data; boundary=\"a b\\;\"", "a b;"},
                    BytesCase{"Latin1", "multipart/form-data; boundary=\xe9", "\xe9"},
                    BytesCase{"NoBoundary", "multipart/form-data", ""},
                    BytesCase{"BoundaryWithoutValue", "multipart/form-data; boundary", ""},
                    BytesCase{"CapitalBoundary", "multipart/form-data; Boundary=B", ""},
                    BytesCase{"RepeatedBoundary", "multipart/form-data; boundary=A; boundary=B",
                              "B"},
                    BytesCase{"OtherMediaType", "text/plain; boundary=B", "B"},
                    BytesCase{"NoContentType", "", ""}),
    nameOf);

TEST(BwaCgiMultipartFormDataReader, GivenNullRequestIsUnusableAndHarmless)
{
    BwaCgiMultipartFormDataReader reader(nullptr);
    QString name;
    QString filename;
    QString contentType;

    EXPECT_EQ(reader.request(), nullptr);
    EXPECT_FALSE(reader.nextPart(name, filename, contentType));
    EXPECT_EQ(reader.readFromPart(10), QByteArray());
    EXPECT_EQ(reader.readAllFromPart(), QByteArray());
    EXPECT_FALSE(reader.isAtEndOfPart());
    reader.skipEndOfPart();
    EXPECT_FALSE(reader.nextPart(name, filename, contentType));
}

TEST(BwaCgiMultipartFormDataReader, GivenNullRequestStreamsNothing)
{
    BwaCgiMultipartFormDataReader reader(nullptr);
    BwaCgiMultipartFormDataReader::StreamBuffer buffer(&reader);

    EXPECT_FALSE(buffer.loadInternalBuffer());
    EXPECT_EQ(buffer.sgetc(), std::char_traits<char>::eof());
}

// --- whole bodies

class MultipartBody : public testing::TestWithParam<BytesCase>
{
};

TEST_P(MultipartBody, IsReadPartByPart)
{
    EXPECT_EQ(partsOf(GetParam().bytes), GetParam().result);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, MultipartBody,
    testing::Values(
        BytesCase{"OneField", "--B\r\nContent-Disposition: form-data; name=a\r\n\r\n1\r\n--B--\r\n",
                  "[a <null>  1]complete"},
        BytesCase{"NoParts", "--B--\r\n", "complete"},
        BytesCase{"EmptyContent",
                  "--B\r\nContent-Disposition: form-data; name=a\r\n\r\n\r\n--B--\r\n",
                  "[a <null>  ]complete"},
        BytesCase{"TwoParts",
                  "--B\r\nContent-Disposition: form-data; name=a\r\n\r\n1\r\n"
                  "--B\r\nContent-Disposition: form-data; name=b; filename=c\r\n"
                  "Content-Type: d/e\r\n\r\n2\r\n--B--\r\n",
                  "[a <null>  1][b c d/e 2]complete"},
        BytesCase{"Preamble",
                  "a preamble\r\nof lines\r\n--B\r\n"
                  "Content-Disposition: form-data; name=a\r\n\r\n1\r\n--B--\r\n",
                  "[a <null>  1]complete"},
        BytesCase{"LineBreakInFront",
                  "\r\n--B\r\nContent-Disposition: form-data; name=a\r\n\r\n1\r\n--B--\r\n",
                  "[a <null>  1]complete"},
        BytesCase{"BoundaryInThePreambleLine",
                  "x--B\r\nContent-Disposition: form-data; name=a\r\n\r\n1\r\n--B--\r\n",
                  "complete"},
        BytesCase{"Epilogue",
                  "--B\r\nContent-Disposition: form-data; name=a\r\n\r\n1\r\n--B--\r\n"
                  "--B\r\nContent-Disposition: form-data; name=b\r\n\r\n2\r\n--B--\r\n",
                  "[a <null>  1]complete"},
        BytesCase{"AttachmentIsSkipped",
                  "--B\r\nContent-Disposition: attachment; name=a\r\n\r\n1\r\n"
                  "--B\r\nContent-Disposition: form-data; name=b\r\n\r\n2\r\n--B--\r\n",
                  "[b <null>  2]complete"},
        BytesCase{"NamelessPartIsSkipped",
                  "--B\r\nContent-Disposition: form-data; filename=a\r\n\r\n1\r\n"
                  "--B\r\nContent-Disposition: form-data; name=b\r\n\r\n2\r\n--B--\r\n",
                  "[b <null>  2]complete"},
        BytesCase{"PartWithoutHeaderIsSkipped",
                  "--B\r\n\r\n\r\n1\r\n--B\r\nContent-Disposition: form-data; name=b\r\n\r\n2\r\n"
                  "--B--\r\n",
                  "[b <null>  2]complete"},
        BytesCase{"LastPartSkipped",
                  "--B\r\nContent-Disposition: form-data; name=a\r\n\r\n1\r\n"
                  "--B\r\nX: y\r\n\r\n2\r\n--B--\r\n",
                  "[a <null>  1]complete"},
        BytesCase{
            "NearlyDelimitersAreContent",
            "--B\r\nContent-Disposition: form-data; name=a\r\n\r\n"
            "\r\n--B\r\r\n--B \r\n--Bx\r\n--B-\r\n\r\n--B--x\n--B\r\n--\r\n--B--\r\r\n--B--\r\n",
            "[a <null>  \r\n--B\r\r\n--B \r\n--Bx\r\n--B-\r\n\r\n--B--x\n--B\r\n--\r\n--B--\r]"
            "complete"},
        BytesCase{"ContentEndingInLineBreaksKeepsThem",
                  "--B\r\nContent-Disposition: form-data; name=a\r\n\r\n1\r\n\r\n\r\n--B--\r\n",
                  "[a <null>  1\r\n\r\n]complete"},
        BytesCase{"DelimiterAtOnceAfterTheHeaderIsContent",
                  "--B\r\nContent-Disposition: form-data; name=a\r\n\r\n--B\r\nx\r\n--B--\r\n",
                  "[a <null>  --B\r\nx]complete"},
        BytesCase{
            "HeaderRunsOverADelimiter",
            "--B\r\nX: y\r\n--B\r\nContent-Disposition: form-data; name=a\r\n\r\n1\r\n--B--\r\n",
            "[a <null>  1]complete"},
        BytesCase{"Empty", "", "failed"},
        BytesCase{"NoDelimiter", "just some text that is long enough", "failed"},
        BytesCase{"EndsInTheHeader", "--B\r\nContent-Disposition: form-data; name=a\r\n", "failed"},
        BytesCase{"EndsAfterTheHeader", "--B\r\nContent-Disposition: form-data; name=a\r\n\r\n",
                  "[a <null>  ]failed"},
        BytesCase{"EndsInTheContentWithinADelimitersLength",
                  "--B\r\nContent-Disposition: form-data; name=a\r\n\r\n1234567",
                  "[a <null>  ]failed"},
        BytesCase{"EndsInTheContent",
                  "--B\r\nContent-Disposition: form-data; name=a\r\n\r\n1234567890",
                  "[a <null>  1]failed"},
        BytesCase{"ClosingDelimiterWithoutLineEnd",
                  "--B\r\nContent-Disposition: form-data; name=a\r\n\r\n1\r\n--B--",
                  "[a <null>  ]failed"},
        BytesCase{"LineFeedsOnly", "--B\nContent-Disposition: form-data; name=a\n\n1\n--B--\n",
                  "failed"}),
    nameOf);

TEST(MultipartBodyText, GivenNoBoundaryIsParsedAgainstEmptyDelimiters)
{
    EXPECT_EQ(
        partsOf("--\r\nContent-Disposition: form-data; name=a\r\n\r\n1\r\n--B\r\n\r\n----\r\n",
                "multipart/form-data"),
        "[a <null>  1\r\n--B\r\n]complete");
}

TEST(MultipartBodyText, GivenContentOfEveryByteDeliversItUnchanged)
{
    QByteArray content;
    for (int byte = 0; byte < 256; ++byte) {
        content.append(static_cast<char>(byte));
    }
    Reading reading(openField + content + "\r\n--B--\r\n");

    ASSERT_TRUE(reading.nextPart());
    EXPECT_EQ(reading.reader.readAllFromPart(), content);
    EXPECT_FALSE(reading.nextPart());
    EXPECT_FALSE(reading.reader.failed());
}

TEST(MultipartBodyText, GivenABoundaryAboveAsciiFindsItAtAnyOffset)
{
    for (int length = 0; length < 17; ++length) {
        const QByteArray content(length, '\xff');
        const QByteArray body = "--\xff\xe9\r\nContent-Disposition: form-data; name=a\r\n\r\n" +
            content + "\r\n--\xff\xe9--\r\n";

        ASSERT_EQ(partsOf(body, "multipart/form-data; boundary=\xff\xe9"),
                  "[a <null>  " + content.toStdString() + "]complete");
    }
}

TEST(MultipartBodyText, GivenADelimiterCutByARefillAnywhereRecognisesIt)
{
    for (int length = 4096 - 47 - 20; length < 4096 - 47 + 4; ++length) {
        const QByteArray content(length, 'x');
        const QByteArray body = openField + content +
            "\r\n--B\r\nContent-Disposition: form-data; name=b\r\n\r\n2\r\n--B--\r\n";

        ASSERT_EQ(partsOf(body), "[a <null>  " + content.toStdString() + "][b <null>  2]complete");
    }
}

TEST(MultipartBodyText, GivenAHeaderEndCutByARefillAnywhereRecognisesIt)
{
    for (int length = 4096 - 60; length < 4096; ++length) {
        const QByteArray field = QByteArray("--B\r\nX: ") + QByteArray(length, 'x') +
            "\r\nContent-Disposition: form-data; name=a\r\n\r\n1\r\n--B--\r\n";

        ASSERT_EQ(partsOf(field), "[a <null>  1]complete") << length;
    }
}

// --- nextPart

TEST(NextPart, SkipsWhatIsUnreadOfThePart)
{
    Reading reading(openField + QByteArray(10000, 'x') +
                    "\r\n--B\r\nContent-Disposition: form-data; name=b\r\n\r\n2\r\n--B--\r\n");
    ASSERT_TRUE(reading.nextPart());
    ASSERT_EQ(reading.reader.readFromPart(3), QByteArray("xxx"));

    EXPECT_TRUE(reading.nextPart());
    EXPECT_EQ(reading.name, text("b"));
    EXPECT_EQ(reading.reader.readAllFromPart(), QByteArray("2"));
}

TEST(NextPart, LeavesTheLookaheadAtTheContent)
{
    Reading reading(QByteArray(openField) + "1\r\n--B--\r\n");

    ASSERT_TRUE(reading.nextPart());

    EXPECT_EQ(reading.reader.lookahead(), QByteArray("1\r\n--B--\r\n"));
}

TEST(NextPart, WhenTheBodyIsFinishedStaysAtTheClosingDelimiter)
{
    Reading reading("--B--\r\nepilogue");

    EXPECT_FALSE(reading.nextPart());
    EXPECT_FALSE(reading.nextPart());
    EXPECT_FALSE(reading.reader.failed());
    EXPECT_EQ(reading.reader.lookahead(), QByteArray("\r\n--B--\r\nepilogue"));
}

TEST(NextPart, WhenTheBodyIsFinishedReadsNothingOfALaterEpilogue)
{
    Reading reading("--B--\r\n" + QByteArray(10000, 'x'));

    EXPECT_FALSE(reading.nextPart());
    EXPECT_FALSE(reading.nextPart());
    EXPECT_THAT(reading.input.readSizes, ElementsAre(4096U));
}

TEST(NextPart, AfterAFailureReadsNoMore)
{
    Reading reading("no delimiter", 100);
    ASSERT_FALSE(reading.nextPart());
    ASSERT_TRUE(reading.reader.failed());
    const int reads = reading.input.readSizes.size();

    EXPECT_FALSE(reading.nextPart());
    EXPECT_EQ(reading.reader.readFromPart(1), QByteArray());
    EXPECT_EQ(reading.reader.readAllFromPart(), QByteArray());
    EXPECT_FALSE(reading.reader.isAtEndOfPart());
    EXPECT_EQ(reading.input.readSizes.size(), reads);
}

TEST(NextPart, ReplacesAllThreeTextsOfThePartBefore)
{
    Reading reading("--B\r\nContent-Disposition: form-data; name=a; filename=x\r\n"
                    "Content-Type: t/u\r\n\r\n1\r\n"
                    "--B\r\nContent-Disposition: form-data; name=b\r\n\r\n2\r\n--B--\r\n");
    ASSERT_TRUE(reading.nextPart());
    ASSERT_EQ(reading.filename, text("x"));

    ASSERT_TRUE(reading.nextPart());

    EXPECT_EQ(reading.name, text("b"));
    EXPECT_TRUE(reading.filename.isNull());
    EXPECT_EQ(reading.contentType, text(""));
}

// --- reading a part

TEST(ReadFromPart, ReturnsThePartInPieces)
{
    Reading reading(QByteArray(openField) + "12345\r\n--B--\r\n");
    ASSERT_TRUE(reading.nextPart());

    EXPECT_EQ(reading.reader.readFromPart(2), QByteArray("12"));
    EXPECT_EQ(reading.reader.readFromPart(0), QByteArray());
    EXPECT_EQ(reading.reader.readFromPart(2), QByteArray("34"));
    EXPECT_FALSE(reading.reader.isAtEndOfPart());
    EXPECT_EQ(reading.reader.readFromPart(2), QByteArray("5"));
    EXPECT_TRUE(reading.reader.isAtEndOfPart());
    EXPECT_EQ(reading.reader.readFromPart(2), QByteArray());
    EXPECT_FALSE(reading.reader.failed());
}

TEST(ReadFromPart, GivenTheLargestSizeReturnsTheWholePart)
{
    const QByteArray content(100000, 'x');
    Reading reading(openField + content + "\r\n--B--\r\n");
    ASSERT_TRUE(reading.nextPart());

    EXPECT_TRUE(reading.reader.readFromPart(4294967295U) == content);
    EXPECT_TRUE(reading.reader.isAtEndOfPart());
}

TEST(ReadFromPart, WhenTheBodyEndsReturnsWhatIsSafeAndFails)
{
    Reading reading(QByteArray(openField) + "123456789012");
    ASSERT_TRUE(reading.nextPart());

    EXPECT_EQ(reading.reader.readFromPart(100), QByteArray("123"));
    EXPECT_TRUE(reading.reader.failed());
    EXPECT_EQ(reading.reader.readFromPart(100), QByteArray());
}

TEST(ReadFromPart, WhenTheLookaheadIsShorterThanTheClosingDelimiterTakesNothing)
{
    Reading reading(QByteArray(openField) + "12345678");
    ASSERT_TRUE(reading.nextPart());

    EXPECT_FALSE(reading.reader.isAtEndOfPart());
    EXPECT_FALSE(reading.reader.failed());
    EXPECT_EQ(reading.reader.readFromPart(100), QByteArray());
    EXPECT_TRUE(reading.reader.failed());
}

TEST(ReadFromPart, NeverHandsOutTheStartOfADelimiter)
{
    // The first refill ends inside the delimiter: 4096 = 47 + 4045 + 4.
    const QByteArray content(4045, 'x');
    Reading reading(openField + content + "\r\n--B--\r\n");
    ASSERT_TRUE(reading.nextPart());

    EXPECT_EQ(reading.reader.readFromPart(5000), content);
    EXPECT_TRUE(reading.reader.isAtEndOfPart());
}

TEST(ReadAllFromPart, ReturnsTheRestOfThePart)
{
    Reading reading(QByteArray(openField) + "12345\r\n--B--\r\n");
    ASSERT_TRUE(reading.nextPart());
    ASSERT_EQ(reading.reader.readFromPart(2), QByteArray("12"));

    EXPECT_EQ(reading.reader.readAllFromPart(), QByteArray("345"));
    EXPECT_EQ(reading.reader.readAllFromPart(), QByteArray());
    EXPECT_FALSE(reading.reader.failed());
}

TEST(ReadAllFromPart, WhenTheBodyEndsReturnsWhatWasCollectedAndFails)
{
    Reading reading(openField + QByteArray(10000, 'x'));
    ASSERT_TRUE(reading.nextPart());

    EXPECT_EQ(reading.reader.readAllFromPart(), QByteArray(10000 - 9, 'x'));
    EXPECT_TRUE(reading.reader.failed());
}

TEST(IsAtEndOfPart, BeforeTheFirstPartIsTrueWhenTheBodyStartsWithADelimiter)
{
    Reading reading(QByteArray(openField) + "1\r\n--B--\r\n");

    EXPECT_TRUE(reading.reader.isAtEndOfPart());
    EXPECT_THAT(reading.input.readSizes, ElementsAre(7U));
    EXPECT_TRUE(reading.nextPart());
}

TEST(IsAtEndOfPart, WhenLessThanADelimiterIsLeftFails)
{
    Reading reading("1234", 100);

    EXPECT_FALSE(reading.reader.isAtEndOfPart());
    EXPECT_TRUE(reading.reader.failed());
    EXPECT_THAT(reading.input.readSizes, ElementsAre(7U));
}

TEST(IsAtEndOfPart, WhenADelimiterIsLeftExactlyIsTrue)
{
    Reading reading("--B\r\n", 100);

    EXPECT_TRUE(reading.reader.isAtEndOfPart());
    EXPECT_FALSE(reading.reader.failed());
}

TEST(SkipEndOfPart, LeavesTheLookaheadAtTheNextDelimiter)
{
    Reading reading(QByteArray(openField) + "12345\r\n--B--\r\n");
    ASSERT_TRUE(reading.nextPart());

    reading.reader.skipEndOfPart();

    EXPECT_EQ(reading.reader.lookahead(), QByteArray("\r\n--B--\r\n"));
    EXPECT_TRUE(reading.reader.isAtEndOfPart());
    EXPECT_FALSE(reading.reader.failed());
}

TEST(SkipEndOfPart, AtADelimiterStaysThere)
{
    Reading reading(QByteArray(openField) + "1\r\n--B--\r\n");
    reading.reader.skipEndOfPart();
    const QByteArray lookahead = reading.reader.lookahead();

    reading.reader.skipEndOfPart();

    EXPECT_EQ(reading.reader.lookahead(), lookahead);
    EXPECT_THAT(reading.input.readSizes, ElementsAre(57U));
}

TEST(SkipEndOfPart, WhenTheBodyEndsKeepsTheTailAndFails)
{
    Reading reading("1234567890", 100);

    reading.reader.skipEndOfPart();

    EXPECT_TRUE(reading.reader.failed());
    EXPECT_EQ(reading.reader.lookahead(), QByteArray("34567890"));
}

class IndexOfFirstBoundaryDelimiter : public testing::TestWithParam<BytesCase>
{
};

TEST_P(IndexOfFirstBoundaryDelimiter, IsTheSmallerPosition)
{
    Reading reading("");

    EXPECT_EQ(std::to_string(reading.reader.indexOfFirstBoundaryDelimiter(GetParam().bytes)),
              GetParam().result);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, IndexOfFirstBoundaryDelimiter,
    testing::Values(BytesCase{"Empty", "", "-1"}, BytesCase{"Neither", "\r\n--B", "-1"},
                    BytesCase{"DelimiterInFront", "\r\n--B\r\n", "0"},
                    BytesCase{"CloseDelimiterInFront", "\r\n--B--\r\n", "0"},
                    BytesCase{"DelimiterFirst", "x\r\n--B\r\n\r\n--B--\r\n", "1"},
                    BytesCase{"CloseDelimiterFirst", "xy\r\n--B--\r\n\r\n--B\r\n", "2"},
                    BytesCase{"SecondOfTwoStarts", "\r\n--\r\n--B\r\n", "4"},
                    BytesCase{"TwoDelimiters", "xyz\r\n--B\r\n\r\n--B\r\n", "3"},
                    BytesCase{"BehindANul", QByteArray("\0\r\n--B\r\n", 8), "1"}),
    nameOf);

// --- part headers

class PartHeader : public testing::TestWithParam<BytesCase>
{
};

TEST_P(PartHeader, YieldsNameFileNameAndContentType)
{
    EXPECT_EQ(headerOf(GetParam().bytes), GetParam().result);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, PartHeader,
    testing::Values(
        BytesCase{"Field", "Content-Disposition: form-data; name=a\r\n", "a <null> "},
        BytesCase{"File",
                  "Content-Disposition: form-data; name=\"a\"; filename=\"b.txt\"\r\n"
                  "Content-Type: text/plain; charset=utf-8\r\n",
                  "a b.txt text/plain; charset=utf-8"},
        BytesCase{"TypeBeforeDisposition",
                  "Content-Type: t/u\r\nContent-Disposition: form-data; filename=b; name=a\r\n",
                  "a b t/u"},
        BytesCase{"OtherLines",
                  "X: y\r\nContent-Disposition: form-data; name=a\r\nContent-Length: 1\r\n",
                  "a <null> "},
        BytesCase{"NoDisposition", "Content-Type: text/plain\r\n", "refused"},
        BytesCase{"Empty", "\r\n", "refused"},
        BytesCase{"LowerCaseDisposition", "content-disposition: form-data; name=a\r\n", "refused"},
        BytesCase{"NoBlankAfterColon", "Content-Disposition:form-data; name=a\r\n", "refused"},
        BytesCase{"TwoBlanksAfterColon", "Content-Disposition:  form-data; name=a\r\n",
                  "a <null> "},
        BytesCase{"Attachment", "Content-Disposition: attachment; name=a\r\n", "refused"},
        BytesCase{"CapitalFormData", "Content-Disposition: Form-Data; name=a\r\n", "refused"},
        BytesCase{"NoName", "Content-Disposition: form-data; filename=a\r\n", "refused"},
        BytesCase{"CapitalName", "Content-Disposition: form-data; Name=a\r\n", "refused"},
        BytesCase{"EmptyName", "Content-Disposition: form-data; name=\"\"\r\n", " <null> "},
        BytesCase{"NameWithoutValue", "Content-Disposition: form-data; name\r\n", "<null> <null> "},
        BytesCase{"NameIsNotDecoded", "Content-Disposition: form-data; name=\"a+%21\"\r\n",
                  "a+%21 <null> "},
        BytesCase{"FileNameIsDecoded",
                  "Content-Disposition: form-data; name=a; filename=\"my+file%21.txt\"\r\n",
                  "a my file!.txt "},
        BytesCase{"EmptyFileName", "Content-Disposition: form-data; name=a; filename=\"\"\r\n",
                  "a <null> "},
        BytesCase{"FileNameWithoutValue", "Content-Disposition: form-data; name=a; filename\r\n",
                  "a <null> "},
        BytesCase{"CapitalFileName", "Content-Disposition: form-data; name=a; Filename=b\r\n",
                  "a <null> "},
        BytesCase{
            "Utf8",
            "Content-Disposition: form-data; name=\"\xc3\xa9\"; filename=\"\xe2\x82\xac\"\r\n",
            "\\u00E9 \\u20AC "},
        BytesCase{"BrokenUtf8", "Content-Disposition: form-data; name=\"\xe9\"\r\n",
                  "\\uFFFD <null> "},
        BytesCase{"EscapedBytesOfFileNameStayApart",
                  "Content-Disposition: form-data; name=a; filename=%C3%A9\r\n",
                  "a \\u00C3\\u00A9 "},
        BytesCase{"QuotedSeparatorsAndEscapes",
                  "Content-Disposition: form-data; name=\"a;b,c\\\"d\"; filename=\"C:\\\\x\"\r\n",
                  "a;b,c\"d C:\\x "},
        BytesCase{"SecondElementIsIgnored",
                  "Content-Disposition: form-data; name=a, attachment; filename=b\r\n",
                  "a <null> "},
        BytesCase{"OtherHeaderEndingInTheName", "X-Content-Disposition: form-data; name=a\r\n",
                  "a <null> "},
        BytesCase{"FirstDispositionCounts",
                  "Content-Disposition: attachment\r\n"
                  "Content-Disposition: form-data; name=a\r\n",
                  "refused"},
        BytesCase{"FirstNameLineCounts",
                  "Content-Disposition: form-data; name=a\r\n"
                  "Content-Disposition: form-data; name=b\r\n",
                  "a <null> "},
        BytesCase{"LineEndsEvenInQuotes",
                  "Content-Disposition: form-data; name=\"a\r\nfilename=b\"\r\n", "a <null> "},
        BytesCase{"LoneLineFeedDoesNotEndTheLine",
                  "Content-Disposition: form-data; name=a;\n filename=b\r\n", "a b "},
        BytesCase{"LowerCaseType",
                  "Content-Disposition: form-data; name=a\r\ncontent-type: text/plain\r\n",
                  "a <null> "},
        BytesCase{"TypeWithoutBlank",
                  "Content-Disposition: form-data; name=a\r\nContent-Type:text/plain\r\n",
                  "a <null> "},
        BytesCase{"TypeIsNotTrimmed",
                  "Content-Disposition: form-data; name=a\r\nContent-Type:  text/plain \r\n",
                  "a <null>  text/plain "},
        BytesCase{"TypeIsLatin1",
                  "Content-Disposition: form-data; name=a\r\nContent-Type: \xc3\xa9\r\n",
                  "a <null> \\u00C3\\u00A9"},
        BytesCase{
            "TypeEndsAtNul",
            QByteArray("Content-Disposition: form-data; name=a\r\nContent-Type: t\0u\r\n", 59),
            "a <null> t"},
        BytesCase{"TypeInsideTheDisposition",
                  "Content-Disposition: form-data; name=\"Content-Type: x\"\r\n",
                  "Content-Type: x <null> x\""},
        BytesCase{"EmptyType", "Content-Disposition: form-data; name=a\r\nContent-Type: \r\n",
                  "a <null> "}),
    nameOf);

TEST(ProcessPartHeader, WhenRefusedLeavesTheTextsAlone)
{
    Reading reading("");
    QString name = text("1");
    QString filename = text("2");
    QString contentType = text("3");

    EXPECT_FALSE(reading.reader.processPartHeader(
        "Content-Disposition: form-data; filename=a\r\nContent-Type: b\r\n", name, filename,
        contentType));
    EXPECT_EQ(name, text("1"));
    EXPECT_EQ(filename, text("2"));
    EXPECT_EQ(contentType, text("3"));
}

// --- what is asked of the input

TEST(MultipartReads, GivenASmallBodyAsksOnce)
{
    Reading reading(QByteArray(openField) + "1\r\n--B--\r\n");

    ASSERT_TRUE(reading.nextPart());
    ASSERT_EQ(reading.reader.readAllFromPart(), QByteArray("1"));
    ASSERT_FALSE(reading.nextPart());

    EXPECT_THAT(reading.input.readSizes, ElementsAre(57U));
}

TEST(MultipartReads, GivenALargePartAsksFor4096BytesEach)
{
    // 47 bytes in front of the content and 9 behind it: 10056 in all.
    Reading reading(openField + QByteArray(10000, 'x') + "\r\n--B--\r\n");

    ASSERT_TRUE(reading.nextPart());
    ASSERT_EQ(reading.reader.readAllFromPart().size(), 10000);
    ASSERT_FALSE(reading.nextPart());

    EXPECT_THAT(reading.input.readSizes, ElementsAre(4096U, 4096U, 1864U));
}

TEST(MultipartReads, GivenADelimiterAtTheEndOfARefillAsksForTheTwoBytesOfAClosingOne)
{
    // 4096 = 47 + 4042 + 7; behind it stand 2 + 40 + 4 + 1 + 9 bytes less the two of the top-up.
    Reading reading(openField + QByteArray(4042, 'x') +
                    "\r\n--B\r\nContent-Disposition: form-data; name=b\r\n\r\n2\r\n--B--\r\n");

    ASSERT_TRUE(reading.nextPart());
    ASSERT_EQ(reading.reader.readAllFromPart().size(), 4042);
    ASSERT_TRUE(reading.nextPart());
    ASSERT_EQ(reading.reader.readAllFromPart(), QByteArray("2"));
    ASSERT_FALSE(reading.nextPart());

    EXPECT_THAT(reading.input.readSizes, ElementsAre(4096U, 2U, 50U));
}

TEST(MultipartReads, GivenALongPreambleAsksFor4096BytesEach)
{
    Reading reading(QByteArray(9000, 'x') + "\r\n--B--\r\n");

    ASSERT_FALSE(reading.nextPart());

    EXPECT_FALSE(reading.reader.failed());
    EXPECT_THAT(reading.input.readSizes, ElementsAre(4096U, 4096U, 817U));
}

TEST(MultipartReads, GivenALongHeaderAsksFor4096BytesEach)
{
    Reading reading("--B\r\nX: " + QByteArray(9000, 'x') + "\r\n\r\n\r\n--B--\r\n");

    ASSERT_FALSE(reading.nextPart());

    EXPECT_FALSE(reading.reader.failed());
    EXPECT_THAT(reading.input.readSizes, ElementsAre(4096U, 4096U, 829U));
}

TEST(MultipartReads, GivenAShortBodyAsksOnceMoreAndFails)
{
    Reading reading("--B\r\nX: y\r\n", 10000);

    ASSERT_FALSE(reading.nextPart());

    EXPECT_TRUE(reading.reader.failed());
    EXPECT_THAT(reading.input.readSizes, ElementsAre(4096U, 4096U));
}

TEST(MultipartReads, GivenABodyThatEndsInItsContentTopsUpBeforeItFails)
{
    // Seven bytes are left: as many as a delimiter, two fewer than a closing one.
    Reading reading(QByteArray(openField) + "1234567", 10000);

    ASSERT_TRUE(reading.nextPart());
    ASSERT_EQ(reading.reader.readFromPart(100), QByteArray());

    EXPECT_TRUE(reading.reader.failed());
    EXPECT_THAT(reading.input.readSizes, ElementsAre(4096U, 2U, 2U, 4096U));
}

TEST(MultipartReads, GivenLessThanADelimiterLeftStillAsksForOneRefill)
{
    Reading reading(QByteArray(openField) + "12", 10000);

    ASSERT_TRUE(reading.nextPart());
    ASSERT_EQ(reading.reader.readFromPart(100), QByteArray());

    EXPECT_TRUE(reading.reader.failed());
    EXPECT_THAT(reading.input.readSizes, ElementsAre(4096U, 7U, 4096U));
}

TEST(MultipartReads, GivenTheRestOfAPartWithLessThanADelimiterLeftAsksForTheTopUpOnly)
{
    Reading reading(QByteArray(openField) + "12", 10000);

    ASSERT_TRUE(reading.nextPart());
    ASSERT_EQ(reading.reader.readAllFromPart(), QByteArray());

    EXPECT_TRUE(reading.reader.failed());
    EXPECT_THAT(reading.input.readSizes, ElementsAre(4096U, 7U));
}

TEST(MultipartReads, GivenTheRestOfAPartThatEndsInItsContentTopsUpForEachStep)
{
    // Before the first step, at its start and after it has taken nothing.
    Reading reading(QByteArray(openField) + "1234567", 10000);

    ASSERT_TRUE(reading.nextPart());
    ASSERT_EQ(reading.reader.readAllFromPart(), QByteArray());

    EXPECT_TRUE(reading.reader.failed());
    EXPECT_THAT(reading.input.readSizes, ElementsAre(4096U, 2U, 2U, 2U, 4096U));
}

TEST(MultipartReads, WhenThePartIsEmptyOrAtItsEndAskForNothing)
{
    Reading reading(QByteArray(openField) + "\r\n--B--\r\n");
    ASSERT_TRUE(reading.nextPart());
    const int reads = reading.input.readSizes.size();

    EXPECT_TRUE(reading.reader.isAtEndOfPart());
    EXPECT_EQ(reading.reader.readFromPart(100), QByteArray());
    EXPECT_EQ(reading.reader.readAllFromPart(), QByteArray());
    EXPECT_EQ(reading.input.readSizes.size(), reads);
}

// --- StreamBuffer

TEST(MultipartStreamBuffer, StreamsTheWholePart)
{
    QByteArray content;
    for (int index = 0; index < 10000; ++index) {
        content.append(static_cast<char>(index % 251));
    }
    Reading reading(openField + content + "\r\n--B--\r\n");
    ASSERT_TRUE(reading.nextPart());
    BwaCgiMultipartFormDataReader::StreamBuffer buffer(&reading.reader);

    const std::string streamed((std::istreambuf_iterator<char>(&buffer)),
                               std::istreambuf_iterator<char>());

    EXPECT_TRUE(streamed == content.toStdString());
    EXPECT_FALSE(reading.nextPart());
    EXPECT_FALSE(reading.reader.failed());
}

TEST(MultipartStreamBuffer, ReadsLinesThroughAStream)
{
    Reading reading(QByteArray(openField) + "one\ntwo\r\n--B--\r\n");
    ASSERT_TRUE(reading.nextPart());
    BwaCgiMultipartFormDataReader::StreamBuffer buffer(&reading.reader);
    std::istream stream(&buffer);
    std::string first;
    std::string second;
    std::string third;

    std::getline(stream, first);
    std::getline(stream, second);

    EXPECT_EQ(first, "one");
    EXPECT_EQ(second, "two");
    EXPECT_FALSE(std::getline(stream, third));
    EXPECT_TRUE(stream.eof());
}

TEST(MultipartStreamBuffer, BeforeTheFirstReadHoldsNothing)
{
    Reading reading(QByteArray(openField) + "1\r\n--B--\r\n");
    ASSERT_TRUE(reading.nextPart());
    const int reads = reading.input.readSizes.size();

    BwaCgiMultipartFormDataReader::StreamBuffer buffer(&reading.reader);

    EXPECT_EQ(buffer.in_avail(), 0);
    EXPECT_EQ(reading.reader.lookahead(), QByteArray("1\r\n--B--\r\n"));
    EXPECT_EQ(reading.input.readSizes.size(), reads);
}

TEST(MultipartStreamBuffer, PeeksWithoutAdvancing)
{
    Reading reading(QByteArray(openField) + "12\r\n--B--\r\n");
    ASSERT_TRUE(reading.nextPart());
    BwaCgiMultipartFormDataReader::StreamBuffer buffer(&reading.reader);

    EXPECT_EQ(buffer.sgetc(), '1');
    EXPECT_EQ(buffer.sgetc(), '1');
    EXPECT_EQ(buffer.sbumpc(), '1');
    EXPECT_EQ(buffer.sgetc(), '2');
    EXPECT_EQ(buffer.in_avail(), 1);
}

TEST(MultipartStreamBuffer, GivenByte255IsNotTheEnd)
{
    Reading reading(QByteArray(openField) + "\xff\xfe\r\n--B--\r\n");
    ASSERT_TRUE(reading.nextPart());
    BwaCgiMultipartFormDataReader::StreamBuffer buffer(&reading.reader);

    EXPECT_EQ(buffer.sbumpc(), 0xff);
    EXPECT_EQ(buffer.sbumpc(), 0xfe);
    EXPECT_EQ(buffer.sbumpc(), std::char_traits<char>::eof());
}

TEST(MultipartStreamBuffer, AtTheEndOfThePartStaysThere)
{
    Reading reading(QByteArray(openField) + "\r\n--B--\r\n");
    ASSERT_TRUE(reading.nextPart());
    BwaCgiMultipartFormDataReader::StreamBuffer buffer(&reading.reader);
    char bytes[4];

    EXPECT_EQ(buffer.sgetc(), std::char_traits<char>::eof());
    EXPECT_EQ(buffer.sgetn(bytes, 4), 0);
    EXPECT_FALSE(buffer.loadInternalBuffer());
    EXPECT_FALSE(reading.reader.failed());
}

TEST(MultipartStreamBuffer, GivenASizeBelowOneCopiesNothing)
{
    Reading reading(QByteArray(openField) + "12\r\n--B--\r\n");
    ASSERT_TRUE(reading.nextPart());
    BwaCgiMultipartFormDataReader::StreamBuffer buffer(&reading.reader);
    char bytes[] = "__";

    EXPECT_EQ(buffer.sgetn(bytes, 0), 0);
    EXPECT_EQ(buffer.sgetn(bytes, -1), 0);
    EXPECT_STREQ(bytes, "__");
    EXPECT_EQ(reading.reader.lookahead(), QByteArray("12\r\n--B--\r\n"));
}

TEST(MultipartStreamBuffer, CopiesAcrossChunksUpToTheEnd)
{
    const QByteArray content = QByteArray(4096, 'a') + QByteArray(4096, 'b') + QByteArray(10, 'c');
    Reading reading(openField + content + "\r\n--B--\r\n");
    ASSERT_TRUE(reading.nextPart());
    BwaCgiMultipartFormDataReader::StreamBuffer buffer(&reading.reader);
    QByteArray bytes(20000, '_');

    EXPECT_EQ(buffer.sbumpc(), 'a');
    EXPECT_EQ(buffer.sgetn(bytes.data(), 5), 5);
    EXPECT_EQ(buffer.sgetn(bytes.data() + 5, 8000), 8000);
    EXPECT_EQ(buffer.sgetc(), 'b');
    EXPECT_EQ(buffer.sgetn(bytes.data() + 8005, 10000), 8202 - 8006);
    EXPECT_TRUE(bytes.left(8201) == content.mid(1));
    EXPECT_EQ(bytes.at(8201), '_');
    EXPECT_EQ(buffer.sgetn(bytes.data(), 1), 0);
}

TEST(MultipartStreamBuffer, LoadsThePartInChunksOf4096Bytes)
{
    Reading reading(openField + QByteArray(4096, 'a') + QByteArray(10, 'b') + "\r\n--B--\r\n");
    ASSERT_TRUE(reading.nextPart());
    BwaCgiMultipartFormDataReader::StreamBuffer buffer(&reading.reader);

    EXPECT_TRUE(buffer.loadInternalBuffer());
    EXPECT_EQ(buffer.in_avail(), 4096);
    EXPECT_EQ(buffer.sgetc(), 'a');
    EXPECT_TRUE(buffer.loadInternalBuffer());
    EXPECT_EQ(buffer.in_avail(), 10);
    EXPECT_EQ(buffer.sgetc(), 'b');
    EXPECT_FALSE(buffer.loadInternalBuffer());
    EXPECT_EQ(buffer.in_avail(), 0);
}

TEST(MultipartStreamBuffer, PutsBackWithinTheChunkOnly)
{
    Reading reading(QByteArray(openField) + "12\r\n--B--\r\n");
    ASSERT_TRUE(reading.nextPart());
    BwaCgiMultipartFormDataReader::StreamBuffer buffer(&reading.reader);
    ASSERT_EQ(buffer.sbumpc(), '1');

    EXPECT_EQ(buffer.sungetc(), '1');
    EXPECT_EQ(buffer.sungetc(), std::char_traits<char>::eof());
    EXPECT_EQ(buffer.sgetc(), '1');
}

TEST(MultipartStreamBuffer, NeitherSeeksNorWrites)
{
    Reading reading(QByteArray(openField) + "12\r\n--B--\r\n");
    ASSERT_TRUE(reading.nextPart());
    BwaCgiMultipartFormDataReader::StreamBuffer buffer(&reading.reader);

    EXPECT_EQ(buffer.pubseekoff(0, std::ios_base::beg), std::streampos(-1));
    EXPECT_EQ(buffer.sputc('x'), std::char_traits<char>::eof());
    EXPECT_EQ(buffer.sgetc(), '1');
}

TEST(MultipartStreamBuffer, WhenTheBodyEndsStopsAndTheReaderFails)
{
    Reading reading(QByteArray(openField) + "123456789012");
    ASSERT_TRUE(reading.nextPart());
    BwaCgiMultipartFormDataReader::StreamBuffer buffer(&reading.reader);

    const std::string streamed((std::istreambuf_iterator<char>(&buffer)),
                               std::istreambuf_iterator<char>());

    EXPECT_EQ(streamed, "123");
    EXPECT_TRUE(reading.reader.failed());
}

TEST(MultipartStreamBuffer, GivenTheNextPartANewBufferStreamsIt)
{
    Reading reading(QByteArray(openField) +
                    "1\r\n--B\r\nContent-Disposition: form-data; name=b\r\n\r\n2\r\n--B--\r\n");
    std::string streamed;

    while (reading.nextPart()) {
        BwaCgiMultipartFormDataReader::StreamBuffer buffer(&reading.reader);
        streamed += shown(reading.name) + "=" +
            std::string(std::istreambuf_iterator<char>(&buffer), std::istreambuf_iterator<char>());
    }

    EXPECT_EQ(streamed, "a=1b=2");
}
