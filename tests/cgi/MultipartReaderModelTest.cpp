// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// The multipart reader against its literal model: after every operation on random bodies both must
// have returned the same, hold the same lookahead and have asked the same of their input.

#include "cgi/BwaCgiMultipartFormDataReader.h"
#include "cgi/BwaCgiRequest.h"
#include "support/LiteralMultipartReader.h"
#include "support/MemoryCgiInput.h"
#include "support/MultipartComparison.h"
#include "support/QtPrinters.h"
#include "support/RandomSource.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace {

// A body that is made of what delimiters and headers are made of.
class RandomBody
{
public:
    RandomBody(RandomSource* random, const QByteArray& boundary)
        : m_random(random)
        , m_delimiter("--" + boundary + "\r\n")
        , m_closeDelimiter("--" + boundary + "--\r\n")
        , m_fragments({"\r\n" + m_delimiter,
                       "\r\n" + m_closeDelimiter,
                       m_delimiter,
                       m_closeDelimiter,
                       "\r\n--" + boundary,
                       "--",
                       boundary,
                       "\r\n",
                       "\r",
                       "\n",
                       "-",
                       "\r\n\r\n",
                       "x",
                       "Content-Disposition: ",
                       "Content-Disposition: form-data; name=a\r\n\r\n",
                       "Content-Disposition: form-data; name=\"b\"; filename=\"x+%41\"\r\n",
                       "Content-Type: t/u\r\n\r\n",
                       "Content-Disposition: attachment; name=a\r\n",
                       "Content-Disposition: form-data\r\n",
                       "form-data; name=a",
                       "Content-Type: "})
    {
    }

    QByteArray next()
    {
        QByteArray body = m_random->oneIn(3) ? soup(40) : wellFormed();
        if (m_random->oneIn(4)) {
            body.truncate(m_random->below(body.size() + 1));
        }
        return body;
    }

private:
    QByteArray soup(int limit)
    {
        QByteArray bytes;
        for (int left = m_random->below(limit); left > 0; --left) {
            bytes += m_random->oneIn(25) ? filler() : m_random->oneOf(m_fragments);
        }
        return bytes;
    }

    // Long enough to bring what follows to the end of a refill.
    QByteArray filler() { return QByteArray(3900 + m_random->below(300), 'y'); }

    QByteArray wellFormed()
    {
        QByteArray body = m_random->oneIn(4) ? soup(5) + "\r\n" : QByteArray();
        for (int left = m_random->below(5); left > 0; --left) {
            body += m_delimiter + header() + "\r\n\r\n" + soup(8) + "\r\n";
        }
        return body + m_closeDelimiter + (m_random->oneIn(4) ? soup(5) : QByteArray());
    }

    QByteArray header()
    {
        static const QList<QByteArray> headers = {
            "Content-Disposition: form-data; name=a",
            "Content-Disposition: form-data; name=\"\xc3\xa9\"; filename=\"x\"\r\nContent-Type: t",
            "Content-Disposition: attachment; name=a", "X: y", ""};
        const QByteArray lines = m_random->oneOf(headers);
        return m_random->oneIn(8) ? "X: " + filler() + "\r\n" + lines : lines;
    }

    RandomSource* m_random; // not owned
    QByteArray m_delimiter;
    QByteArray m_closeDelimiter;
    QList<QByteArray> m_fragments;
};

const QList<QByteArray> boundaries = {"B",   "",       "-",    "--",      "BB",
                                      "xyx", "\r\n--", "\r\n", "--\r\n--"};

// The length that is announced with a body: mostly its own, otherwise a little or much beside it.
unsigned int announcedLength(RandomSource& random, int size)
{
    switch (random.below(6)) {
    case 0:
        return static_cast<unsigned int>(size + random.below(10000));
    case 1:
        return static_cast<unsigned int>(std::max(0, size - random.below(20)));
    case 2:
        return 4294967295U;
    default:
        return static_cast<unsigned int>(size);
    }
}

// Any order of operations; skipEndOfPart() only before a failure, as nothing is said about it
// after.
void compareAtRandom(RandomSource& random, MultipartComparison& comparison, const QByteArray& body)
{
    const QList<unsigned int> sizes = {0, 1, 2, 9, 100, 4096, 5000, 4294967295U};
    std::string operations;
    for (int left = 60, after = 3; left > 0 && after > 0; --left) {
        int operation = random.below(8);
        if (operation == 1 && comparison.failed()) {
            operation = 0;
        }
        const unsigned int size = random.oneOf(sizes);
        operations += " " + std::to_string(operation) + "(" + std::to_string(size) + ")";

        const auto results = comparison.act(operation, size);

        ASSERT_EQ(results.first, results.second)
            << "operations:" << operations << "\nbody: " << testing::PrintToString(body);
        after -= comparison.isFinished() ? 1 : 0;
    }
}

void compareRandomBodies(int rounds, bool inSteps)
{
    RandomSource random;
    for (int round = RandomSource::rounds(rounds); round > 0 && !testing::Test::HasFatalFailure();
         --round) {
        const QByteArray boundary = random.oneIn(2) ? "B" : random.oneOf(boundaries);
        RandomBody bodies(&random, boundary);
        const QByteArray body = bodies.next();
        const auto step =
            static_cast<unsigned int>(inSteps ? 1 + random.below(random.oneIn(2) ? 4 : 60) : 0);
        MultipartComparison comparison(boundary, body, announcedLength(random, body.size()), step);

        compareAtRandom(random, comparison, body);
    }
}

QByteArray streamedInPieces(BwaCgiMultipartFormDataReader& reader, RandomSource& random)
{
    BwaCgiMultipartFormDataReader::StreamBuffer buffer(&reader);
    QByteArray content;
    char bytes[3000];
    std::streamsize copied = 0;
    do {
        copied = buffer.sgetn(bytes, 1 + random.below(2999));
        content.append(bytes, static_cast<int>(copied));
    } while (copied > 0);
    return content;
}

// The contents of all parts, read by @a readContent, and how the body ended.
template <typename ReadContent>
std::string partsOf(const QByteArray& body, ReadContent readContent)
{
    MemoryCgiInput input("multipart/form-data; boundary=B", body);
    BwaCgiRequest request(&input);
    BwaCgiMultipartFormDataReader reader(&request);
    QString name;
    QString filename;
    QString contentType;
    std::string parts;
    while (reader.nextPart(name, filename, contentType)) {
        parts += "[" + readContent(reader).toStdString() + "]";
    }
    return parts + (reader.failed() ? "failed after " : "complete after ") +
        std::to_string(input.position);
}

} // namespace

TEST(MultipartReaderModel, GivenRandomBodiesAgreesInEveryStep)
{
    compareRandomBodies(3000, false);
}

TEST(MultipartReaderModel, GivenInputThatComesInSmallStepsAgreesInEveryStep)
{
    compareRandomBodies(600, true);
}

TEST(MultipartReaderModel, GivenRandomBytesFindsTheSameFirstDelimiter)
{
    RandomSource random;
    for (int round = RandomSource::rounds(2000); round > 0; --round) {
        const QByteArray boundary = random.oneOf(boundaries);
        MemoryCgiInput input("multipart/form-data; boundary=\"" + boundary + "\"", "");
        BwaCgiRequest request(&input);
        BwaCgiMultipartFormDataReader reader(&request);
        const LiteralMultipartReader model(boundary, &input, 0);
        const QByteArray data = RandomBody(&random, boundary).next();

        ASSERT_EQ(reader.indexOfFirstBoundaryDelimiter(data),
                  model.indexOfFirstBoundaryDelimiter(data))
            << testing::PrintToString(data);
    }
}

TEST(MultipartReaderModel, GivenRandomBodiesTheStreamBufferGivesThePartsContent)
{
    RandomSource random;
    for (int round = RandomSource::rounds(300); round > 0; --round) {
        const QByteArray body = RandomBody(&random, "B").next();

        const std::string streamed =
            partsOf(body, [&random](auto& reader) { return streamedInPieces(reader, random); });

        ASSERT_EQ(streamed, partsOf(body, [](auto& reader) { return reader.readAllFromPart(); }))
            << testing::PrintToString(body);
    }
}
