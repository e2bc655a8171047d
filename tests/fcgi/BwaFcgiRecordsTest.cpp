// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "fcgi/BwaFcgiRecords_p.h"
#include "support/ListenerFixture.h"
#include "support/QtPrinters.h"

#include <gtest/gtest.h>

#include <algorithm>

using BwaFcgiRecords::HeaderScan;
using BwaFcgiRecords::isWholeInput;
using BwaFcgiRecords::Record;
using BwaFcgiRecords::Verdict;

namespace {

const int beginRequest = 1;
const int params = 4;
const int standardInput = 5;

// BEGIN_REQUEST, parameters in two records, and their end, all with padding.
QByteArray wholeHeader()
{
    return recordOf(1, beginRequest, QByteArray("\0\1\0\0\0\0\0\0", 8), 3) +
        recordOf(1, params, QByteArray("\1\1ab"), 5) +
        recordOf(1, params, QByteArray("\1\1cd"), 255) + recordOf(1, params, QByteArray(), 4);
}

struct Scanned {
    Verdict verdict;
    int taken; // bytes
};

// What a scan of @a bytes says that comes in pieces of @a size.
Scanned scannedInPieces(const QByteArray& bytes, int size)
{
    HeaderScan scan;
    Scanned result = {Verdict::Incomplete, 0};
    while (result.verdict == Verdict::Incomplete && result.taken < bytes.size()) {
        const int length = std::min<int>(size, static_cast<int>(bytes.size()) - result.taken);
        result.verdict =
            scan.scan(bytes.constData() + result.taken, static_cast<std::size_t>(length));
        result.taken += static_cast<int>(scan.position());
    }
    return result;
}

bool isInput(const QByteArray& bytes)
{
    return isWholeInput(bytes.constData(), static_cast<std::size_t>(bytes.size()), 1);
}

QByteArray answerTo(const QByteArray& record, int mostRequests = 1024)
{
    return BwaFcgiRecords::answerToManagement(Record(record.constData()), record.constData() + 8,
                                              mostRequests);
}

} // namespace

TEST(BwaFcgiRecordsHeaderScan, InPiecesOfAnySizeFindsTheEnd)
{
    const QByteArray input = recordOf(1, standardInput, "body") + wholeHeader();

    for (int size = 1; size <= wholeHeader().size() + input.size(); ++size) {
        const Scanned scanned = scannedInPieces(wholeHeader() + input, size);

        EXPECT_EQ(scanned.verdict, Verdict::Complete) << size;
        EXPECT_EQ(scanned.taken, wholeHeader().size()) << size;
    }
}

TEST(BwaFcgiRecordsHeaderScan, CutAnywhereIsIncomplete)
{
    for (int end = 0; end < wholeHeader().size(); ++end) {
        const Scanned scanned = scannedInPieces(wholeHeader().left(end), 7);

        EXPECT_EQ(scanned.verdict, Verdict::Incomplete) << end;
        EXPECT_EQ(scanned.taken, end);
    }
}

TEST(BwaFcgiRecordsHeaderScan, InPiecesOfAnySizeRefusesAnotherVersion)
{
    QByteArray bytes = wholeHeader();
    bytes[8 + 8 + 3] = '\2'; // of the second record

    for (int size = 1; size <= bytes.size(); ++size) {
        EXPECT_EQ(scannedInPieces(bytes, size).verdict, Verdict::Broken) << size;
    }
}

// A length above 127 has four bytes, the first with its highest bit set.
TEST(BwaFcgiRecordsHeaderScan, InPiecesOfAnySizeRefusesLengthsBeyondAnyHeader)
{
    const QByteArray begin = wholeHeader().left(8 + 8 + 3);
    const QByteArray hugeName = begin + recordOf(1, params, QByteArray("\xff\xff\xff\xfe\1ab", 7));
    const QByteArray hugeValue = begin + recordOf(1, params, QByteArray("\1\x80\x41\0\0ab", 7));
    const QByteArray hugeBoth =
        begin + recordOf(1, params, QByteArray("\xff\xff\xff\xfe\xff\xff\xff\xfe", 8));

    for (int size = 1; size <= hugeBoth.size(); ++size) {
        EXPECT_EQ(scannedInPieces(hugeName, size).verdict, Verdict::Broken) << size;
        EXPECT_EQ(scannedInPieces(hugeValue, size).verdict, Verdict::Broken) << size;
        EXPECT_EQ(scannedInPieces(hugeBoth, size).verdict, Verdict::Broken) << size;
    }
}

TEST(BwaFcgiRecordsHeaderScan, InPiecesOfAnySizeFollowsLongLengthsAcrossRecords)
{
    const QByteArray pairs = QByteArray("\x80\0\0\3\x80\0\1\0abc", 11) + QByteArray(256, '\xff') +
        QByteArray("\0\0\1\1xy", 6);
    const QByteArray header = wholeHeader().left(8 + 8 + 3) +
        recordOf(1, params, pairs.left(6), 2) + recordOf(1, params, pairs.mid(6), 1) +
        recordOf(1, params, QByteArray());

    for (int size = 1; size <= header.size(); ++size) {
        EXPECT_EQ(scannedInPieces(header, size).verdict, Verdict::Complete) << size;
    }
}

TEST(BwaFcgiRecordsHeaderScan, GivenBytesBehindTheEndTakesNone)
{
    HeaderScan scan;
    const QByteArray header = wholeHeader();
    scan.scan(header.constData(), static_cast<std::size_t>(header.size()));

    EXPECT_EQ(scan.scan("more", 4), Verdict::Complete);
    EXPECT_EQ(scan.position(), 0U);
}

// Input

TEST(BwaFcgiRecordsInput, IsWholeWithItsEmptyRecord)
{
    EXPECT_TRUE(isInput(recordOf(1, standardInput, QByteArray())));
    EXPECT_TRUE(isInput(recordOf(1, standardInput, QByteArray(), 8)));
    EXPECT_TRUE(isInput(recordOf(1, standardInput, "a", 7) + recordOf(1, standardInput, "b") +
                        recordOf(1, standardInput, QByteArray())));
}

TEST(BwaFcgiRecordsInput, CutAnywhereIsNotWhole)
{
    const QByteArray input =
        recordOf(1, standardInput, "ab", 6) + recordOf(1, standardInput, QByteArray(), 3);

    for (int end = 0; end < input.size(); ++end) {
        EXPECT_FALSE(isInput(input.left(end))) << end;
    }
}

TEST(BwaFcgiRecordsInput, WithAnythingElseIsNotWhole)
{
    const QByteArray end = recordOf(1, standardInput, QByteArray());

    EXPECT_FALSE(isInput(end + "x"));
    EXPECT_FALSE(isInput(end + end));
    EXPECT_FALSE(isInput(recordOf(1, 2, QByteArray()) + end)); // ABORT_REQUEST
    EXPECT_FALSE(isInput(recordOf(2, standardInput, QByteArray())));
}

// Management

TEST(BwaFcgiRecordsManagement, GivenKnownNamesTellsTheirValues)
{
    EXPECT_EQ(answerTo(recordOf(0, 9, QByteArray("\x0f\0FCGI_MPXS_CONNS", 17)), 7),
              recordOf(0, 10, QByteArray("\x0f\1FCGI_MPXS_CONNS0")));
    EXPECT_EQ(answerTo(recordOf(0, 9, QByteArray("\x0e\0FCGI_MAX_CONNS", 16)), 7),
              recordOf(0, 10, QByteArray("\x0e\1FCGI_MAX_CONNS7")));
    EXPECT_EQ(answerTo(recordOf(0, 9, QByteArray("\x0d\0FCGI_MAX_REQS", 15)), 12345),
              recordOf(0, 10, QByteArray("\x0d\5FCGI_MAX_REQS12345")));
}

TEST(BwaFcgiRecordsManagement, GivenUnknownNamesTellsNothing)
{
    EXPECT_EQ(answerTo(recordOf(0, 9, QByteArray())), recordOf(0, 10, QByteArray()));
    EXPECT_EQ(answerTo(recordOf(0, 9, QByteArray("\x0e\0FCGI_MAX_CONNX", 16))),
              recordOf(0, 10, QByteArray()));
    EXPECT_EQ(answerTo(recordOf(0, 9, QByteArray("\3\4abc1234", 9))),
              recordOf(0, 10, QByteArray()));
}

TEST(BwaFcgiRecordsManagement, CutAnywhereReadsNothingBeyond)
{
    const QByteArray pair("\x0e\0FCGI_MAX_CONNS", 16);

    for (int end = 0; end < pair.size(); ++end) {
        const QByteArray record = recordOf(0, 9, pair.left(end));
        const QByteArray copy(record.constData(), record.size()); // ends where the record does

        EXPECT_EQ(answerTo(copy), recordOf(0, 10, QByteArray())) << end;
    }
}

TEST(BwaFcgiRecordsManagement, GivenAnotherTypeSaysThatItIsUnknown)
{
    EXPECT_EQ(answerTo(recordOf(0, 12, "x")), recordOf(0, 11, QByteArray("\x0c\0\0\0\0\0\0\0", 8)));
    EXPECT_EQ(answerTo(recordOf(0, 255, QByteArray())),
              recordOf(0, 11, QByteArray("\xff\0\0\0\0\0\0\0", 8)));
}
