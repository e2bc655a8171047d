// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWARESTVALUE_H
#define BWARESTVALUE_H

#include "rest/BwaRestGlobal.h"
#include "rest/BwaRestRule.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QUuid>
#include <QVariant>

#include <optional>
#include <type_traits>

/** What a field without parts may hold, and how JSON has it; for BwaRestType. */
class BWA_REST_EXPORT BwaRestValue
{
public:
    /** What it is in C++; the comments tell what it is in JSON. */
    enum Kind {
        Boolean, /**< true or false */
        Integer, /**< a number without fraction and exponent, or a text of its digits */
        Number,  /**< a number */
        Text,    /**< a text */
        Bytes,   /**< base64 with padding (RFC 4648, section 4) */
        Uuid,    /**< 8-4-4-4-12 hexadecimal digits (RFC 9562) */
        Time     /**< date and time with an offset (RFC 3339), written in UTC with milliseconds */
    };

    /** Of a C++ type; none for one that has parts. */
    template <class M>
    static constexpr std::optional<Kind> kindOf()
    {
        if constexpr (std::is_same_v<M, bool>) {
            return Boolean;
        } else if constexpr (std::is_integral_v<M>) {
            return Integer;
        } else if constexpr (std::is_same_v<M, double>) {
            return Number;
        } else if constexpr (std::is_same_v<M, QString>) {
            return Text;
        } else if constexpr (std::is_same_v<M, QByteArray>) {
            return Bytes;
        } else if constexpr (std::is_same_v<M, QUuid>) {
            return Uuid;
        } else if constexpr (std::is_same_v<M, QDateTime>) {
            return Time;
        } else {
            return std::nullopt;
        }
    }

    /**
     * The type of an integer takes those from @a least to @a most.
     * @throws std::logic_error when @a rule says what @a kind cannot keep to
     */
    BwaRestValue(Kind kind, const BwaRestRule& rule, qint64 least, quint64 most);

    /**
     * The value of @a json: a bool, qlonglong or qulonglong, double, QString that is never null,
     * QByteArray, QUuid, or QDateTime in UTC; invalid when it is to be refused.
     */
    QVariant read(const QVariant& json) const;
    /** Why read() refuses: what the value must be. */
    QString reason() const;
    /** The JSON of @a value. Numbers and times that JSON or RFC 3339 do not have become null. */
    QVariant json(const QVariant& value) const;
    /** Its JSON Schema. */
    QVariantMap description() const;

private:
    bool isAllowed(const QVariant& value) const;
    bool isInRange(const QVariant& number) const;
    QVariantMap integerDescription() const;

    Kind m_kind;
    BwaRestRule m_rule; // an integer has a range in it
    bool m_takesLarge;  // integers beyond qint64
};

#endif
