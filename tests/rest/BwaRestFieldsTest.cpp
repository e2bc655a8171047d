// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "rest/BwaRestFields.h"

#include "json/BwaJson.h"
#include "rest/BwaRestProblem.h"
#include "rest/RestReplies.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

namespace {

struct Place {
    QString city;
    int floor = 1;
};

struct Device {
    qint64 id = 0;
    QString name;
    bool isOn = false;
    quint8 port = 80;
    double load = 0;
    QByteArray key;
    QUuid tag;
    QDateTime seen;
    QList<int> rooms;
    QStringList words;
    std::optional<int> limit;
    Place place;
    QList<Place> others;
    std::optional<Place> spare;
    QString note = QStringLiteral("none");
};

BwaRestFields<Place> placeFields()
{
    return BwaRestFields<Place>()
        .add("city", &Place::city, BwaRestRule::length(1, 5))
        .add("floor", &Place::floor, BwaRestRule::any().orDefault());
}

BwaRestFields<Device> deviceFields()
{
    BwaRestRule optional;
    optional.orDefault();
    return BwaRestFields<Device>()
        .add("id", &Device::id, BwaRestRule::any().readOnly().asText())
        .add("name", &Device::name)
        .add("on", &Device::isOn, optional)
        .add("port", &Device::port, BwaRestRule::range(1, 100).orDefault())
        .add("load", &Device::load, BwaRestRule::range(-1, 1).orDefault())
        .add("key", &Device::key, BwaRestRule::length(0, 3).orDefault())
        .add("tag", &Device::tag, optional)
        .add("seen", &Device::seen, optional)
        .add("rooms", &Device::rooms, optional)
        .add("words", &Device::words, BwaRestRule::length(0, 2).orDefault())
        .add("limit", &Device::limit, optional)
        .add("place", &Device::place, placeFields(), optional)
        .add("others", &Device::others, placeFields(), optional)
        .add("spare", &Device::spare, placeFields(), optional)
        .add("note", &Device::note, BwaRestRule::length(0, 4).orDefault());
}

BwaTestRequest jsonRequest(const QByteArray& body)
{
    BwaTestRequest request("PUT");
    request.setBody("application/json", body);
    return request;
}

// What a handler that reads T from @a body and writes it back replies.
template <class T>
BwaTestReply echo(const BwaRestFields<T>& fields, const QByteArray& body)
{
    return answeringTo(jsonRequest(body), [&fields](const BwaRestCall& call) {
        return BwaRestReply(fields.json(fields.read(call)));
    });
}

// The errors of a problem with the status 422; nothing else is in it.
std::string errorsOf(const BwaTestReply& reply)
{
    const QByteArray begin = R"({"errors":)";
    const QByteArray end = R"(,"status":422,"title":"Unprocessable Entity"})";
    EXPECT_EQ(reply.statusCode, 422);
    EXPECT_EQ(reply.header("Content-Type"), "application/problem+json");
    EXPECT_TRUE(reply.body.startsWith(begin) && reply.body.endsWith(end))
        << reply.body.toStdString();
    EXPECT_EQ(reply.errorText, "");
    return reply.body.mid(begin.size(), reply.body.size() - begin.size() - end.size())
        .toStdString();
}

std::string error(const char* pointer, const char* detail)
{
    return std::string(R"({"detail":")") + detail + R"(","pointer":")" + pointer + R"("})";
}

// A struct of one member, the field "a".
template <class M>
struct One {
    M a{};
};

template <class M>
BwaTestReply echoOne(const QByteArray& json, const BwaRestRule& rule = BwaRestRule())
{
    return echo(BwaRestFields<One<M>>().add("a", &One<M>::a, rule), "{\"a\":" + json + "}");
}

// What becomes of the field's value, as JSON.
template <class M>
std::string echoed(const QByteArray& json, const BwaRestRule& rule = BwaRestRule())
{
    const BwaTestReply reply = echoOne<M>(json, rule);
    return reply.statusCode == 200 ? reply.body.mid(5, reply.body.size() - 6).toStdString()
                                   : errorsOf(reply);
}

template <class M>
std::string refused(const char* detail)
{
    return '[' + error("#/a", detail) + ']';
}

// A device after a patch, or the reply to it.
BwaTestReply patched(Device* device, const QByteArray& body)
{
    return answeringTo(jsonRequest(body), [device](const BwaRestCall& call) {
        deviceFields().patch(call, *device);
        return BwaRestReply(deviceFields().json(*device));
    });
}

BwaTestReply queried(const QByteArray& query)
{
    BwaTestRequest request("GET", "/?" + query);
    return answeringTo(request, [](const BwaRestCall& call) {
        return BwaRestReply(deviceFields().json(deviceFields().read(call)));
    });
}

} // namespace

TEST(BwaRestFields, ReadsAndWritesEachType)
{
    const QByteArray body =
        R"({"id":"0","key":"AP8=","limit":7,"load":0.5,"name":"x","note":"","on":true,)"
        R"("others":[{"city":"Rom","floor":2}],"place":{"city":"Bonn","floor":-3},"port":8,)"
        R"("rooms":[1,-2],"seen":"2026-02-03T04:05:06.789Z","spare":{"city":"Ulm","floor":1},)"
        R"("tag":"123e4567-e89b-12d3-a456-426614174000","words":["a","b"]})";

    EXPECT_EQ(echo(deviceFields(), body).body, body);
}

TEST(BwaRestFields, GivenAbsentFieldsKeepsTheirInitializers)
{
    EXPECT_EQ(echo(deviceFields(), R"({"name":""})").body,
              R"({"id":"0","key":"","limit":null,"load":0.0,"name":"","note":"none","on":false,)"
              R"("others":[],"place":{"city":"","floor":1},"port":80,"rooms":[],"seen":null,)"
              R"("spare":null,"tag":"00000000-0000-0000-0000-000000000000","words":[]})");
}

TEST(BwaRestFields, GivenWrongFieldsTellsAllOfThem)
{
    EXPECT_EQ(
        errorsOf(echo(deviceFields(),
                      R"({"port":0,"place":{"floor":"1"},"others":[{"city":"x"},{}],"x":1})")),
        '[' + error("#/name", "is missing") + ',' +
            error("#/port", "must be an integer from 1 to 100") + ',' +
            error("#/place/city", "is missing") + ',' +
            error("#/place/floor", "must be an integer from -2147483648 to 2147483647") + ',' +
            error("#/others/1/city", "is missing") + ',' + error("#/x", "is unknown") + ']');
}

TEST(BwaRestFields, GivenWhatIsNoObjectRefusesIt)
{
    for (const char* body : {"[]", "1", "null", "\"x\""}) {
        EXPECT_EQ(errorsOf(echo(deviceFields(), body)),
                  '[' + error("#", "must be an object") + ']');
    }
}

TEST(BwaRestFields, GivenManyErrorsTellsAHundred)
{
    const BwaTestReply reply = echoOne<QList<int>>('[' + QByteArray("true,").repeated(5000) + "1]");

    EXPECT_EQ(QByteArray::fromStdString(errorsOf(reply)).count("pointer"), 100);
    EXPECT_TRUE(reply.body.contains("\"#/a/99\""));
}

TEST(BwaRestFields, GivenRepeatedMembersRefusesThem)
{
    EXPECT_EQ(errorsOf(echo(deviceFields(), R"({"name":"a","name":"b"})")),
              '[' + error("#/name", "is repeated") + ']');
    EXPECT_EQ(errorsOf(echo(deviceFields(), R"({"name":"a","others":[{"city":"a","city":"b"}]})")),
              '[' + error("#/others/0/city", "is repeated") + ']');
}

TEST(BwaRestFields, GivenNamesWithSpecialCharactersEscapesThem)
{
    const BwaTestReply reply = echo(BwaRestFields<One<int>>(), R"({"a/b~c ü\"#%":1})");

    EXPECT_EQ(errorsOf(reply), '[' + error("#/a~1b~0c%20%C3%BC%22%23%25", "is unknown") + ']');
}

TEST(BwaRestFields, KeepsUnknownMembersWhenTold)
{
    const auto fields = BwaRestFields<One<int>>().add("a", &One<int>::a).keepUnknown();

    EXPECT_EQ(echo(fields, R"({"a":1,"b":2})").body, R"({"a":1})");
    EXPECT_EQ(errorsOf(echo(fields, R"({"a":1,"b":2,"b":2})")),
              '[' + error("#/b", "is repeated") + ']');
}

TEST(BwaRestFields, LeavesReadOnlyFieldsAlone)
{
    EXPECT_TRUE(echo(deviceFields(), R"({"name":"","id":"7"})").body.startsWith(R"({"id":"0")"));
    EXPECT_TRUE(echo(deviceFields(), R"({"name":"","id":{}})").body.startsWith(R"({"id":"0")"));
}

TEST(BwaRestFields, ReadsIntegersExactly)
{
    EXPECT_EQ(echoed<qint64>("9223372036854775807"), "9223372036854775807");
    EXPECT_EQ(echoed<qint64>("-9223372036854775808"), "-9223372036854775808");
    EXPECT_EQ(echoed<quint64>("18446744073709551615"), "18446744073709551615");
    EXPECT_EQ(echoed<qint8>("-128"), "-128");
    EXPECT_EQ(echoed<unsigned short>("65535"), "65535");
    EXPECT_EQ(echoed<int>("-0"), "0");
}

TEST(BwaRestFields, GivenIntegersBeyondTheTypeRefusesThem)
{
    EXPECT_EQ(echoed<qint64>("9223372036854775808"),
              refused<int>("must be an integer from -9223372036854775808 to 9223372036854775807"));
    EXPECT_EQ(echoed<quint64>("-1"),
              refused<int>("must be an integer from 0 to 18446744073709551615"));
    EXPECT_EQ(echoed<qint8>("128"), refused<int>("must be an integer from -128 to 127"));
    EXPECT_EQ(echoed<quint32>("4294967296"),
              refused<int>("must be an integer from 0 to 4294967295"));
    EXPECT_EQ(echoed<quint8>("18446744073709551615"),
              refused<int>("must be an integer from 0 to 255"));
}

TEST(BwaRestFields, GivenRangesKeepsToThem)
{
    const BwaRestRule negative = BwaRestRule::range(-5, -3);
    const BwaRestRule large = BwaRestRule::range(0, std::numeric_limits<qint64>::max());

    EXPECT_EQ(echoed<int>("-3", negative), "-3");
    EXPECT_EQ(echoed<int>("-2", negative), refused<int>("must be an integer from -5 to -3"));
    EXPECT_EQ(echoed<int>("-6", negative), refused<int>("must be an integer from -5 to -3"));
    EXPECT_EQ(echoed<quint64>("9223372036854775807", large), "9223372036854775807");
    EXPECT_EQ(echoed<quint64>("9223372036854775808", large),
              refused<int>("must be an integer from 0 to 9223372036854775807"));
    EXPECT_EQ(echoed<quint8>("255", BwaRestRule::range(-7, 1000)), "255");
    EXPECT_EQ(echoed<quint8>("256", BwaRestRule::range(-7, 1000)),
              refused<int>("must be an integer from 0 to 255"));
    EXPECT_EQ(echoed<double>("3", BwaRestRule::range(1, 3)), "3.0");
    EXPECT_EQ(echoed<double>("3.1", BwaRestRule::range(1, 3)),
              refused<int>("must be a number from 1 to 3"));
    EXPECT_EQ(echoed<QList<int>>("[1,4]", BwaRestRule::range(1, 3)),
              '[' + error("#/a/1", "must be an integer from 1 to 3") + ']');
}

TEST(BwaRestFields, GivenOtherTypesRefusesThem)
{
    const QList<QByteArray> values = {"null",  "true",  "1",  "-1", "1.5",
                                      "1e300", "\"x\"", "{}", "[]"};
    const auto taken = [&values](const auto& echo) {
        QByteArray texts;
        for (const QByteArray& value : values) {
            texts += echo(value) == 200 ? value + ' ' : QByteArray();
        }
        return texts.toStdString();
    };

    EXPECT_EQ(taken([](const auto& json) { return echoOne<bool>(json).statusCode; }), "true ");
    EXPECT_EQ(taken([](const auto& json) { return echoOne<int>(json).statusCode; }), "1 -1 ");
    EXPECT_EQ(taken([](const auto& json) { return echoOne<double>(json).statusCode; }),
              "1 -1 1.5 1e300 ");
    EXPECT_EQ(taken([](const auto& json) { return echoOne<QString>(json).statusCode; }), "\"x\" ");
    EXPECT_EQ(taken([](const auto& json) { return echoOne<QList<int>>(json).statusCode; }), "[] ");
    EXPECT_EQ(taken([](const auto& json) { return echoOne<std::optional<int>>(json).statusCode; }),
              "null 1 -1 ");
    EXPECT_EQ(taken([](const auto& json) { return echoOne<QUuid>(json).statusCode; }), "");
    EXPECT_EQ(taken([](const auto& json) { return echoOne<QDateTime>(json).statusCode; }), "");
    EXPECT_EQ(taken([](const auto& json) { return echoOne<QByteArray>(json).statusCode; }), "");
}

TEST(BwaRestFields, CountsCodePointsBytesAndElements)
{
    EXPECT_EQ(echoed<QString>("\"a\xf0\x9f\x98\x80\"", BwaRestRule::length(2, 2)),
              "\"a\xf0\x9f\x98\x80\"");
    EXPECT_EQ(echoed<QString>(R"("abc")", BwaRestRule::length(1, 2)),
              refused<int>("must be a text of 1 to 2 characters"));
    EXPECT_EQ(echoed<QByteArray>(R"("AAAA")", BwaRestRule::length(3, 3)), R"("AAAA")");
    EXPECT_EQ(echoed<QByteArray>(R"("AAA=")", BwaRestRule::length(3, 3)),
              refused<int>("must be base64 of 3 to 3 bytes"));
    EXPECT_EQ(echoed<QStringList>(R"(["long"])", BwaRestRule::length(1, 2)), R"(["long"])");
    EXPECT_EQ(echoed<QStringList>("[]", BwaRestRule::length(1, 2)),
              refused<int>("must be a list of 1 to 2 elements"));
}

TEST(BwaRestFields, GivenWhatIsNoBase64RefusesIt)
{
    for (const char* text :
         {"A", "AA", "AAA", "A===", "AB==", "AA=A", "AA ==", "_-==", "\xc3\xa4===", "AAAA\\n"}) {
        EXPECT_EQ(echoed<QByteArray>(QByteArray("\"") + text + '"'), refused<int>("must be base64"))
            << text;
    }
    EXPECT_EQ(echoed<QByteArray>(R"("+/8=")"), R"("+/8=")");
}

TEST(BwaRestFields, GivenWhatIsNoUuidRefusesIt)
{
    EXPECT_EQ(echoed<QUuid>(R"("123E4567-E89B-12D3-A456-426614174000")"),
              R"("123e4567-e89b-12d3-a456-426614174000")");
    for (const char* text :
         {"", "123e4567e89b12d3a456426614174000", "{123e4567-e89b-12d3-a456-426614174000}",
          "123e4567-e89b-12d3-a456-42661417400g"}) {
        EXPECT_EQ(echoed<QUuid>(QByteArray("\"") + text + '"'), refused<int>("must be a UUID"));
    }
}

TEST(BwaRestFields, ReadsTimesAsInRfc3339)
{
    EXPECT_EQ(echoed<QDateTime>(R"("2026-12-31T23:30:00-01:30")"), R"("2027-01-01T01:00:00.000Z")");
    EXPECT_EQ(echoed<QDateTime>(R"("2026-12-31t23:59:59.5z")"), R"("2026-12-31T23:59:59.500Z")");
    EXPECT_EQ(echoed<QDateTime>(R"("2024-02-29T00:00:00.123456789+00:00")"),
              R"("2024-02-29T00:00:00.123Z")");
    EXPECT_EQ(echoed<QDateTime>(R"("0001-01-01T00:00:00Z")"), R"("0001-01-01T00:00:00.000Z")");
    EXPECT_EQ(echoed<QDateTime>(R"("9999-12-31T23:59:59.999Z")"), R"("9999-12-31T23:59:59.999Z")");
}

TEST(BwaRestFields, GivenWhatIsNoTimeRefusesIt)
{
    for (const char* text :
         {"", "2026-01-01", "2026-01-01T00:00:00", "2026-01-01 00:00:00Z", "2026-02-29T00:00:00Z",
          "2026-01-01T24:00:00Z", "2026-01-01T00:60:00Z", "2026-01-01T00:00:00+24:00",
          "2026-01-01T00:00:00+01", "2026-01-01T00:00Z", "2026-1-1T00:00:00Z",
          "0000-01-01T00:00:00Z", "0001-01-01T00:00:00+01:00", "9999-12-31T23:59:59-01:00",
          "2026-01-01T00:00:00.Z", "2026-01-01T00:00:00Z\\n",
          "\xd9\xa2\xd9\xa0\x32\x36-01-01T00:00:00Z"}) {
        EXPECT_EQ(echoed<QDateTime>(QByteArray("\"") + text + '"'),
                  refused<int>("must be a date and time as in RFC 3339"))
            << text;
    }
}

TEST(BwaRestFields, GivenIntegersAsTextsKeepsThemExact)
{
    BwaRestRule text;
    text.asText();

    EXPECT_EQ(echoed<qint64>(R"("-9223372036854775808")", text), R"("-9223372036854775808")");
    EXPECT_EQ(echoed<quint64>(R"("18446744073709551615")", text), R"("18446744073709551615")");
    EXPECT_EQ(echoed<QList<quint8>>(R"(["1","255"])", text), R"(["1","255"])");
    EXPECT_EQ(echoed<quint64>("1", text),
              refused<int>("must be an integer from 0 to 18446744073709551615, as a text"));
    for (const char* json : {"1", R"("")", R"("+1")", R"("01")", R"(" 1")", R"("1 ")", R"("1.0")",
                             R"("-0")", R"("1e1")", R"("256")", R"("0x1")", R"("-1")",
                             R"("99999999999999999999")", "\"\xd9\xa1\""}) {
        EXPECT_EQ(echoed<quint8>(json, text),
                  refused<int>("must be an integer from 0 to 255, as a text"))
            << json;
    }
}

TEST(BwaRestFields, GivenNumbersThatJsonDoesNotHaveWritesNull)
{
    const auto fields = BwaRestFields<One<double>>().add("a", &One<double>::a);
    const One<double> infinite = {std::numeric_limits<double>::infinity()};

    EXPECT_EQ(answering(fields.json(infinite)).body, R"({"a":null})");
    EXPECT_EQ(echo(fields, R"({"a":1e400})").statusCode, 400);
}

TEST(BwaRestFields, WhenFieldsAreWellChecksThemTogether)
{
    const auto fields = BwaRestFields<Place>()
                            .add("city", &Place::city)
                            .add("floor", &Place::floor)
                            .check([](const Place& place) {
                                return place.floor > 3 ? QStringLiteral("is too high") : QString();
                            });
    const auto outer = BwaRestFields<One<QList<Place>>>().add("a", &One<QList<Place>>::a, fields);

    EXPECT_EQ(echo(fields, R"({"city":"","floor":3})").statusCode, 200);
    EXPECT_EQ(errorsOf(echo(fields, R"({"city":"","floor":4})")),
              '[' + error("#", "is too high") + ']');
    EXPECT_EQ(errorsOf(echo(fields, R"({"floor":4})")), '[' + error("#/city", "is missing") + ']');
    EXPECT_EQ(errorsOf(echo(outer, R"({"a":[{"city":"","floor":4}]})")),
              '[' + error("#/a/0", "is too high") + ']');
}

TEST(BwaRestFields, GivenAPatchChangesWhatItNames)
{
    Device device;
    device.name = QStringLiteral("old");
    device.limit = 5;
    device.place = {QStringLiteral("Bonn"), 4};
    device.rooms = {1, 2};

    const BwaTestReply reply = patched(
        &device, R"({"port":9,"limit":null,"note":null,"place":{"floor":2},"rooms":[3],"id":"8"})");

    EXPECT_EQ(reply.statusCode, 200);
    EXPECT_EQ(device.name, QStringLiteral("old"));
    EXPECT_EQ(device.port, 9);
    EXPECT_FALSE(device.limit.has_value());
    EXPECT_EQ(device.place.city, QStringLiteral("Bonn"));
    EXPECT_EQ(device.place.floor, 2);
    EXPECT_EQ(device.rooms, QList<int>{3});
    EXPECT_EQ(device.note, QStringLiteral("none"));
    EXPECT_EQ(device.id, 0);
}

TEST(BwaRestFields, GivenAnEmptyPatchChangesNothing)
{
    Device device;
    const QVariantMap before = deviceFields().json(device);

    EXPECT_EQ(patched(&device, "{}").statusCode, 200);
    EXPECT_EQ(deviceFields().json(device), before);
}

TEST(BwaRestFields, GivenAPatchForAnEmptyOptionalMakesItWhole)
{
    Device device;

    EXPECT_EQ(errorsOf(patched(&device, R"({"spare":{"floor":2}})")),
              '[' + error("#/spare/city", "is missing") + ']');
    EXPECT_EQ(patched(&device, R"({"spare":{"city":"Ulm","floor":null}})").statusCode, 200);
    EXPECT_EQ(device.spare->floor, 1);
    EXPECT_EQ(patched(&device, R"({"spare":{"floor":2}})").statusCode, 200);
    EXPECT_EQ(device.spare->city, QStringLiteral("Ulm"));
    EXPECT_EQ(patched(&device, R"({"spare":null})").statusCode, 200);
    EXPECT_FALSE(device.spare.has_value());
}

TEST(BwaRestFields, WhenAPatchIsRefusedChangesNothing)
{
    Device device;
    device.name = QStringLiteral("old");
    device.others = {{QStringLiteral("Rom"), 1}};
    device.spare = Place();
    const QVariantMap before = deviceFields().json(device);

    for (const char* body :
         {"null", "[]", R"({"name":null})", R"({"name":"new","port":0})", R"({"name":"new","x":1})",
          R"({"name":"new","name":"x"})", R"({"spare":{"floor":9,"city":""}})",
          R"({"others":[{"city":"Ulm"},{}]})", R"({"name":"new","place":{"city":null}})"}) {
        EXPECT_EQ(patched(&device, body).statusCode, 422) << body;
        EXPECT_EQ(deviceFields().json(device), before) << body;
    }
    EXPECT_EQ(patched(&device, "{").statusCode, 400);
}

TEST(BwaRestFields, ReadsQueries)
{
    const BwaTestReply reply = queried("name=1&port=2&on=true&load=0.5&rooms=1&rooms=2&words=null"
                                       "&limit=3&seen=2026-01-01T00%3A00:00Z&key=AA%3D%3D");

    EXPECT_EQ(reply.statusCode, 200);
    EXPECT_EQ(reply.body,
              R"({"id":"0","key":"AA==","limit":3,"load":0.5,"name":"1","note":"none","on":true,)"
              R"("others":[],"place":{"city":"","floor":1},"port":2,"rooms":[1,2],)"
              R"("seen":"2026-01-01T00:00:00.000Z","spare":null,)"
              R"("tag":"00000000-0000-0000-0000-000000000000","words":["null"]})");
}

TEST(BwaRestFields, GivenWrongQueriesTellsAllErrors)
{
    EXPECT_EQ(errorsOf(queried("name=a&name=b&port=x&on=1&load=1e400&rooms=1&rooms=&place=%7B%7D"
                               "&limit=null&x=&x=1")),
              '[' + error("#/name", "is repeated") + ',' + error("#/x", "is repeated") + ',' +
                  error("#/on", "must be true or false") + ',' +
                  error("#/port", "must be an integer from 1 to 100") + ',' +
                  error("#/load", "must be a number from -1 to 1") + ',' +
                  error("#/rooms/1", "must be an integer from -2147483648 to 2147483647") + ',' +
                  error("#/limit", "must be an integer from -2147483648 to 2147483647") + ',' +
                  error("#/place", "must be an object") + ',' + error("#/x", "is unknown") + ']');
    EXPECT_EQ(queried("name=%FF").statusCode, 400);
}

TEST(BwaRestFields, GivenHostileBodiesRefusesThem)
{
    const auto status = [](const QByteArray& body) {
        return echo(deviceFields(), body).statusCode;
    };

    EXPECT_EQ(status(""), 400);
    EXPECT_EQ(status("{\"name\":\"\xff\"}"), 400);
    EXPECT_EQ(status(R"({"name":"\ud800"})"), 400);
    EXPECT_EQ(status(R"({"port":1e999})"), 400);
    EXPECT_EQ(status(R"({"port":123456789012345678901234567890})"), 400);
    EXPECT_EQ(status(QByteArray("[").repeated(100000)), 400);
    EXPECT_EQ(
        status(QByteArray(R"({"place":)").repeated(1000) + "1" + QByteArray("}").repeated(1000)),
        422);
    EXPECT_EQ(status(R"({"name":"a)" + QByteArray("\\u0000").repeated(10) + "\"}"), 200);
}

// Of one that is refused, too, the reply is no longer than what was sent.
TEST(BwaRestFields, GivenManyUnknownMembersKeepsTheReplyShort)
{
    QByteArray body = "{";
    for (int i = 0; i < 50000; ++i) {
        body += "\"m" + QByteArray::number(i) + "\":0,";
    }

    EXPECT_LT(echo(deviceFields(), body + "\"z\":1}").body.size(), 10000);
}

TEST(BwaRestFields, GivenImpossibleDeclarationsSaysSo)
{
    const auto refusal = [](const auto& declare) -> std::string {
        try {
            declare();
        } catch (const std::logic_error& error) {
            return error.what();
        }
        return "none";
    };
    const auto declared = [&refusal](auto member, const BwaRestRule& rule) {
        return refusal([&] { BwaRestFields<Device>().add("a", member, rule); });
    };

    EXPECT_EQ(declared(&Device::name, BwaRestRule::range(1, 2)),
              "A field that is a text has no range");
    EXPECT_EQ(declared(&Device::port, BwaRestRule::length(1, 2)),
              "A field that is an integer has no length");
    EXPECT_EQ(declared(&Device::load, BwaRestRule::any().asText()),
              "A field that is a number has no form as a text");
    EXPECT_EQ(declared(&Device::words, BwaRestRule::range(1, 2)),
              "A field that is a text has no range");
    EXPECT_EQ(refusal([] {
                  BwaRestFields<Device>().add("a", &Device::place, placeFields(),
                                              BwaRestRule::length(1, 2));
              }),
              "A field that is a struct has no length");
    EXPECT_EQ(
        refusal([] { BwaRestFields<Device>().add("a", &Device::name).add("a", &Device::note); }),
        "There are two fields \"a\"");
}

TEST(BwaRestFields, GivenToARouteReadsForTheHandler)
{
    const auto fields =
        BwaRestFields<Place>().add("city", &Place::city).add("floor", &Place::floor);
    const auto answer = [fields](const BwaRestCall&, const Place& place) -> BwaRestReply {
        return fields.json(place);
    };
    BwaRestService service;
    service.get("", fields, answer);
    service.post("", fields, answer);
    service.put("", fields, answer);

    for (const char* method : {"POST", "PUT"}) {
        BwaTestRequest request(method);
        request.setBody("application/json", R"({"city":"Ulm","floor":2})");
        EXPECT_EQ(request.sendTo(service).body, R"({"city":"Ulm","floor":2})");
        request.setBody("application/json", "{}");
        EXPECT_EQ(request.sendTo(service).statusCode, 422);
        request.setBody("text/plain", "{}");
        EXPECT_EQ(request.sendTo(service).statusCode, 415);
    }
    EXPECT_EQ(BwaTestRequest("GET", "/?city=Ulm&floor=2").sendTo(service).body,
              R"({"city":"Ulm","floor":2})");
    EXPECT_EQ(BwaTestRequest("HEAD", "/?city=Ulm&floor=2").sendTo(service).statusCode, 200);
    EXPECT_EQ(BwaTestRequest("GET", "/?city=Ulm").sendTo(service).statusCode, 422);
}

TEST(BwaRestFields, GivenToAPatchRouteChangesForTheHandler)
{
    Place place = {QStringLiteral("Ulm"), 2};
    BwaRestService service;
    service.patch("", placeFields(), [&place](const BwaRestCall&, const auto& change) {
        change(place);
        return BwaRestReply::empty();
    });
    BwaTestRequest request("PATCH");

    request.setBody("application/merge-patch+json", R"({"floor":3})");
    EXPECT_EQ(request.sendTo(service).statusCode, 204);
    EXPECT_EQ(place.floor, 3);
    request.setBody("application/merge-patch+json", R"({"floor":4,"city":""})");
    EXPECT_EQ(errorsOf(request.sendTo(service)),
              '[' + error("#/city", "must be a text of 1 to 5 characters") + ']');
    EXPECT_EQ(place.floor, 3);
}
