// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "rest/BwaRestSchema.h"

#include "json/BwaJson.h"
#include "rest/BwaRestCall.h"

#include <stdexcept>

namespace {

// The type in a JSON Schema; in a list of types the first one, because null comes second.
QString typeOf(const QVariantMap& description)
{
    return description.value(QStringLiteral("type")).toStringList().value(0);
}

bool isList(const QVariantMap& description)
{
    return typeOf(description) == QLatin1String("array");
}

// The JSON value of a text in a query. Numbers and booleans are written there as in JSON, texts
// without quotes.
QVariant valueOf(const QString& text, const QVariantMap& description)
{
    if (isList(description)) {
        return valueOf(text, description.value(QStringLiteral("items")).toMap());
    }
    const QStringList plain = {QStringLiteral("boolean"), QStringLiteral("integer"),
                               QStringLiteral("number")};
    const QVariant value =
        plain.contains(typeOf(description)) ? BwaJson::parse(text.toUtf8()) : QVariant();
    return value.isValid() ? value : text;
}

} // namespace

void BwaRestSchema::add(const Field& field)
{
    if (m_descriptions.contains(field.name)) {
        throw std::logic_error("There are two fields \"" + field.name.toStdString() + '"');
    }
    m_fields.push_back(field);
    m_descriptions.insert(field.name, field.description);
}

BwaRestErrors BwaRestSchema::readObject(const QVariant& json, void* target, Reading reading) const
{
    if (json.userType() != QMetaType::QVariantMap) {
        return "must be an object";
    }
    BwaRestErrors errors = readMembers(json.toMap(), target, reading);
    for (auto check = m_checks.begin(); errors.isEmpty() && check != m_checks.end(); ++check) {
        const QString reason = (*check)(target);
        errors = reason.isNull() ? BwaRestErrors() : BwaRestErrors(reason);
    }
    return errors;
}

BwaRestErrors BwaRestSchema::readMembers(const QVariantMap& members, void* target,
                                         Reading reading) const
{
    BwaRestErrors errors;
    for (const Field& field : m_fields) {
        if (!field.rule.isReadOnly) {
            errors.addBelow(field.name, readMember(members, field, target, reading));
        }
    }
    for (auto member = members.begin(); !m_keepsUnknown && member != members.end(); ++member) {
        if (!m_descriptions.contains(member.key())) {
            errors.addBelow(member.key(), "is unknown");
        }
    }
    return errors;
}

BwaRestErrors BwaRestSchema::readMember(const QVariantMap& members, const Field& field,
                                        void* target, Reading reading)
{
    const auto member = members.constFind(field.name);
    if (member == members.constEnd()) {
        const bool isMissing = reading == Whole && !field.rule.mayBeAbsent;
        return isMissing ? BwaRestErrors("is missing") : BwaRestErrors();
    }
    if (!member->isValid() && field.reset) {
        field.reset(target);
        return {};
    }
    return field.read(*member, target, reading);
}

void BwaRestSchema::readCall(const BwaRestCall& call, void* target, Reading reading) const
{
    const QByteArray method = call.method();
    BwaRestErrors errors;
    QVariant json;
    if (method == "GET" || method == "HEAD") {
        json = membersOfQuery(call.queryPairs(), &errors);
    } else {
        QStringList repeated;
        json = call.json(&repeated);
        if (!repeated.isEmpty()) {
            errors.add(repeated, "is repeated");
        }
    }
    errors.add(readObject(json, target, reading));
    if (!errors.isEmpty()) {
        throw errors.problem();
    }
}

QVariantMap BwaRestSchema::membersOfQuery(const QList<QPair<QString, QString>>& pairs,
                                          BwaRestErrors* errors) const
{
    QMap<QString, QVariantList> values;
    for (const auto& pair : pairs) {
        values[pair.first].append(valueOf(pair.second, m_descriptions.value(pair.first)));
    }
    QVariantMap members;
    for (auto value = values.constBegin(); value != values.constEnd(); ++value) {
        const bool takesAll = isList(m_descriptions.value(value.key()));
        if (!takesAll && value->size() > 1) {
            errors->addBelow(value.key(), "is repeated");
        }
        members.insert(value.key(), takesAll ? QVariant(*value) : value->first());
    }
    return members;
}

QVariantMap BwaRestSchema::writeObject(const void* value) const
{
    QVariantMap members;
    for (const Field& field : m_fields) {
        members.insert(field.name, field.write(value));
    }
    return members;
}

QVariantMap BwaRestSchema::description() const
{
    QVariantMap properties;
    QStringList required;
    for (const Field& field : m_fields) {
        QVariantMap property = field.description;
        if (field.rule.isReadOnly) {
            property.insert(QLatin1String("readOnly"), true);
        } else if (!field.rule.mayBeAbsent) {
            required.append(field.name);
        }
        properties.insert(field.name, property);
    }
    QVariantMap description = {{QStringLiteral("type"), QStringLiteral("object")},
                               {QStringLiteral("properties"), properties},
                               {QStringLiteral("required"), required}};
    if (!m_keepsUnknown) {
        description.insert(QStringLiteral("additionalProperties"), false);
    }
    return description;
}

QVariantMap BwaRestSchema::mergeDescription() const
{
    QVariantMap merged = description();
    QVariantMap properties = merged.value(QStringLiteral("properties")).toMap();
    for (const Field& field : m_fields) {
        if (field.reset) {
            properties[field.name] = nullable(properties.value(field.name).toMap());
        }
    }
    merged.insert(QStringLiteral("properties"), properties);
    merged.remove(QStringLiteral("required"));
    return merged;
}

QVariantMap BwaRestSchema::nullable(QVariantMap description)
{
    const QString type = typeOf(description);
    description.insert(QStringLiteral("type"), QStringList{type, QStringLiteral("null")});
    return description;
}
