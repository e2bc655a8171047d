// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "rest/BwaRestRule.h"

#include <stdexcept>
#include <string>
#include <utility>

namespace {

QString shown(const char* form, const BwaRestRule::Limits& limits)
{
    return QString::fromLatin1(form).arg(limits.least).arg(limits.most);
}

} // namespace

BwaRestRule BwaRestRule::any()
{
    return BwaRestRule();
}

BwaRestRule BwaRestRule::range(qint64 least, qint64 most)
{
    BwaRestRule rule;
    rule.numbers = Limits{least, most};
    return rule;
}

BwaRestRule BwaRestRule::length(int least, int most)
{
    BwaRestRule rule;
    rule.lengths = Limits{least, most};
    return rule;
}

BwaRestRule& BwaRestRule::orDefault()
{
    mayBeAbsent = true;
    return *this;
}

BwaRestRule& BwaRestRule::readOnly()
{
    isReadOnly = true;
    return *this;
}

BwaRestRule& BwaRestRule::asText()
{
    isText = true;
    return *this;
}

void BwaRestRule::checkFor(const char* type, bool hasRange, bool hasLength, bool hasText) const
{
    const char* const wrong = numbers && !hasRange ? "range"
        : lengths && !hasLength                    ? "length"
        : isText && !hasText                       ? "form as a text"
                                                   : nullptr;
    if (wrong) {
        throw std::logic_error(std::string("A field that is ") + type + " has no " + wrong);
    }
}

BwaRestRule BwaRestRule::takenLengths()
{
    BwaRestRule taken;
    std::swap(taken.lengths, lengths);
    return taken;
}

bool BwaRestRule::takesLength(qint64 size) const
{
    return !lengths || (size >= lengths->least && size <= lengths->most);
}

QString BwaRestRule::shownRange() const
{
    return numbers ? shown(" from %1 to %2", *numbers) : QString();
}

QString BwaRestRule::shownLength(const char* unit) const
{
    return lengths ? shown(" of %1 to %2 ", *lengths) + QLatin1String(unit) : QString();
}

QVariantMap BwaRestRule::limited(QVariantMap description, const std::optional<Limits>& limits,
                                 const char* least, const char* most)
{
    if (limits) {
        description.insert(QString::fromLatin1(least), limits->least);
        description.insert(QString::fromLatin1(most), limits->most);
    }
    return description;
}
