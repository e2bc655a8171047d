// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// Bodies that make a reader which searches or decodes the same bytes again and again take minutes
// for a megabyte. Each is first compared with the literal model at a size that the model can bear;
// at full size the result must be right, and the test's time limit does the rest.

#include "support/HostileBodies.h"

#include "cgi/BwaCgiMultipartFormDataReader.h"
#include "cgi/BwaCgiRequest.h"
#include "support/LiteralMultipartReader.h"
#include "support/MemoryCgiInput.h"
#include "support/QtPrinters.h"
#include "support/ShownText.h"

#include <gmock/gmock.h>

#include <string>

namespace {

const int kibibyte = 1024;
const int mebibyte = 1024 * kibibyte;

const char* const contentType = "multipart/form-data; boundary=B";

// What a reader made of a body, shortened to what its size leaves readable.
struct Outcome {
    int parts = 0;
    qint64 contentBytes = 0;
    QString lastName;
    bool failed = false;
    int bytesRead = 0;
    int reads = 0;
};

std::string shownOutcome(const Outcome& outcome)
{
    return std::to_string(outcome.parts) + " parts, " + std::to_string(outcome.contentBytes) +
        " bytes, last " + shownName(outcome.lastName).substr(0, 20) +
        (outcome.failed ? ", failed" : ", complete") + ", read " +
        std::to_string(outcome.bytesRead) + " in " + std::to_string(outcome.reads);
}

template <typename Reader>
Outcome readParts(Reader& reader)
{
    Outcome outcome;
    QString filename;
    QString type;
    while (reader.nextPart(outcome.lastName, filename, type)) {
        ++outcome.parts;
        outcome.contentBytes += reader.readAllFromPart().size();
    }
    return outcome;
}

std::string outcomeOf(const QByteArray& body, const QByteArray& boundary = "B")
{
    MemoryCgiInput input("multipart/form-data; boundary=" + boundary, body);
    BwaCgiRequest request(&input);
    BwaCgiMultipartFormDataReader reader(&request);
    Outcome outcome = readParts(reader);
    outcome.failed = reader.failed();
    outcome.bytesRead = input.position;
    outcome.reads = input.readSizes.size();
    return shownOutcome(outcome);
}

std::string modelOutcomeOf(const QByteArray& body, const QByteArray& boundary = "B")
{
    MemoryCgiInput input(contentType, body);
    LiteralMultipartReader reader(boundary, &input, static_cast<unsigned int>(body.size()));
    Outcome outcome = readParts(reader);
    outcome.failed = reader.failed;
    outcome.bytesRead = input.position;
    outcome.reads = input.readSizes.size();
    return shownOutcome(outcome);
}

std::string readAll(int size)
{
    return "read " + std::to_string(size) + " in " + std::to_string((size + 4095) / 4096);
}

struct HostileCase {
    const char* name;
    QByteArray (*body)(int size);
};

} // namespace

class HostileBody : public testing::TestWithParam<HostileCase>
{
};

TEST_P(HostileBody, AtAModelsSizeIsReadAsTheModelReadsIt)
{
    for (const int size : {0, 1, 50, 500, 4000, 4096, 5000, 12 * kibibyte}) {
        const QByteArray body = GetParam().body(size);

        EXPECT_EQ(outcomeOf(body), modelOutcomeOf(body)) << size;
    }
}

TEST_P(HostileBody, WhenCutShortIsReadAsTheModelReadsIt)
{
    for (const int size : {500, 4096, 6 * kibibyte}) {
        const QByteArray body = GetParam().body(size).chopped(1);

        EXPECT_EQ(outcomeOf(body), modelOutcomeOf(body)) << size;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Cases, HostileBody,
    testing::Values(HostileCase{"DelimitersBeforeOneEmptyLine", delimitersBeforeOneEmptyLine},
                    HostileCase{"DelimitersBeforeOneLongRefusedDisposition",
                                delimitersBeforeOneLongRefusedDisposition},
                    HostileCase{"DelimitersBeforeOneField", delimitersBeforeOneField},
                    HostileCase{"RefusedDispositionsBeforeOneEmptyLine",
                                refusedDispositionsBeforeOneEmptyLine},
                    HostileCase{"OneEndlessHeader", oneEndlessHeader},
                    HostileCase{"OneLongHeader", oneLongHeader},
                    HostileCase{"TinyParts", tinyParts},
                    HostileCase{"TinyRefusedParts", tinyRefusedParts},
                    HostileCase{"NearlyDelimiters", nearlyDelimiters},
                    HostileCase{"LineBreaksOnly", lineBreaksOnly}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(HostileMegabyte, OfDelimitersBeforeOneEmptyLineHasNoParts)
{
    const QByteArray body = delimitersBeforeOneEmptyLine(mebibyte);

    EXPECT_EQ(outcomeOf(body), "0 parts, 0 bytes, last , complete, " + readAll(body.size()));
}

TEST(HostileMegabyte, OfDelimitersBeforeOneLongRefusedDispositionHasNoParts)
{
    const QByteArray body = delimitersBeforeOneLongRefusedDisposition(mebibyte);

    EXPECT_EQ(outcomeOf(body), "0 parts, 0 bytes, last , complete, " + readAll(body.size()));
}

TEST(HostileMegabyte, OfDelimitersBeforeOneFieldHasThatField)
{
    const QByteArray body = delimitersBeforeOneField(mebibyte);

    EXPECT_EQ(outcomeOf(body), "1 parts, 1 bytes, last a, complete, " + readAll(body.size()));
}

TEST(HostileMegabyte, OfRefusedDispositionsBeforeOneEmptyLineHasNoParts)
{
    const QByteArray body = refusedDispositionsBeforeOneEmptyLine(mebibyte);

    EXPECT_EQ(outcomeOf(body), "0 parts, 0 bytes, last , complete, " + readAll(body.size()));
}

TEST(HostileMegabyte, OfOneEndlessHeaderFails)
{
    // Sixteen of them: fewer take a reader that starts each search at the front only seconds.
    const QByteArray body = oneEndlessHeader(16 * mebibyte);

    // The failed refill asks the input for the nothing that is left.
    EXPECT_EQ(outcomeOf(body),
              "0 parts, 0 bytes, last , failed, read " + std::to_string(body.size()) + " in " +
                  std::to_string((body.size() + 4095) / 4096 + 1));
}

TEST(HostileMegabyte, OfOneLongHeaderIsReadToItsEnd)
{
    const QByteArray body = oneLongHeader(16 * mebibyte);

    EXPECT_EQ(outcomeOf(body), "1 parts, 1 bytes, last a, complete, " + readAll(body.size()));
}

TEST(HostileMegabyte, OfTinyPartsHasThemAll)
{
    const QByteArray body = tinyParts(mebibyte);
    const int parts = mebibyte / 50;

    EXPECT_THAT(outcomeOf(body),
                testing::StartsWith(std::to_string(parts) + " parts, " + std::to_string(parts) +
                                    " bytes, last a, complete, "));
}

TEST(HostileMegabyte, OfTinyRefusedPartsHasNone)
{
    const QByteArray body = tinyRefusedParts(mebibyte);

    EXPECT_EQ(outcomeOf(body), "0 parts, 0 bytes, last , complete, " + readAll(body.size()));
}

TEST(HostileMegabyte, OfNearlyDelimitersIsContent)
{
    const QByteArray body = nearlyDelimiters(4 * mebibyte);
    const int content = 4 * mebibyte / 6 * 6;

    EXPECT_EQ(outcomeOf(body),
              "1 parts, " + std::to_string(content) + " bytes, last a, complete, " +
                  readAll(body.size()));
}

TEST(HostileMegabyte, OfALongBoundarysNearlyDelimitersIsContent)
{
    const QByteArray boundary(8000, 'B');
    const QByteArray nearlyDelimiter = "\r\n--" + boundary + "x";
    const QByteArray content = nearlyDelimiter.repeated(4 * mebibyte / nearlyDelimiter.size());
    const QByteArray body = "--" + boundary + "\r\nContent-Disposition: form-data; name=a\r\n\r\n" +
        content + "\r\n--" + boundary + "--\r\n";

    EXPECT_THAT(outcomeOf(body, boundary),
                testing::StartsWith("1 parts, " + std::to_string(content.size()) +
                                    " bytes, last a, complete, "));
}

TEST(HostileMegabyte, OfALongBoundaryAtAModelsSizeIsReadAsTheModelReadsIt)
{
    const QByteArray boundary(8000, 'B');
    const QByteArray body = "--" + boundary + "\r\nContent-Disposition: form-data; name=a\r\n\r\n" +
        ("\r\n--" + boundary + "x").repeated(10) + "\r\n--" + boundary + "--\r\n";

    EXPECT_EQ(outcomeOf(body, boundary), modelOutcomeOf(body, boundary));
}

TEST(HostileMegabyte, OfABoundaryThatRepeatsItsBeginningIsContent)
{
    const QByteArray body = nearlyRepeatingDelimiters(mebibyte);

    EXPECT_THAT(outcomeOf(body, "\"" + repeatingBoundary(mebibyte) + "\""),
                testing::StartsWith("1 parts, " + std::to_string(mebibyte / 5 * 5) +
                                    " bytes, last a, complete, "));
}

TEST(HostileMegabyte, OfABoundaryThatRepeatsItsBeginningAtAModelsSizeIsReadAsTheModelReadsIt)
{
    for (const int size : {64, 500, 4096, 12 * kibibyte}) {
        const QByteArray boundary = repeatingBoundary(size);
        const QByteArray body = nearlyRepeatingDelimiters(size);

        EXPECT_EQ(outcomeOf(body, "\"" + boundary + "\""), modelOutcomeOf(body, boundary)) << size;
    }
}

TEST(HostileMegabyte, OfAFormIsProcessedToo)
{
    MemoryCgiInput input(contentType, delimitersBeforeOneField(mebibyte));
    BwaCgiRequest request(&input);

    EXPECT_TRUE(request.processBodyContent());
    EXPECT_EQ(shownVariables(request.formVariables()), "a=1");
}
