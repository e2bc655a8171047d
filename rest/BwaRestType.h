// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWARESTTYPE_H
#define BWARESTTYPE_H

#include "rest/BwaRestErrors.h"
#include "rest/BwaRestRule.h"
#include "rest/BwaRestSchema.h"
#include "rest/BwaRestValue.h"

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QString>
#include <QUuid>
#include <QVariant>

#include <limits>
#include <optional>
#include <type_traits>
#include <utility>

template <class T>
class BwaRestFields;

/**
 * Turns JSON into a member of a struct, and back; for BwaRestFields. This template is for a nested
 * struct.
 */
template <class M, class = void>
class BwaRestType
{
public:
    BwaRestType(const BwaRestRule& rule, const BwaRestFields<M>& fields)
        : m_fields(fields)
    {
        rule.checkFor("a struct", false, false, false);
    }

    BwaRestErrors read(const QVariant& json, M& target, BwaRestSchema::Reading reading) const
    {
        return m_fields.readObject(json, &target, reading);
    }
    QVariant json(const M& value) const { return m_fields.json(value); }
    QVariantMap description() const { return m_fields.description(); }

private:
    BwaRestFields<M> m_fields;
};

/** A single value. */
template <class M>
class BwaRestType<M, std::enable_if_t<BwaRestValue::kindOf<M>().has_value()>>
{
public:
    explicit BwaRestType(const BwaRestRule& rule)
        : m_value(valueOf(rule))
    {
    }

    BwaRestErrors read(const QVariant& json, M& target, BwaRestSchema::Reading /*reading*/) const
    {
        const QVariant value = m_value.read(json);
        if (!value.isValid()) {
            return m_value.reason();
        }
        target = static_cast<M>(value.value<Wide>());
        return {};
    }
    QVariant json(const M& value) const
    {
        return m_value.json(QVariant::fromValue(static_cast<Wide>(value)));
    }
    QVariantMap description() const { return m_value.description(); }

private:
    static constexpr BwaRestValue::Kind kind = *BwaRestValue::kindOf<M>();
    static constexpr bool isInteger = kind == BwaRestValue::Integer;
    using WideInteger = std::conditional_t<std::is_signed_v<M>, qlonglong, qulonglong>;
    using Wide = std::conditional_t<isInteger, WideInteger, M>;

    static BwaRestValue valueOf(const BwaRestRule& rule)
    {
        if constexpr (isInteger) {
            return BwaRestValue(kind, rule, std::numeric_limits<M>::min(),
                                static_cast<quint64>(std::numeric_limits<M>::max()));
        } else {
            return BwaRestValue(kind, rule, 0, 0);
        }
    }

    BwaRestValue m_value;
};

/** A list: QList or QStringList. */
template <class M>
class BwaRestType<M, std::enable_if_t<std::is_base_of_v<QList<typename M::value_type>, M>>>
{
public:
    template <class... Nested>
    explicit BwaRestType(BwaRestRule rule, const Nested&... nested)
        : m_lengths(rule.takenLengths())
        , m_element(rule, nested...)
    {
    }

    BwaRestErrors read(const QVariant& json, M& target, BwaRestSchema::Reading /*reading*/) const
    {
        const QVariantList elements = json.toList();
        if (json.userType() != QMetaType::QVariantList || !m_lengths.takesLength(elements.size())) {
            return QStringLiteral("must be a list") + m_lengths.shownLength("elements");
        }
        M list;
        BwaRestErrors errors;
        for (const QVariant& element : elements) {
            typename M::value_type value{};
            const auto wrong = m_element.read(element, value, BwaRestSchema::Whole);
            errors.addBelow(list.size(), wrong);
            list.append(std::move(value));
        }
        target = std::move(list);
        return errors;
    }
    QVariant json(const M& value) const
    {
        QVariantList elements;
        for (const auto& element : value) {
            elements.append(m_element.json(element));
        }
        return elements;
    }
    QVariantMap description() const
    {
        const QVariantMap description = {{QStringLiteral("type"), QStringLiteral("array")},
                                         {QStringLiteral("items"), m_element.description()}};
        return BwaRestRule::limited(description, m_lengths.lengths, "minItems", "maxItems");
    }

private:
    BwaRestRule m_lengths;
    BwaRestType<typename M::value_type> m_element;
};

/** A std::optional, which may be null. */
template <class M>
class BwaRestType<std::optional<M>>
{
public:
    template <class... Nested>
    explicit BwaRestType(const BwaRestRule& rule, const Nested&... nested)
        : m_type(rule, nested...)
    {
    }

    BwaRestErrors read(const QVariant& json, std::optional<M>& target,
                       BwaRestSchema::Reading reading) const
    {
        if (!json.isValid()) {
            target.reset();
            return {};
        }
        return target ? m_type.read(json, *target, reading)
                      : m_type.read(json, target.emplace(), BwaRestSchema::Whole);
    }
    QVariant json(const std::optional<M>& value) const
    {
        return value ? m_type.json(*value) : QVariant();
    }
    QVariantMap description() const { return BwaRestSchema::nullable(m_type.description()); }

private:
    BwaRestType<M> m_type;
};

#endif
