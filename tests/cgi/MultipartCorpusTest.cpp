// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// Bodies collected by another multipart parser. Its expectations differ from ours in places (we ask
// for the line end behind the closing delimiter, and header names in their usual case), so what we
// make of each body stands here.

#include "cgi/BwaCgiMultipartFormDataReader.h"
#include "cgi/BwaCgiRequest.h"
#include "support/LiteralMultipartReader.h"
#include "support/MemoryCgiInput.h"
#include "support/QtPrinters.h"
#include "support/ShownText.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

namespace {

struct CorpusFile {
    std::string name;
    QByteArray boundary;
    QByteArray body;
};

QString corpusFolder()
{
    return QString::fromLatin1(BWA_TEST_DATA_DIR "/multipart/http");
}

QByteArray contentOf(const QString& fileName)
{
    QFile file(corpusFolder() + QLatin1Char('/') + fileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// The value of the line "boundary: ..." beside the body.
QByteArray boundaryIn(const QByteArray& description)
{
    const QList<QByteArray> lines = description.split('\n');
    for (const QByteArray& line : lines) {
        if (line.startsWith("boundary: ")) {
            return line.mid(10).trimmed();
        }
    }
    return QByteArray();
}

std::vector<CorpusFile> corpus()
{
    std::vector<CorpusFile> files;
    const QStringList bodies =
        QDir(corpusFolder()).entryList({QStringLiteral("*.http")}, QDir::Files, QDir::Name);
    for (const QString& body : bodies) {
        const QString name = body.chopped(5);
        files.push_back({name.toStdString(), boundaryIn(contentOf(name + QLatin1String(".yaml"))),
                         contentOf(body)});
    }
    return files;
}

// The parts as "name|filename|content type|content" in brackets, then how the body ended; of a part
// in which the body failed the content is what was delivered before.
template <typename Reader>
std::string partsOf(Reader& reader)
{
    std::string parts;
    QString name;
    QString filename;
    QString contentType;
    while (reader.nextPart(name, filename, contentType)) {
        const QByteArray content = reader.readAllFromPart();
        parts += "[" + shown(name) + "|" + shown(filename) + "|" + shownName(contentType) + "|" +
            content.toStdString() + "]";
    }
    return parts;
}

MemoryCgiInput inputOf(const CorpusFile& file)
{
    return MemoryCgiInput("multipart/form-data; boundary=\"" + file.boundary + "\"", file.body);
}

std::string outcomeOf(const CorpusFile& file)
{
    MemoryCgiInput input = inputOf(file);
    BwaCgiRequest request(&input);
    BwaCgiMultipartFormDataReader reader(&request);
    const std::string parts = partsOf(reader);
    return parts + (reader.failed() ? "failed" : "complete");
}

std::string modelOutcomeOf(const CorpusFile& file)
{
    MemoryCgiInput input = inputOf(file);
    LiteralMultipartReader reader(file.boundary, &input,
                                  static_cast<unsigned int>(file.body.size()));
    const std::string parts = partsOf(reader);
    return parts + (reader.failed ? "failed" : "complete");
}

const std::string manyQ(20, 'Q');
const std::string fewerQ(18, 'Q');

std::string lineBreaks(int count)
{
    return QByteArray("\r\n").repeated(count).toStdString();
}

// A body without the last line end fails two bytes before the end of its last part's content.
const std::map<std::string, std::string> outcomes = {
    {"CRLF_in_header", "failed"},
    {"CR_in_header", "failed"},
    {"CR_in_header_value", "failed"},
    {"almost_match_boundary",
     "[file|test.txt|text/"
     "plain|--boundari\r\n--boundaryq--boundary\rq--boundarq\r\n--bounaryd--\r\n"
     "--notbound--\r\n--mismatch\r\n--mismatch--\r\n--boundary-Q\r\n--boundary\rQ--boundaryQ]"
     "complete"},
    {"almost_match_boundary_without_CR",
     "[field|<null>||" + manyQ + "\r\n----boundary" + fewerQ + "]failed"},
    {"almost_match_boundary_without_LF",
     "[field|<null>||" + manyQ + "\r\n----boundary\r" + fewerQ + "]failed"},
    {"almost_match_boundary_without_final_hyphen",
     "[field|<null>||" + manyQ + "\r\n----boundary-" + fewerQ + "]failed"},
    {"bad_end_of_headers", "failed"},
    {"bad_header_char", "failed"},
    {"bad_initial_boundary", "failed"},
    {"base64_encoding", "[file|test.txt|text/plain|VGVzdCAxMjM=]complete"},
    {"case_insensitive_headers", "[file1|test1.txt|text/plain|Test file #1]complete"},
    {"crlf_dense_part_data",
     "[file|crlf.bin|application/octet-stream|" + lineBreaks(21) + "--boundar" + lineBreaks(6) +
         "--bound\r\n]complete"},
    {"empty_header", "failed"},
    {"empty_message", "complete"},
    {"empty_message_with_bad_end", "failed"},
    {"header_with_number", "[files|secret.txt|text/plain; charset=utf-8|aaaa]failed"},
    {"mixed_case_headers", "complete"},
    {"mixed_plain_and_base64_encoding",
     "[field1|<null>|text/plain; charset=\"UTF-8\"|VGVzdCAxMjM=]"
     "[field2|<null>|text/plain; charset=\"UTF-8\"|This is a test.]"
     "[field3|<null>|text/plain; charset=\"UTF-8\"|VGVzdCBzdHJpbmcuCg==]"
     "[field4|<null>|text/plain; charset=\"UTF-8\"|This is also a tes]failed"},
    {"multiple_fields", "[field1|<null>||field1][field2|<null>||field2]complete"},
    {"multiple_files",
     "[file1|test1.txt|text/plain|Test file #1][file2|test2.txt|text/plain|Test file #2]complete"},
    {"quoted_printable_encoding", "[file|test.txt|text/plain|foo=3Dbar]complete"},
    {"single_field", "[field|<null>||This is a tes]failed"},
    {"single_field_blocks", "failed"},
    {"single_field_longer", "[field|<null>||" + std::string(126, 'q') + "]failed"},
    {"single_field_single_file", "[field|<null>||test1][file|file.txt|text/plain|tes]failed"},
    {"single_field_with_leading_newlines", "[field|<null>||This is a tes]failed"},
    {"single_field_with_trailer", "[field|<null>||This is a test.]complete"},
    {"single_file", "[file|test.txt|text/plain|This is a test file.]complete"},
    {"utf8_filename",
     "[file|???.txt|text/"
     "plain|\xe3\x81\x93\xe3\x82\x8c\xe3\x81\xaf\xe3\x83\x86\xe3\x82\xb9\xe3\x83\x88"
     "\xe3\x81\xa7\xe3\x81\x99\xe3\x80\x82]complete"},
};

} // namespace

TEST(MultipartCorpusFiles, AreAllThere)
{
    EXPECT_EQ(corpus().size(), outcomes.size());
}

class MultipartCorpus : public testing::TestWithParam<CorpusFile>
{
};

TEST_P(MultipartCorpus, HasItsDescription)
{
    EXPECT_FALSE(GetParam().boundary.isEmpty());
    EXPECT_FALSE(GetParam().body.isEmpty());
}

TEST_P(MultipartCorpus, YieldsItsParts)
{
    const auto expected = outcomes.find(GetParam().name);
    ASSERT_NE(expected, outcomes.end());

    EXPECT_EQ(outcomeOf(GetParam()), expected->second);
}

TEST_P(MultipartCorpus, IsReadAsTheModelReadsIt)
{
    EXPECT_EQ(outcomeOf(GetParam()), modelOutcomeOf(GetParam()));
}

TEST_P(MultipartCorpus, KeepsNothingOfABodyThatFails)
{
    MemoryCgiInput input = inputOf(GetParam());
    BwaCgiRequest request(&input);

    const bool complete = request.processBodyContent();

    EXPECT_EQ(complete ? "complete" : "failed",
              outcomes.at(GetParam().name).substr(outcomes.at(GetParam().name).rfind(']') + 1));
    EXPECT_TRUE(complete || (request.formVariables().isEmpty() && request.files().isEmpty()));
}

INSTANTIATE_TEST_SUITE_P(Files, MultipartCorpus, testing::ValuesIn(corpus()),
                         [](const auto& info) { return info.param.name; });
