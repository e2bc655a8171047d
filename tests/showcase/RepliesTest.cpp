// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "Replies.h"

#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiRequest.h"
#include "testing/BwaTestRequest.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <gmock/gmock.h>

#include <algorithm>
#include <ctime>

namespace {

std::string jsonOf(const QMultiHash<QString, QString>& variables,
                   VariableNames encoding = VariableNames::Utf8)
{
    return QJsonDocument(variablesToJson(variables, encoding))
        .toJson(QJsonDocument::Compact)
        .toStdString();
}

// The processor time for as many values of one name, which other programs do not change much.
std::clock_t timeOf(int count)
{
    const auto variables =
        BwaCgiRequest::parseUrlEncodedVariables(QString(count, QLatin1Char('&')));
    const std::clock_t start = std::clock();
    EXPECT_EQ(variablesToJson(variables).size(), 1);
    return std::clock() - start;
}

// The answer to a body that is read by readForm() for @a mediaType, or as JSON for null.
int statusOf(const char* mediaType, const QByteArray& sentType, const QByteArray& body)
{
    BwaTestRequest request("POST");
    request.setBody(sentType, body);
    const auto answer = [mediaType](BwaFcgiRequest* received) {
        QVariantMap object;
        if (mediaType ? readForm(received, mediaType) : readJsonObject(received, object)) {
            sendJson(received, QJsonObject());
        }
        delete received;
    };
    return request.sendTo(answer).statusCode;
}

const char* const urlencoded = "application/x-www-form-urlencoded";
const char* const multipart = "multipart/form-data";

QByteArray multipartBody(int size)
{
    return "--b\r\nContent-Disposition: form-data; name=\"a\"\r\n\r\n" + QByteArray(size, 'a') +
        "\r\n--b--\r\n";
}

} // namespace

TEST(VariablesToJson, KeepsTheOrderOfArrival)
{
    EXPECT_EQ(jsonOf(BwaCgiRequest::parseUrlEncodedVariables(QStringLiteral("b=1&a=2&b=3&b=4"))),
              R"({"a":["2"],"b":["1","3","4"]})");
}

TEST(VariablesToJson, DecodesNamesOnlyWhereTheyAreOnTheWire)
{
    const QString wire = QString::fromLatin1("\xC3\xB6");

    EXPECT_EQ(jsonOf({{wire, wire}}), "{\"\u00F6\":[\"\u00F6\"]}");
    EXPECT_EQ(jsonOf({{QString(QChar(0xF6)), wire}}, VariableNames::Text),
              "{\"\u00F6\":[\"\u00F6\"]}");
}

TEST(VariablesToJson, GivenManyValuesOfOneNameTakesLinearTime)
{
    const qint64 few = qMax<qint64>(timeOf(20000), 5);

    EXPECT_LT(timeOf(160000),
              24 * few); // a factor of 8 where the time is linear, 64 where it is not
}

TEST(ReadForm, WhenItRefusesABodyLogsWhy)
{
    BwaTestRequest request("POST");
    request.setBody("multipart/form-data; boundary=b", "--b");

    const BwaTestReply reply = request.sendTo([](BwaFcgiRequest* received) {
        EXPECT_FALSE(readForm(received, multipart));
        delete received;
    });

    EXPECT_EQ(reply.errorText, "A body was refused: its last boundary is missing");
}

TEST(ReadForm, GivenMorePartsThanAllowedSaysThatTheBodyIsTooLarge)
{
    BwaTestRequest request("POST");
    request.addField("a", "1");
    request.addField("b", "2");

    const BwaTestReply reply = request.sendTo([](BwaFcgiRequest* received) {
        BwaRequestLimits limits;
        limits.maxParts = 1;
        received->cgiRequest()->setRequestLimits(limits);
        EXPECT_FALSE(readForm(received, multipart));
        delete received;
    });

    EXPECT_EQ(reply.statusCode, 413);
    EXPECT_EQ(reply.errorText, "A body was refused: it has too many parts");
}

struct BodyCase {
    const char* name;
    const char* mediaType;
    QByteArray sentType;
    QByteArray body;
    int status;
};

class ReadBody : public testing::TestWithParam<BodyCase>
{
};

TEST_P(ReadBody, AnswersWhatItRefuses)
{
    EXPECT_EQ(statusOf(GetParam().mediaType, GetParam().sentType, GetParam().body),
              GetParam().status);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, ReadBody,
    testing::Values(
        BodyCase{"Form", urlencoded, urlencoded, "a=1", 200},
        BodyCase{"FormInCapitals", urlencoded, "Application/X-WWW-Form-Urlencoded; charset=utf-8",
                 "a=1", 200},
        BodyCase{"FormOfNoType", urlencoded, "", "a=1", 415},
        BodyCase{"FormOfAnotherType", urlencoded, "text/plain", "a=1", 415},
        BodyCase{"PartsInsteadOfAForm", urlencoded, "multipart/form-data; boundary=b",
                 multipartBody(1), 415},
        BodyCase{"FormOfTheMostBytes", urlencoded, urlencoded, QByteArray(65536, 'a'), 200},
        BodyCase{"FormThatIsTooLarge", urlencoded, urlencoded, QByteArray(65537, 'a'), 413},
        BodyCase{"Parts", multipart, "multipart/form-data; boundary=b", multipartBody(1), 200},
        BodyCase{"LargeParts", multipart, "multipart/form-data; boundary=b", multipartBody(65536),
                 200},
        BodyCase{"PartsWithoutEnd", multipart, "multipart/form-data; boundary=b", "--b", 400},
        BodyCase{"FormInsteadOfParts", multipart, urlencoded, "a=1", 415},
        BodyCase{"PartsOfNoType", multipart, "", "a=1", 415},
        BodyCase{"Json", nullptr, "application/json", "{}", 200},
        BodyCase{"JsonThatIsNoObject", nullptr, "application/json", "[]", 400},
        BodyCase{"JsonOfNoBytes", nullptr, "application/json", "", 400},
        BodyCase{"JsonOfAnotherType", nullptr, "text/plain", "{}", 415},
        BodyCase{"JsonOfTheMostBytes", nullptr, "application/json", "{}" + QByteArray(65534, ' '),
                 200},
        BodyCase{"JsonThatIsTooLarge", nullptr, "application/json", "{}" + QByteArray(65535, ' '),
                 413}),
    [](const auto& info) { return std::string(info.param.name); });
