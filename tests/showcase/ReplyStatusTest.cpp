// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "ReplyStatus.h"

#include <QList>

#include <gmock/gmock.h>

#include <memory>
#include <sstream>

namespace {

int statusOf(const std::string& reply)
{
    int status = 0;
    {
        std::ostringstream stream;
        ReplyStatus::follow(stream, [&status](int code) { status = code; });
        stream << reply;
    }
    return status;
}

} // namespace

struct StatusCase {
    const char* name;
    const char* reply;
    int status;
};

class ReplyStatusCode : public testing::TestWithParam<StatusCase>
{
};

TEST_P(ReplyStatusCode, IsReadFromTheFirstLine)
{
    EXPECT_EQ(statusOf(GetParam().reply), GetParam().status);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, ReplyStatusCode,
    testing::Values(StatusCase{"StatusLine", "Status: 404 Not Found\n\n", 404},
                    StatusCase{"ProtocolLine", "HTTP/1.1 201 Created\n\n", 201},
                    StatusCase{"NoStatus", "Content-Type: text/plain\n\nStatus: 404\n", 200},
                    StatusCase{"StatusInALaterLine", "Location: /\nStatus: 302 Found\n\n", 200},
                    StatusCase{"NothingWritten", "", 500},
                    StatusCase{"FirstLineWithoutEnd", "Status: 404 Not Found", 500}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(ReplyStatus, GivenSinglePiecesPutsTheLineTogether)
{
    int status = 0;
    auto stream = std::make_unique<std::ostringstream>();
    ReplyStatus::follow(*stream, [&status](int code) { status = code; });

    for (const char character : std::string("Status: 403 Forbidden\n\n")) {
        stream->put(character);
    }
    stream.reset();

    EXPECT_EQ(status, 403);
}

TEST(ReplyStatus, WhenTheStreamLivesOnWaitsForItsEnd)
{
    QList<int> statuses;
    auto stream = std::make_unique<std::ostringstream>();

    ReplyStatus::follow(*stream, [&statuses](int code) { statuses.append(code); });
    *stream << "Status: 201 Created\n\n{}";
    EXPECT_TRUE(statuses.isEmpty());
    stream.reset();

    EXPECT_EQ(statuses, QList<int>{201});
}

TEST(ReplyStatus, PassesOnWhatIsWritten)
{
    std::ostringstream stream;
    std::stringbuf* const buffer = stream.rdbuf();
    ReplyStatus::follow(stream, [](int) {});

    // rdbuf() of the string stream stays its own buffer, whatever stands in front of it.
    stream << "Status: 200 OK" << std::endl << std::endl << 'a' << "bc" << std::flush;

    EXPECT_EQ(buffer->str(), "Status: 200 OK\n\nabc");
}

TEST(ReplyStatus, GivenABufferThatFailsTheStreamFails)
{
    struct FailingBuffer : std::streambuf {
        int sync() override { return -1; }
    } failing;
    std::ostream stream(&failing);
    ReplyStatus::follow(stream, [](int) {});

    EXPECT_FALSE(stream << "a");
    stream.clear();
    EXPECT_FALSE(stream.put('a'));
    stream.clear();
    EXPECT_FALSE(stream.flush());
}
