// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "rest/BwaRestValue.h"

#include "rest/BwaRestPattern_p.h"

#include <QDateTime>
#include <QRegularExpression>
#include <QUuid>

#include <algorithm>
#include <limits>

namespace {

const quint64 largestSigned = static_cast<quint64>(std::numeric_limits<qint64>::max());

struct KindWords {
    const char* name;
    const char* unit; // of its length; null: values have no length
};

// In the order of the kinds.
const KindWords words[] = {{"true or false", nullptr},
                           {"an integer", nullptr},
                           {"a number", nullptr},
                           {"a text", "characters"},
                           {"base64", "bytes"},
                           {"a UUID", nullptr},
                           {"a date and time as in RFC 3339", nullptr}};

// Accepts only a text that is the same when written again, so neither "+1" nor "01".
QVariant integerOfText(const QString& text)
{
    bool ok = false;
    const QVariant integer = text.startsWith(QLatin1Char('-')) ? QVariant(text.toLongLong(&ok))
                                                               : QVariant(text.toULongLong(&ok));
    return ok && integer.toString() == text ? integer : QVariant();
}

qint64 codePoints(const QString& text)
{
    return std::count_if(text.begin(), text.end(),
                         [](QChar character) { return !character.isLowSurrogate(); });
}

// Accepts only base64 that is the same when written again.
QVariant bytesOf(const QString& text)
{
    const QByteArray base64 = text.toLatin1();
    const QByteArray bytes = QByteArray::fromBase64(base64);
    return bytes.toBase64() == base64 ? QVariant(bytes) : QVariant();
}

bool hasRfc3339(const QDateTime& utc)
{
    return utc.isValid() && utc.date().year() >= 1 && utc.date().year() <= 9999;
}

// Checks the form first, because Qt accepts more than RFC 3339 allows, such as a date alone and a
// time without an offset.
QVariant timeOf(const QString& text)
{
    static const QRegularExpression form(
        QStringLiteral("^[0-9]{4}-[0-9]{2}-[0-9]{2}[Tt]([01][0-9]|2[0-3]):[0-9]{2}:[0-9]{2}"
                       "(\\.[0-9]{1,9})?([Zz]|[+-]([01][0-9]|2[0-3]):[0-5][0-9])\\z"));
    if (!form.match(text).hasMatch()) {
        return QVariant();
    }
    const QDateTime utc = QDateTime::fromString(text.toUpper(), Qt::ISODateWithMs).toUTC();
    return hasRfc3339(utc) ? QVariant(utc) : QVariant();
}

QVariant timeJson(const QDateTime& time)
{
    const QDateTime utc = time.toUTC();
    return hasRfc3339(utc) ? QVariant(utc.toString(Qt::ISODateWithMs)) : QVariant();
}

// The value of a kind that is not a JSON string.
QVariant valueOfJson(BwaRestValue::Kind kind, const QVariant& json)
{
    switch (json.userType()) {
    case QMetaType::Bool:
        return kind == BwaRestValue::Boolean ? json : QVariant();
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
        return kind == BwaRestValue::Integer ? json
            : kind == BwaRestValue::Number   ? QVariant(json.toDouble())
                                             : QVariant();
    case QMetaType::Double:
        return kind == BwaRestValue::Number ? json : QVariant();
    default:
        return QVariant();
    }
}

QVariant valueOfText(BwaRestValue::Kind kind, const QString& text)
{
    switch (kind) {
    case BwaRestValue::Integer:
        return integerOfText(text);
    case BwaRestValue::Bytes:
        return bytesOf(text);
    case BwaRestValue::Uuid:
        return BwaRestPattern::fits(BwaRestKind::Uuid, text) ? QVariant(QUuid(text)) : QVariant();
    case BwaRestValue::Time:
        return timeOf(text);
    default:
        return text;
    }
}

QVariantMap described(const char* type, const char* keyword = nullptr, const char* value = nullptr)
{
    QVariantMap description = {{QStringLiteral("type"), QString::fromLatin1(type)}};
    if (keyword) {
        description.insert(QString::fromLatin1(keyword), QString::fromLatin1(value));
    }
    return description;
}

} // namespace

BwaRestValue::BwaRestValue(Kind kind, const BwaRestRule& rule, qint64 least, quint64 most)
    : m_kind(kind)
    , m_rule(rule)
    , m_takesLarge(kind == Integer && !rule.numbers && most > largestSigned)
{
    const bool isInteger = kind == Integer;
    rule.checkFor(words[kind].name, isInteger || kind == Number, words[kind].unit, isInteger);
    if (isInteger) {
        const auto mostSigned = static_cast<qint64>(std::min(most, largestSigned));
        const auto wanted = rule.numbers.value_or(BwaRestRule::Limits{least, mostSigned});
        m_rule.numbers = {std::max(least, wanted.least), std::min(mostSigned, wanted.most)};
    }
}

bool BwaRestValue::isInRange(const QVariant& number) const
{
    if (m_kind == Number) {
        return !m_rule.numbers ||
            (number.toDouble() >= static_cast<double>(m_rule.numbers->least) &&
             number.toDouble() <= static_cast<double>(m_rule.numbers->most));
    }
    if (number.toULongLong() > largestSigned && number.userType() == QMetaType::ULongLong) {
        return m_takesLarge;
    }
    return number.toLongLong() >= m_rule.numbers->least &&
        number.toLongLong() <= m_rule.numbers->most;
}

bool BwaRestValue::isAllowed(const QVariant& value) const
{
    switch (m_kind) {
    case Integer:
    case Number:
        return isInRange(value);
    case Text:
        return m_rule.takesLength(codePoints(value.toString()));
    case Bytes:
        return m_rule.takesLength(value.toByteArray().size());
    default:
        return true;
    }
}

QVariant BwaRestValue::read(const QVariant& json) const
{
    const bool isText = json.userType() == QMetaType::QString;
    const bool isTextWanted = m_kind >= Text || m_rule.isText;
    const QVariant value = isText != isTextWanted ? QVariant()
        : isText                                  ? valueOfText(m_kind, json.toString())
                                                  : valueOfJson(m_kind, json);
    return value.isValid() && isAllowed(value) ? value : QVariant();
}

QString BwaRestValue::reason() const
{
    const QString must = QStringLiteral("must be ") + QLatin1String(words[m_kind].name);
    const QString range =
        m_takesLarge ? QStringLiteral(" from 0 to 18446744073709551615") : m_rule.shownRange();
    const QString inText = m_rule.isText ? QStringLiteral(", as a text") : QString();
    return must + range + m_rule.shownLength(words[m_kind].unit) + inText;
}

QVariant BwaRestValue::json(const QVariant& value) const
{
    switch (m_kind) {
    case Integer:
        return m_rule.isText ? value.toString() : value;
    case Bytes:
        return QString::fromLatin1(value.toByteArray().toBase64());
    case Uuid:
        return value.toUuid().toString(QUuid::WithoutBraces);
    case Time:
        return timeJson(value.toDateTime());
    default:
        return value;
    }
}

QVariantMap BwaRestValue::description() const
{
    switch (m_kind) {
    case Boolean:
        return described("boolean");
    case Integer:
        return m_rule.isText ? described("string", "pattern", "^(0|-?[1-9][0-9]*)$")
                             : integerDescription();
    case Number:
        return BwaRestRule::limited(described("number"), m_rule.numbers, "minimum", "maximum");
    case Text:
        return BwaRestRule::limited(described("string"), m_rule.lengths, "minLength", "maxLength");
    case Bytes:
        return described("string", "contentEncoding", "base64");
    case Uuid:
        return described("string", "format", "uuid");
    default:
        return described("string", "format", "date-time");
    }
}

QVariantMap BwaRestValue::integerDescription() const
{
    QVariantMap description =
        BwaRestRule::limited(described("integer"), m_rule.numbers, "minimum", "maximum");
    if (m_takesLarge) {
        description.insert(QStringLiteral("maximum"), std::numeric_limits<qulonglong>::max());
    }
    return description;
}
