// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "fcgi/BwaFcgiBody_p.h"
#include "support/ListenerFixture.h"
#include "support/QtPrinters.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include <sys/socket.h>
#include <unistd.h>

namespace {

const int abortRequest = 2;
const int params = 4;
const int standardInput = 5;
const int timeout = 10000; // ms

/** Two ends of a connection: what is sent on the one is the body's. */
class BwaFcgiBodyReading : public testing::Test
{
public:
    BwaFcgiBodyReading() { EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, m_ends), 0); }
    ~BwaFcgiBodyReading() override
    {
        closeSending();
        close(m_ends[1]);
    }

protected:
    int connection() const { return m_ends[1]; }

    void send(const QByteArray& bytes)
    {
        EXPECT_EQ(::send(m_ends[0], bytes.constData(), static_cast<std::size_t>(bytes.size()), 0),
                  bytes.size());
    }

    void closeSending()
    {
        if (m_ends[0] >= 0) {
            close(std::exchange(m_ends[0], -1));
        }
    }

    static QByteArray read(BwaFcgiBody& body, int size, BwaFcgiBody::Wait wait)
    {
        QByteArray bytes(size, '\0');
        const std::size_t taken = body.read(bytes.data(), static_cast<std::size_t>(size), wait);
        return bytes.left(static_cast<int>(taken));
    }

    // All that can be read without a wait, in pieces of @a size.
    static QByteArray available(BwaFcgiBody& body, int size)
    {
        QByteArray bytes;
        QByteArray piece = read(body, size, BwaFcgiBody::ForNothing);
        while (!piece.isEmpty()) {
            bytes += piece;
            piece = read(body, size, BwaFcgiBody::ForNothing);
        }
        return bytes;
    }

private:
    int m_ends[2] = {-1, -1};
};

QByteArray noise(int size)
{
    QByteArray bytes(size, '\0');
    std::mt19937 random(1);
    std::generate(bytes.begin(), bytes.end(), [&random] { return static_cast<char>(random()); });
    return bytes;
}

// The body "one, two, three" in records of odd sizes, with another request's between them.
QByteArray oddRecords()
{
    return recordOf(1, standardInput, "o", 7) +
        recordOf(2, standardInput, QByteArray(300, 'f'), 9) + recordOf(1, standardInput, "ne, t") +
        recordOf(2, standardInput, QByteArray()) + recordOf(0, 9, QByteArray("\1\1ab"), 4) +
        recordOf(1, standardInput, "wo, three", 255) + recordOf(1, standardInput, QByteArray(), 5);
}

} // namespace

TEST_F(BwaFcgiBodyReading, InPiecesOfAnySizeGivesTheSameBytes)
{
    for (int size = 1; size <= 16; ++size) {
        BwaFcgiBody body(connection(), 1, timeout);
        send(oddRecords());

        EXPECT_EQ(available(body, size), QByteArray("one, two, three")) << size;
        EXPECT_TRUE(body.hasEnded());
        EXPECT_TRUE(body.isOver());
    }
}

TEST_F(BwaFcgiBodyReading, WithoutWaitingGoesOnWhereverTheInputWasCut)
{
    const QByteArray records = oddRecords();
    for (int cut = 0; cut <= records.size(); ++cut) {
        BwaFcgiBody body(connection(), 1, timeout);
        send(records.left(cut));
        const QByteArray first = available(body, 3);
        send(records.mid(cut));

        EXPECT_EQ(first + available(body, 1000), QByteArray("one, two, three")) << cut;
        EXPECT_TRUE(body.hasEnded()) << cut;
    }
}

TEST_F(BwaFcgiBodyReading, WithoutWaitingTakesByteByByte)
{
    BwaFcgiBody body(connection(), 1, timeout);
    QByteArray taken;
    for (const char byte : oddRecords()) {
        EXPECT_FALSE(body.isOver());
        send(QByteArray(1, byte));
        taken += available(body, 10);
    }

    EXPECT_EQ(taken, QByteArray("one, two, three"));
    EXPECT_TRUE(body.hasEnded());
}

TEST_F(BwaFcgiBodyReading, TakesNothingBehindItsEnd)
{
    BwaFcgiBody body(connection(), 1, timeout);
    send(oddRecords() + "next");

    available(body, 1000);

    char next[5] = {};
    EXPECT_EQ(recv(connection(), next, sizeof(next), MSG_DONTWAIT), 4);
    EXPECT_STREQ(next, "next");
}

TEST_F(BwaFcgiBodyReading, GivenLessThanAllTakesNoMore)
{
    BwaFcgiBody body(connection(), 1, timeout);
    send(oddRecords());

    EXPECT_EQ(read(body, 4, BwaFcgiBody::ForAll), QByteArray("one,"));
    EXPECT_FALSE(body.isOver());
    EXPECT_EQ(read(body, 11, BwaFcgiBody::ForAll), QByteArray(" two, three"));
}

// Records of one byte more and one less than what is read ahead, and of the most that there can be.
TEST_F(BwaFcgiBodyReading, InSmallPiecesGivesTheBytesOfLargeRecords)
{
    const int mostAhead = 32 * 1024;
    const int pieceSize = 4096;
    for (const int size : {mostAhead - 1, mostAhead, mostAhead + 1, mostAhead + pieceSize, 65535}) {
        BwaFcgiBody body(connection(), 1, timeout);
        const QByteArray content = noise(size);
        send(recordOf(1, standardInput, content, 3) + recordOf(1, standardInput, "end") +
             recordOf(1, standardInput, QByteArray()));

        QByteArray taken;
        while (!body.isOver()) {
            taken += read(body, pieceSize, BwaFcgiBody::ForAll);
        }
        EXPECT_EQ(taken, content + "end") << size;
        EXPECT_TRUE(body.hasEnded()) << size;
    }
}

TEST_F(BwaFcgiBodyReading, AfterASmallReadGivesTheRestWithoutWaiting)
{
    BwaFcgiBody body(connection(), 1, timeout);
    send(recordOf(1, standardInput, "one, two, three") + recordOf(1, standardInput, QByteArray()));

    EXPECT_EQ(read(body, 4, BwaFcgiBody::ForAll), QByteArray("one,"));
    EXPECT_EQ(available(body, 5), QByteArray(" two, three"));
    EXPECT_TRUE(body.hasEnded());
}

TEST_F(BwaFcgiBodyReading, WhenTheConnectionEndsGivesWhatHasComeFirst)
{
    BwaFcgiBody body(connection(), 1, timeout);
    send(recordOf(1, standardInput, "one, two, three").left(8 + 8));
    closeSending();

    EXPECT_EQ(read(body, 4, BwaFcgiBody::ForAll), QByteArray("one,"));
    EXPECT_FALSE(body.isOver());
    EXPECT_EQ(read(body, 100, BwaFcgiBody::ForAll), QByteArray(" two"));
    EXPECT_TRUE(body.isOver());
    EXPECT_FALSE(body.hasEnded());
}

TEST_F(BwaFcgiBodyReading, WhenNothingComesEndsTheWaitInTime)
{
    BwaFcgiBody body(connection(), 1, 50);
    send(recordOf(1, standardInput, "body").left(10));

    const qint64 milliseconds =
        millisecondsOf([&] { EXPECT_EQ(read(body, 4, BwaFcgiBody::ForAll), QByteArray("bo")); });

    EXPECT_GE(milliseconds, 49);
    EXPECT_LT(milliseconds, 5000);
    EXPECT_FALSE(body.hasEnded());
}

TEST_F(BwaFcgiBodyReading, WhenTheConnectionEndsIsOverAndHasNotEnded)
{
    BwaFcgiBody body(connection(), 1, timeout);
    send(recordOf(1, standardInput, "body"));
    closeSending();

    EXPECT_EQ(read(body, 10, BwaFcgiBody::ForAll), QByteArray("body"));
    EXPECT_TRUE(body.isOver());
    EXPECT_FALSE(body.hasEnded());
}

namespace {

struct BrokenBody {
    const char* name;
    QByteArray record;
};

class BwaFcgiBodyBroken
    : public BwaFcgiBodyReading
    , public testing::WithParamInterface<BrokenBody>
{
};

} // namespace

TEST_P(BwaFcgiBodyBroken, IsOverAndHasNotEnded)
{
    BwaFcgiBody body(connection(), 1, timeout);
    send(recordOf(1, standardInput, "body", 4) + GetParam().record);

    EXPECT_EQ(read(body, 10, BwaFcgiBody::ForAll), QByteArray("body"));
    EXPECT_TRUE(body.isOver());
    EXPECT_FALSE(body.hasEnded());
    EXPECT_EQ(read(body, 10, BwaFcgiBody::ForAll), QByteArray());
}

INSTANTIATE_TEST_SUITE_P(
    Cases, BwaFcgiBodyBroken,
    testing::Values(BrokenBody{"Aborted", recordOf(1, abortRequest, QByteArray())},
                    BrokenBody{"ParametersAgain", recordOf(1, params, "ab")},
                    BrokenBody{"AnotherVersion", QByteArray("\2\5\0\1\0\0\0\0", 8)}),
    [](const auto& info) { return std::string(info.param.name); });
