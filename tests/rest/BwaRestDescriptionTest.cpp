// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "json/BwaJson.h"
#include "rest/BwaRestFields.h"
#include "rest/BwaRestService.h"

#include <gtest/gtest.h>

namespace {

struct Note {
    qint64 id = 0;
    QString text;
    std::optional<int> place;
    QList<int> tags;
};

const auto noteFields = BwaRestFields<Note>()
                            .add("id", &Note::id, BwaRestRule::any().readOnly().asText())
                            .add("text", &Note::text, BwaRestRule::length(1, 9))
                            .add("place", &Note::place)
                            .add("tags", &Note::tags, BwaRestRule::any().orDefault());

BwaRestReply nothing(const BwaRestCall& /*call*/)
{
    return BwaRestReply::empty();
}

QVariantMap described(const BwaRestService& service)
{
    return service.describe(QStringLiteral("Notes"), QStringLiteral("2"));
}

// A part of the document, by the names that lead to it.
std::string part(const BwaRestService& service, const QStringList& names)
{
    QVariantMap object = described(service);
    for (const QString& name : names) {
        object = object.value(name).toMap();
    }
    return BwaJson::write(object).toStdString();
}

std::string operation(const BwaRestService& service, const QString& path, const QString& method)
{
    return part(service, {QStringLiteral("paths"), path, method});
}

const std::string onlyProblems =
    R"("responses":{"default":{"$ref":"#/components/responses/Problem"}})";

const std::string noteProperties =
    R"("properties":{"id":{"pattern":"^(0|-?[1-9][0-9]*)$","readOnly":true,"type":"string"},)"
    R"("place":{"maximum":2147483647,"minimum":-2147483648,"type":["integer","null"]},)";

const std::string noteSchema = R"({"additionalProperties":false,)" + noteProperties +
    R"("tags":{"items":{"maximum":2147483647,"minimum":-2147483648,"type":"integer"},)"
    R"("type":"array"},"text":{"maxLength":9,"minLength":1,"type":"string"}},)"
    R"("required":["text","place"],"type":"object"})";

} // namespace

TEST(BwaRestDescription, GivenNoRoutesHasTheProblemAlone)
{
    EXPECT_EQ(
        part(BwaRestService(), {}),
        R"({"components":{"responses":{"Problem":{"content":{"application/problem+json":{"schema":)"
        R"({"$ref":"#/components/schemas/Problem"}}},)"
        R"("description":"The request is refused, or has failed"}},"schemas":{"Problem":)"
        R"({"properties":{"detail":{"type":"string"},"errors":{"items":{"properties":)"
        R"({"detail":{"type":"string"},"pointer":{"type":"string"}},"type":"object"},)"
        R"("type":"array"},"status":{"type":"integer"},"title":{"type":"string"},)"
        R"("type":{"type":"string"}},"type":"object"}}},"info":{"title":"Notes","version":"2"},)"
        R"("openapi":"3.1.0","paths":{}})");
}

TEST(BwaRestDescription, TellsTheParametersOfPatterns)
{
    BwaRestService service;
    service.group("/a")
        .get("/{id:int}/{tag:uuid}/{rest...}", nothing)
        .says(QStringLiteral("Tells it"));

    EXPECT_EQ(part(service, {QStringLiteral("paths")}),
              R"({"/a/{id}/{tag}/{rest}":{"get":{"parameters":[)"
              R"({"in":"path","name":"id","required":true,)"
              R"("schema":{"format":"int64","type":"integer"}},)"
              R"({"in":"path","name":"tag","required":true,)"
              R"("schema":{"format":"uuid","type":"string"}},)"
              R"({"in":"path","name":"rest","required":true,)"
              R"("schema":{"minLength":1,"type":"string"}}],)" +
                  onlyProblems + R"(,"summary":"Tells it"}}})");
}

TEST(BwaRestDescription, GivenOtherNamesForAParameterTakesTheFirst)
{
    BwaRestService service;
    service.get("/{a}", nothing);
    service.get("", nothing);
    service.put("/{b}", nothing);

    const QVariantMap paths = described(service).value(QStringLiteral("paths")).toMap();

    EXPECT_EQ(QStringList(paths.keys()).join(QLatin1Char(' ')).toStdString(), "/ /{a}");
    EXPECT_EQ(operation(service, QStringLiteral("/{a}"), QStringLiteral("put")),
              R"({"parameters":[{"in":"path","name":"a","required":true,)"
              R"("schema":{"minLength":1,"type":"string"}}],)" +
                  onlyProblems + "}");
}

TEST(BwaRestDescription, GivenAQueryTellsItsParameters)
{
    BwaRestService service;
    service.get("/", nothing).takes(noteFields);

    EXPECT_EQ(operation(service, QStringLiteral("/"), QStringLiteral("get")),
              R"({"parameters":[{"in":"query","name":"place","required":true,"schema":)"
              R"({"maximum":2147483647,"minimum":-2147483648,"type":["integer","null"]}},)"
              R"({"in":"query","name":"tags","required":false,"schema":{"items":)"
              R"({"maximum":2147483647,"minimum":-2147483648,"type":"integer"},"type":"array"}},)"
              R"({"in":"query","name":"text","required":true,"schema":)"
              R"({"maxLength":9,"minLength":1,"type":"string"}}],)" +
                  onlyProblems + "}");
}

TEST(BwaRestDescription, TellsBodiesAndReplies)
{
    BwaRestService service;
    service.post("/", nothing).takes(noteFields).gives(noteFields, 201);

    EXPECT_EQ(operation(service, QStringLiteral("/"), QStringLiteral("post")),
              R"({"requestBody":{"content":{"application/json":{"schema":)" + noteSchema +
                  R"(}},"required":true},"responses":{"201":{"content":{"application/json":)" +
                  R"({"schema":)" + noteSchema + R"(}},"description":"Created"},)" +
                  onlyProblems.substr(13) + "}");
}

TEST(BwaRestDescription, GivenAPatchNeedsNoFieldAndTakesNull)
{
    BwaRestService service;
    service.patch("/", nothing).takes(noteFields);

    EXPECT_EQ(operation(service, QStringLiteral("/"), QStringLiteral("patch")),
              R"({"requestBody":{"content":{"application/merge-patch+json":{"schema":)"
              R"({"additionalProperties":false,)" +
                  noteProperties +
                  R"("tags":{"items":{"maximum":2147483647,"minimum":-2147483648,)"
                  R"("type":"integer"},"type":["array","null"]},)"
                  R"("text":{"maxLength":9,"minLength":1,"type":"string"}},"type":"object"}}},)"
                  R"("required":true},)" +
                  onlyProblems + "}");
}
