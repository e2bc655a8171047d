// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// The parts of a multipart body as streams: in whatever pieces they are read, they give what
// readAllFromPart() gives.

#include "Fuzzing.h"
#include "MultipartBody.h"
#include "cgi/BwaCgiMultipartFormDataReader.h"
#include "cgi/BwaCgiRequest.h"
#include "support/MemoryCgiInput.h"

#include <gtest/gtest.h>

#include <string>

namespace {

// Makes one read, of a kind that @a choices selects, and appends the result to @a content. False at
// the end.
bool readPiece(std::streambuf& buffer, std::minstd_rand& choices, std::string* content)
{
    char bytes[5000];
    if (below(3, choices) == 0) {
        const int character = buffer.sbumpc();
        if (character != std::char_traits<char>::eof()) {
            content->push_back(static_cast<char>(character));
        }
        return character != std::char_traits<char>::eof();
    }
    const std::streamsize size = 1 + below(below(2, choices) == 0 ? 20 : 4999, choices);
    const std::streamsize copied = buffer.sgetn(bytes, size);
    content->append(bytes, static_cast<std::size_t>(copied));
    return copied == size;
}

std::string streamed(BwaCgiMultipartFormDataReader& reader, std::minstd_rand& choices)
{
    BwaCgiMultipartFormDataReader::StreamBuffer buffer(&reader);
    std::string content;
    while (readPiece(buffer, choices, &content)) { }
    EXPECT_EQ(buffer.sgetc(), std::char_traits<char>::eof());
    return content;
}

template <typename ReadContent>
std::string contentsOf(const QByteArray& body, ReadContent readContent)
{
    const QByteArray contentType = "multipart/form-data; boundary=\"" + boundaryOf(body) + "\"";
    MemoryCgiInput input(contentType.constData(), body);
    BwaCgiRequest request(&input);
    BwaCgiMultipartFormDataReader reader(&request);
    QString text;
    std::string contents;
    while (reader.nextPart(text, text, text)) {
        contents += "[" + readContent(reader) + "]";
    }
    return contents + (reader.failed() ? "failed after " : "complete after ") +
        std::to_string(input.position);
}

} // namespace

void fuzz(const QByteArray& input)
{
    std::minstd_rand choices = choicesFor(input);

    EXPECT_EQ(
        contentsOf(input, [&choices](auto& reader) { return streamed(reader, choices); }),
        contentsOf(input, [](auto& reader) { return reader.readAllFromPart().toStdString(); }));
}
