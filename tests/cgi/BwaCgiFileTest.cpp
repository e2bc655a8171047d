// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "cgi/BwaCgiFile.h"

#include "support/QtPrinters.h"

#include <gtest/gtest.h>

#include <ostream>
#include <sstream>

TEST(BwaCgiFile, KeepsItsThreeValues)
{
    const BwaCgiFile file(QStringLiteral("a.png"), QStringLiteral("image/png"),
                          QByteArray("\x89PNG"));

    EXPECT_EQ(file.fileName(), QStringLiteral("a.png"));
    EXPECT_EQ(file.contentType(), QStringLiteral("image/png"));
    EXPECT_EQ(file.data(), QByteArray("\x89PNG"));
}

TEST(BwaCgiFile, GivenEmptyContentTypeIsPlainText)
{
    const BwaCgiFile file(QStringLiteral("a"), QString::fromLatin1(""), QByteArray("1"));

    EXPECT_EQ(file.contentType(), QStringLiteral("text/plain"));
}

TEST(BwaCgiFile, GivenNullContentTypeIsPlainText)
{
    const BwaCgiFile file(QStringLiteral("a"), QString(), QByteArray("1"));

    EXPECT_EQ(file.contentType(), QStringLiteral("text/plain"));
}

TEST(BwaCgiFile, GivenBlankContentTypeKeepsIt)
{
    const BwaCgiFile file(QStringLiteral("a"), QStringLiteral(" "), QByteArray("1"));

    EXPECT_EQ(file.contentType(), QStringLiteral(" "));
}

TEST(BwaCgiFile, WhenDefaultConstructedIsEmptyPlainText)
{
    const BwaCgiFile file;

    EXPECT_TRUE(file.fileName().isNull());
    EXPECT_EQ(file.contentType(), QStringLiteral("text/plain"));
    EXPECT_TRUE(file.data().isNull());
}

TEST(BwaCgiFile, IsCopiedWithAllValues)
{
    const BwaCgiFile original(QStringLiteral("a"), QStringLiteral("b/c"), QByteArray("1"));
    BwaCgiFile copy(original);
    BwaCgiFile assigned;

    assigned = copy;
    copy = BwaCgiFile();

    EXPECT_EQ(assigned.fileName(), QStringLiteral("a"));
    EXPECT_EQ(assigned.contentType(), QStringLiteral("b/c"));
    EXPECT_EQ(assigned.data(), QByteArray("1"));
}

TEST(BwaCgiFile, WritesItsDataAndNothingElse)
{
    const std::string bytes("a\0b\r\n\xff", 6);
    const BwaCgiFile file(QStringLiteral("a"), QString(), QByteArray(bytes.data(), 6));
    std::ostringstream stream;

    stream << '<';
    file.writeToStream(stream);
    stream << '>';

    EXPECT_EQ(stream.str(), "<" + bytes + ">");
}

TEST(BwaCgiFile, GivenNoDataWritesNothing)
{
    std::ostringstream stream;

    BwaCgiFile().writeToStream(stream);

    EXPECT_EQ(stream.str(), "");
    EXPECT_TRUE(stream.good());
}
