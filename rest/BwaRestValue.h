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

/** Reads, checks and writes a field that is a single value; for BwaRestType. */
class BWA_REST_EXPORT BwaRestValue
{
public:
    /** The kind of a value. The comments say how it is written in JSON. */
    enum Kind {
        Boolean, /**< true or false */
        Integer, /**< a number without fraction and exponent, or a text of its digits */
        Number,  /**< a number */
        Text,    /**< a text */
        Bytes,   /**< base64 with padding (RFC 4648, section 4) */
        Uuid,    /**< 8-4-4-4-12 hexadecimal digits (RFC 9562) */
        Time     /**< date and time with an offset (RFC 3339), written in UTC with milliseconds */
    };

    /** The kind of the C++ type M; none for a list, an optional or a struct. */
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
     * @a least and @a most are the limits of an integer type.
     * @throws std::logic_error when @a rule does not fit @a kind
     */
    BwaRestValue(Kind kind, const BwaRestRule& rule, qint64 least, quint64 most);

    /**
     * The value of @a json: a bool, qlonglong or qulonglong, double, QString that is never null,
     * QByteArray, QUuid, or QDateTime in UTC; invalid when @a json must be refused.
     */
    QVariant read(const QVariant& json) const;
    /** Why read() refuses a value: what it must be. */
    QString reason() const;
    /**
     * The JSON of @a value. Numbers that JSON does not have and times that RFC 3339 does not have
     * become null.
     */
    QVariant json(const QVariant& value) const;
    /** The JSON Schema of such a value. */
    QVariantMap description() const;

private:
    bool isAllowed(const QVariant& value) const;
    bool isInRange(const QVariant& number) const;
    QVariantMap integerDescription() const;

    Kind m_kind;
    BwaRestRule m_rule; // for an integer, always with a range
    bool m_takesLarge;  // whether integers beyond qint64 are valid
};

#endif
