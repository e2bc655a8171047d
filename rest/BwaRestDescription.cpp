// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "rest/BwaRestDescription_p.h"
#include "rest/BwaRestPattern_p.h"
#include "rest/BwaRestRoute.h"
#include "rest/BwaRestStatus_p.h"

#include <QHash>

#include <initializer_list>
#include <utility>

namespace {

using Segments = std::vector<BwaRestSegment>;

// Makes a JSON object of names that are plain literals, which are easier to read than QStrings.
QVariantMap object(std::initializer_list<std::pair<const char*, QVariant>> members)
{
    QVariantMap object;
    for (const auto& member : members) {
        object.insert(QString::fromLatin1(member.first), member.second);
    }
    return object;
}

QVariant text(const char* text)
{
    return QString::fromLatin1(text);
}

QVariantMap schemaOf(BwaRestKind kind)
{
    switch (kind) {
    case BwaRestKind::Number:
        return object({{"type", text("integer")}, {"format", text("int64")}});
    case BwaRestKind::Uuid:
        return object({{"type", text("string")}, {"format", text("uuid")}});
    default:
        return object({{"type", text("string")}, {"minLength", 1}});
    }
}

QVariantMap parameter(const QString& name, const char* place, bool isRequired,
                      const QVariantMap& schema)
{
    return object(
        {{"name", name}, {"in", text(place)}, {"required", isRequired}, {"schema", schema}});
}

// A path without the names of its parameters. To OpenAPI, paths that differ only in these names are
// the same path.
QString shapeOf(const Segments& segments)
{
    QString shape;
    for (const BwaRestSegment& segment : segments) {
        shape += QLatin1Char('/') + segment.text;
        shape += segment.kind == BwaRestKind::Literal ? QString() : QStringLiteral("{}");
    }
    return shape;
}

QString pathOf(const Segments& segments)
{
    QString path;
    for (const BwaRestSegment& segment : segments) {
        const QString name = QString::fromLatin1(segment.name);
        path += QLatin1Char('/') + segment.text;
        path += name.isEmpty() ? QString() : QLatin1Char('{') + name + QLatin1Char('}');
    }
    return path;
}

QVariantList pathParameters(const Segments& segments)
{
    QVariantList parameters;
    for (const BwaRestSegment& segment : segments) {
        if (segment.kind != BwaRestKind::Literal) {
            const QString name = QString::fromLatin1(segment.name);
            parameters.append(parameter(name, "path", true, schemaOf(segment.kind)));
        }
    }
    return parameters;
}

QVariantList queryParameters(const QVariantMap& schema)
{
    const QVariantMap properties = schema.value(QStringLiteral("properties")).toMap();
    const QStringList required = schema.value(QStringLiteral("required")).toStringList();
    QVariantList parameters;
    for (auto field = properties.begin(); field != properties.end(); ++field) {
        const QVariantMap property = field->toMap();
        if (!property.contains(QStringLiteral("readOnly"))) {
            parameters.append(
                parameter(field.key(), "query", required.contains(field.key()), property));
        }
    }
    return parameters;
}

QVariantMap contentOf(const char* mediaType, const QVariantMap& schema)
{
    return object({{mediaType, object({{"schema", schema}})}});
}

QVariantMap responsesOf(const BwaRestRoute& route)
{
    QVariantMap responses =
        object({{"default", object({{"$ref", text("#/components/responses/Problem")}})}});
    const QMap<int, QVariantMap> given = route.given();
    for (auto reply = given.begin(); reply != given.end(); ++reply) {
        const QString phrase = QString::fromLatin1(BwaRestStatus::line(reply.key()).mid(4));
        responses.insert(QString::number(reply.key()),
                         object({{"description", phrase},
                                 {"content", contentOf("application/json", reply.value())}}));
    }
    return responses;
}

QVariantMap operationOf(const BwaRestRoute& route, const Segments& segments)
{
    QVariantMap operation = object({{"responses", responsesOf(route)}});
    QVariantList parameters = pathParameters(segments);
    if (route.method() == "GET") {
        parameters += queryParameters(route.taken());
    } else if (!route.taken().isEmpty()) {
        const char* const type =
            route.method() == "PATCH" ? "application/merge-patch+json" : "application/json";
        operation.insert(QStringLiteral("requestBody"),
                         object({{"required", true}, {"content", contentOf(type, route.taken())}}));
    }
    if (!parameters.isEmpty()) {
        operation.insert(QStringLiteral("parameters"), parameters);
    }
    if (!route.summary().isEmpty()) {
        operation.insert(QStringLiteral("summary"), route.summary());
    }
    return operation;
}

// A problem (RFC 9457), with the member "errors" that BwaRestErrors adds.
QVariantMap problemSchema()
{
    const QVariantMap string = object({{"type", text("string")}});
    const QVariantMap error =
        object({{"type", text("object")},
                {"properties", object({{"pointer", string}, {"detail", string}})}});
    const QVariantMap errors = object({{"type", text("array")}, {"items", error}});
    const QVariantMap properties = object({{"type", string},
                                           {"title", string},
                                           {"status", object({{"type", text("integer")}})},
                                           {"detail", string},
                                           {"errors", errors}});
    return object({{"type", text("object")}, {"properties", properties}});
}

QVariantMap components()
{
    const QVariantMap reference = object({{"$ref", text("#/components/schemas/Problem")}});
    const QVariantMap response =
        object({{"description", text("The request is refused, or has failed")},
                {"content", contentOf("application/problem+json", reference)}});
    return object({{"responses", object({{"Problem", response}})},
                   {"schemas", object({{"Problem", problemSchema()}})}});
}

} // namespace

QVariantMap BwaRestDescription::of(const std::vector<const BwaRestRoute*>& routes,
                                   const QString& title, const QString& version)
{
    QHash<QString, Segments> segmentsOfShapes;
    QVariantMap paths;
    for (const BwaRestRoute* route : routes) {
        const Segments own = BwaRestPattern::segmentsOf(route->pattern());
        const auto segments =
            segmentsOfShapes.insert(shapeOf(own), segmentsOfShapes.value(shapeOf(own), own));
        QVariantMap path = paths.value(pathOf(*segments)).toMap();
        path.insert(QString::fromLatin1(route->method()).toLower(), operationOf(*route, *segments));
        paths.insert(pathOf(*segments), path);
    }
    return object({{"openapi", text("3.1.0")},
                   {"info", object({{"title", title}, {"version", version}})},
                   {"paths", paths},
                   {"components", components()}});
}
