// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// Sends a body to a route with fields of every type. It is accepted exactly when a literal checker
// finds it valid by the JSON Schema of the fields; what is written of it reads as the same value; a
// patch gives what RFC 7396 says; and no reply is a 500.

#include "Fuzzing.h"
#include "json/BwaJson.h"
#include "rest/BwaRestFields.h"
#include "rest/BwaRestService.h"
#include "support/QtPrinters.h"
#include "testing/BwaTestRequest.h"

#include <QRegularExpression>

#include <gtest/gtest.h>

#include <algorithm>

namespace {

struct Part {
    QString a = QStringLiteral("d");
    int b = 3;
};

struct All {
    QString a;
    bool b = true;
    qint8 c = 1;
    quint64 d = 2;
    double e = 0.5;
    QByteArray f = "f";
    QUuid g;
    QDateTime h = QDateTime::fromSecsSinceEpoch(0).toUTC();
    QList<quint8> i;
    std::optional<int> j;
    Part k;
    std::optional<Part> l;
    QList<Part> m;
    qint64 n = 4;
    double o = 0;
};

BwaRestFields<All> fields()
{
    const BwaRestRule optional = BwaRestRule::any().orDefault();
    const auto part = BwaRestFields<Part>()
                          .add("a", &Part::a, BwaRestRule::length(1, 2))
                          .add("b", &Part::b, BwaRestRule::range(-3, 3).orDefault());
    return BwaRestFields<All>()
        .add("a", &All::a)
        .add("b", &All::b, optional)
        .add("c", &All::c, optional)
        .add("d", &All::d, optional)
        .add("e", &All::e, optional)
        .add("f", &All::f, optional)
        .add("g", &All::g, optional)
        .add("h", &All::h, optional)
        .add("i", &All::i, BwaRestRule::length(0, 3).orDefault())
        .add("j", &All::j, optional)
        .add("k", &All::k, part, optional)
        .add("l", &All::l, part, optional)
        .add("m", &All::m, part, optional)
        .add("n", &All::n, BwaRestRule::any().asText().orDefault())
        .add("o", &All::o, BwaRestRule::range(-1, 1).orDefault());
}

bool isOfType(const QVariant& value, const QString& type)
{
    const QMap<int, QString> types = {{QMetaType::UnknownType, QStringLiteral("null")},
                                      {QMetaType::Bool, QStringLiteral("boolean")},
                                      {QMetaType::LongLong, QStringLiteral("integer")},
                                      {QMetaType::ULongLong, QStringLiteral("integer")},
                                      {QMetaType::Double, QStringLiteral("number")},
                                      {QMetaType::QString, QStringLiteral("string")},
                                      {QMetaType::QVariantList, QStringLiteral("array")},
                                      {QMetaType::QVariantMap, QStringLiteral("object")}};
    const QString own = types.value(value.userType());
    return own == type || (own == QLatin1String("integer") && type == QLatin1String("number"));
}

QVariant keyword(const QVariantMap& schema, const char* name)
{
    return schema.value(QString::fromLatin1(name));
}

bool isWithin(const QVariantMap& schema, const char* least, const char* most, long double number)
{
    const auto limit = [&schema](const char* name, long double otherwise) -> long double {
        const QVariant value = keyword(schema, name);
        if (value.userType() == QMetaType::ULongLong) {
            return value.toULongLong();
        }
        return value.isValid() ? value.toLongLong() : otherwise;
    };
    return number >= limit(least, number) && number <= limit(most, number);
}

bool matches(const char* expression, const QString& text)
{
    return QRegularExpression(QString::fromLatin1(expression)).match(text).hasMatch();
}

bool isTime(const QString& text)
{
    if (!matches("^\\d{4}-\\d\\d-\\d\\d[Tt]\\d\\d:\\d\\d:\\d\\d(\\.\\d{1,9})?"
                 "([Zz]|[+-]\\d\\d:\\d\\d)\\z",
                 text)) {
        return false;
    }
    const QString offset = text.mid(text.size() - 6);
    const bool isUtc = text.endsWith(QLatin1Char('Z'), Qt::CaseInsensitive);
    const QDate date(text.mid(0, 4).toInt(), text.mid(5, 2).toInt(), text.mid(8, 2).toInt());
    const bool isOffset = isUtc || (offset.mid(1, 2).toInt() < 24 && offset.mid(4, 2).toInt() < 60);
    return date.isValid() && text.mid(11, 2).toInt() < 24 && text.mid(14, 2).toInt() < 60 &&
        text.mid(17, 2).toInt() < 60 && isOffset;
}

bool isText(const QVariantMap& schema, const QString& text)
{
    const QString format = keyword(schema, "format").toString();
    const QString pattern = keyword(schema, "pattern").toString();
    if (format == QLatin1String("uuid")) {
        return matches("^[0-9a-fA-F]{8}(-[0-9a-fA-F]{4}){3}-[0-9a-fA-F]{12}\\z", text);
    }
    if (format == QLatin1String("date-time")) {
        return isTime(text);
    }
    if (keyword(schema, "contentEncoding").isValid()) {
        return matches("^([A-Za-z0-9+/]{4})*([A-Za-z0-9+/][AQgw]==|"
                       "[A-Za-z0-9+/]{2}[AEIMQUYcgkosw048]=)?\\z",
                       text);
    }
    return (pattern.isEmpty() ||
            (QRegularExpression(pattern).match(text).hasMatch() &&
             !text.endsWith(QLatin1Char('\n')) && QString::number(text.toLongLong()) == text)) &&
        isWithin(schema, "minLength", "maxLength", text.toUcs4().size());
}

bool isValid(const QVariantMap& schema, const QVariant& value);

bool isObject(const QVariantMap& schema, const QVariantMap& members)
{
    const QVariantMap properties = keyword(schema, "properties").toMap();
    for (const QString& name : keyword(schema, "required").toStringList()) {
        if (!members.contains(name)) {
            return false;
        }
    }
    for (auto member = members.begin(); member != members.end(); ++member) {
        const QVariantMap property = properties.value(member.key()).toMap();
        const bool isRequired = keyword(schema, "required").toStringList().contains(member.key());
        const bool isDefault = !member->isValid() && !isRequired;
        if (property.isEmpty() || (!isDefault && !isValid(property, *member))) {
            return false;
        }
    }
    return true;
}

bool isValid(const QVariantMap& schema, const QVariant& value)
{
    const QStringList types = keyword(schema, "type").toStringList();
    if (std::none_of(types.begin(), types.end(),
                     [&value](const QString& type) { return isOfType(value, type); })) {
        return false;
    }
    switch (value.userType()) {
    case QMetaType::QString:
        return isText(schema, value.toString());
    case QMetaType::QVariantMap:
        return isObject(schema, value.toMap());
    case QMetaType::QVariantList: {
        const QVariantList list = value.toList();
        const QVariantMap items = keyword(schema, "items").toMap();
        return isWithin(schema, "minItems", "maxItems", list.size()) &&
            std::all_of(list.begin(), list.end(),
                        [&items](const QVariant& item) { return isValid(items, item); });
    }
    case QMetaType::ULongLong:
        return isWithin(schema, "minimum", "maximum", value.toULongLong());
    case QMetaType::LongLong:
        return isWithin(schema, "minimum", "maximum", value.toLongLong());
    case QMetaType::Double:
        return isWithin(schema, "minimum", "maximum", value.toDouble());
    default:
        return true;
    }
}

// RFC 7396, section 2.
QVariant merged(const QVariant& target, const QVariant& patch)
{
    if (patch.userType() != QMetaType::QVariantMap) {
        return patch;
    }
    QVariantMap result = target.toMap();
    const QVariantMap members = patch.toMap();
    for (auto member = members.begin(); member != members.end(); ++member) {
        if (member->isValid()) {
            result.insert(member.key(), merged(result.value(member.key()), *member));
        } else {
            result.remove(member.key());
        }
    }
    return result;
}

// Whether a patch has members of its objects that are none of the fields.
bool hasUnknown(const QVariantMap& schema, const QVariant& patch)
{
    const QVariantMap properties = keyword(schema, "properties").toMap();
    const QVariantMap members = patch.toMap();
    for (auto member = members.begin(); member != members.end(); ++member) {
        const QVariantMap property = properties.value(member.key()).toMap();
        if (property.isEmpty() || hasUnknown(property, *member)) {
            return true;
        }
    }
    return false;
}

// Whether the time may be outside the years 1 to 9999 in UTC, which the schema cannot tell.
bool hasTimeAtAnEnd(const QVariant& json)
{
    const QString time = json.toMap().value(QStringLiteral("h")).toString();
    return time.startsWith(QLatin1String("0001-01-01")) ||
        time.startsWith(QLatin1String("9999-12-31"));
}

BwaTestReply reply(const char* method, const QByteArray& body, const All& before)
{
    static const BwaRestFields<All> all = fields();
    BwaRestService service;
    service.put("", all,
                [](const BwaRestCall&, const All& read) -> BwaRestReply { return all.json(read); });
    service.patch("", all, [&before](const BwaRestCall&, const auto& change) -> BwaRestReply {
        All changed = before;
        change(changed);
        return all.json(changed);
    });
    BwaTestRequest request(method);
    request.setBody("application/json", body);
    const BwaTestReply reply = request.sendTo(service);
    EXPECT_EQ(reply.errorText, "");
    return reply;
}

All before()
{
    All all;
    all.a = QStringLiteral("before");
    all.j = 5;
    all.k = {QStringLiteral("k"), 1};
    all.m = {{QStringLiteral("m"), 2}};
    return all;
}

} // namespace

void fuzz(const QByteArray& input)
{
    bool isJson = false;
    QStringList repeated;
    const QVariant json = BwaJson::parse(input, &isJson, &repeated);
    const QVariantMap schema = fields().description();
    const BwaTestReply put = reply("PUT", input, All());
    const BwaTestReply patched = reply("PATCH", input, before());
    if (!isJson) {
        EXPECT_EQ(put.statusCode, 400);
        EXPECT_EQ(patched.statusCode, 400);
        return;
    }
    const auto status = [&repeated](bool isTaken) {
        return isTaken && repeated.isEmpty() ? 200 : 422;
    };
    if (!hasTimeAtAnEnd(json)) {
        EXPECT_EQ(put.statusCode, status(isValid(schema, json)));
    }
    if (put.statusCode == 200) {
        EXPECT_EQ(reply("PUT", put.body, All()).body, put.body);
    }
    const QVariant whole = merged(fields().json(before()), json);
    const BwaTestReply replaced = reply("PUT", BwaJson::write(whole), All());
    const bool isPatch = replaced.statusCode == 200 && !hasUnknown(schema, json);
    EXPECT_EQ(patched.statusCode, status(isPatch));
    if (patched.statusCode == 200) {
        EXPECT_EQ(patched.body, replaced.body);
    }
}
