// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "cgi/BwaStandardCgiInput.h"

#include "support/QtPrinters.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <thread>

#include <sys/ioctl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

// Standard input is a pipe for the time of one test, which reads it to its end.
class StandardInput : public testing::Test
{
public:
    StandardInput()
        : m_savedInput(::dup(STDIN_FILENO))
    {
        int ends[2];
        EXPECT_EQ(::pipe(ends), 0);
        EXPECT_EQ(::dup2(ends[0], STDIN_FILENO), STDIN_FILENO);
        ::close(ends[0]);
        m_writingEnd = ends[1];
        std::clearerr(stdin);
        std::cin.clear();
    }

    ~StandardInput() override
    {
        end();
        if (m_savedInput >= 0) {
            ::dup2(m_savedInput, STDIN_FILENO);
            ::close(m_savedInput);
        }
        std::clearerr(stdin);
    }

protected:
    void send(const QByteArray& bytes)
    {
        EXPECT_EQ(::write(m_writingEnd, bytes.constData(), static_cast<std::size_t>(bytes.size())),
                  bytes.size());
    }

    void end()
    {
        if (m_writingEnd >= 0) {
            ::close(m_writingEnd);
        }
        m_writingEnd = -1;
    }

    // Whether everything that was sent has been taken out of the pipe, within ten seconds.
    static bool everythingWasTaken()
    {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        int bytesLeft = 1;
        while (bytesLeft > 0 && std::chrono::steady_clock::now() < deadline) {
            std::this_thread::yield();
            ::ioctl(STDIN_FILENO, FIONREAD, &bytesLeft);
        }
        return bytesLeft == 0;
    }

    static long mostMemoryUsed() // in KiB
    {
        rusage usage = {};
        ::getrusage(RUSAGE_SELF, &usage);
        return usage.ru_maxrss;
    }

    BwaStandardCgiInput input;

private:
    int m_savedInput; // owned
    int m_writingEnd; // owned; -1 once closed
};

class EnvironmentVariable
{
public:
    EnvironmentVariable(const char* name, const char* value)
        : m_name(name)
    {
        ::setenv(name, value, 1);
    }
    EnvironmentVariable(const EnvironmentVariable&) = delete;
    EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;
    ~EnvironmentVariable() { ::unsetenv(m_name); }

private:
    const char* m_name;
};

} // namespace

TEST_F(StandardInput, GivenFewerBytesThanAskedReturnsThem)
{
    send("abcd");
    end();

    EXPECT_EQ(input.read(10), QByteArray("abcd"));
}

TEST_F(StandardInput, AtItsEndReturnsAnEmptyArray)
{
    end();

    EXPECT_EQ(input.read(10), QByteArray());
    EXPECT_EQ(input.read(10), QByteArray());
}

TEST_F(StandardInput, GivenMoreBytesThanAskedLeavesTheRestForTheNextRead)
{
    send("abcdefg");
    end();

    EXPECT_EQ(input.read(3), QByteArray("abc"));
    EXPECT_EQ(input.read(0), QByteArray());
    EXPECT_EQ(input.read(3), QByteArray("def"));
    EXPECT_EQ(input.read(3), QByteArray("g"));
    EXPECT_EQ(input.read(3), QByteArray());
}

TEST_F(StandardInput, KeepsEveryByteAsItIs)
{
    QByteArray bytes;
    for (int byte = 0; byte < 256; ++byte) {
        bytes.append(static_cast<char>(byte));
    }
    send(bytes);
    end();

    EXPECT_EQ(input.read(256), bytes);
    EXPECT_EQ(input.read(1), QByteArray());
}

TEST_F(StandardInput, BlocksUntilAllBytesHaveCome)
{
    bool firstPieceWasTaken = false;
    send("abc");
    std::thread sender([this, &firstPieceWasTaken] {
        firstPieceWasTaken = everythingWasTaken();
        send("def");
        end();
    });

    const QByteArray bytes = input.read(6);
    sender.join();

    EXPECT_TRUE(firstPieceWasTaken);
    EXPECT_EQ(bytes, QByteArray("abcdef"));
    EXPECT_EQ(input.read(1), QByteArray());
}

TEST_F(StandardInput, GivenMoreThanAPipeHoldsReturnsAllOfIt)
{
    const QByteArray bytes(3 * 1024 * 1024 + 17, 'x');
    std::thread sender([this, &bytes] {
        for (int position = 0; position < bytes.size(); position += 4096) {
            send(bytes.mid(position, 4096));
        }
        end();
    });

    const QByteArray bytesRead = input.read(static_cast<unsigned int>(bytes.size()) + 100);
    sender.join();

    EXPECT_TRUE(bytesRead == bytes);
}

TEST_F(StandardInput, GivenAHugeAnnouncedSizeUsesMemoryForWhatComesOnly)
{
    const long before = mostMemoryUsed();
    send("abcd");
    end();

    EXPECT_EQ(input.read(4294967295U), QByteArray("abcd"));
    EXPECT_LT(mostMemoryUsed() - before, 64 * 1024);
}

// In a process of its own, as std::cin never gets its first buffer back.
TEST(BwaStandardCgiInputDeathTest, GivenADescriptorThatCannotBeReadHasEnded)
{
    const auto readWithoutInput = [] {
        std::ios::sync_with_stdio(false);
        ::close(STDIN_FILENO);
        std::exit(BwaStandardCgiInput().read(10).isEmpty() ? 0 : 1);
    };

    EXPECT_EXIT(readWithoutInput(), testing::ExitedWithCode(0), "");
}

TEST(BwaStandardCgiInputGetenv, ReturnsTheVariable)
{
    const EnvironmentVariable variable("BWA_TEST_VARIABLE", "HTTP/1.1");

    EXPECT_EQ(BwaStandardCgiInput().getenv(QStringLiteral("BWA_TEST_VARIABLE")),
              QStringLiteral("HTTP/1.1"));
}

TEST(BwaStandardCgiInputGetenv, GivenUnsetVariableReturnsAnEmptyText)
{
    EXPECT_EQ(BwaStandardCgiInput().getenv(QStringLiteral("BWA_TEST_UNSET")), QString());
}

TEST(BwaStandardCgiInputGetenv, GivenEmptyVariableReturnsAnEmptyText)
{
    const EnvironmentVariable variable("BWA_TEST_VARIABLE", "");

    EXPECT_EQ(BwaStandardCgiInput().getenv(QStringLiteral("BWA_TEST_VARIABLE")), QString());
}

TEST(BwaStandardCgiInputGetenv, ReadsTheValueAsLatin1)
{
    const EnvironmentVariable variable("BWA_TEST_VARIABLE", "caf\xe9 \xc3\xa9");

    EXPECT_EQ(BwaStandardCgiInput().getenv(QStringLiteral("BWA_TEST_VARIABLE")),
              QStringLiteral(u"caf\u00e9 \u00c3\u00a9"));
}

TEST(BwaStandardCgiInputGetenv, LooksTheNameUpInLatin1)
{
    const EnvironmentVariable variable("BWA_TEST_\xe9", "found");

    EXPECT_EQ(BwaStandardCgiInput().getenv(QStringLiteral(u"BWA_TEST_\u00e9")),
              QStringLiteral("found"));
}

TEST(BwaStandardCgiInputGetenv, ReadsTheVariableAnewEachTime)
{
    BwaStandardCgiInput input;
    const EnvironmentVariable first("BWA_TEST_VARIABLE", "1");

    EXPECT_EQ(input.getenv(QStringLiteral("BWA_TEST_VARIABLE")), QStringLiteral("1"));
    const EnvironmentVariable second("BWA_TEST_VARIABLE", "2");
    EXPECT_EQ(input.getenv(QStringLiteral("BWA_TEST_VARIABLE")), QStringLiteral("2"));
}
