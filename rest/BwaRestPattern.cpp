// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "rest/BwaRestPattern_p.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace {

[[noreturn]] void refuse(const QByteArray& pattern, const char* why)
{
    throw std::logic_error("The pattern \"" + pattern.toStdString() + "\" " + why);
}

bool isNameCharacter(char character)
{
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
        (character >= '0' && character <= '9') || character == '_';
}

// The kind that a pattern names after the colon of a parameter.
BwaRestKind kindOf(const QByteArray& kind, const QByteArray& pattern)
{
    if (kind != "int" && kind != "uuid") {
        refuse(pattern, "has a kind of parameter that is neither int nor uuid");
    }
    return kind == "int" ? BwaRestKind::Number : BwaRestKind::Uuid;
}

// The parameter that @a text, which is between the braces, declares.
BwaRestSegment parameterOf(QByteArray text, const QByteArray& pattern)
{
    BwaRestSegment segment = {BwaRestKind::Text, QString(), QByteArray()};
    if (text.endsWith("...")) {
        segment.kind = BwaRestKind::Rest;
        text.chop(3);
    } else if (text.contains(':')) {
        segment.kind = kindOf(text.mid(text.indexOf(':') + 1), pattern);
        text.truncate(text.indexOf(':'));
    }
    segment.name = text;
    if (text.isEmpty() || !std::all_of(text.begin(), text.end(), isNameCharacter)) {
        refuse(pattern, "has a parameter whose name is not of letters, digits and \"_\"");
    }
    return segment;
}

BwaRestSegment segmentOf(const QByteArray& text, const QByteArray& pattern)
{
    if (text.startsWith('{') && text.endsWith('}')) {
        return parameterOf(text.mid(1, text.size() - 2), pattern);
    }
    if (text.contains('{') || text.contains('}')) {
        refuse(pattern, "has a parameter that is only a part of what stands between two slashes");
    }
    // The slash keeps a leading U+FEFF, which Qt would drop as a byte order mark.
    return {BwaRestKind::Literal, QString::fromUtf8('/' + text).mid(1), QByteArray()};
}

void checkTogether(const std::vector<BwaRestSegment>& segments, const QByteArray& pattern)
{
    for (auto segment = segments.begin(); segment != segments.end(); ++segment) {
        if (segment->kind == BwaRestKind::Rest && segment + 1 != segments.end()) {
            refuse(pattern, "goes on behind a parameter that takes all that follows");
        }
        const auto isSame = [&segment](const BwaRestSegment& other) {
            return !other.name.isEmpty() && other.name == segment->name;
        };
        if (std::any_of(segments.begin(), segment, isSame)) {
            refuse(pattern, "has two parameters of one name");
        }
    }
}

bool isUuid(QStringView text)
{
    for (qsizetype position = 0; position < text.size(); ++position) {
        const ushort character = text.at(position).unicode();
        const bool isDash = position == 8 || position == 13 || position == 18 || position == 23;
        const bool isHex = (character >= '0' && character <= '9') ||
            (character >= 'a' && character <= 'f') || (character >= 'A' && character <= 'F');
        if (isDash ? character != '-' : !isHex) {
            return false;
        }
    }
    return text.size() == 36;
}

} // namespace

std::vector<BwaRestSegment> BwaRestPattern::segmentsOf(const QByteArray& pattern)
{
    if (!pattern.isEmpty() && !pattern.startsWith('/')) {
        refuse(pattern, "does not begin with a slash");
    }
    std::vector<BwaRestSegment> segments;
    for (const QByteArray& text : pattern.mid(1).split('/')) {
        segments.push_back(segmentOf(text, pattern));
    }
    checkTogether(segments, pattern);
    return segments;
}

bool BwaRestPattern::fits(BwaRestKind kind, QStringView text)
{
    switch (kind) {
    case BwaRestKind::Number:
        return number(text).has_value();
    case BwaRestKind::Uuid:
        return isUuid(text);
    default:
        return !text.isEmpty();
    }
}

std::optional<qint64> BwaRestPattern::number(QStringView text)
{
    const bool isNegative = text.startsWith(QLatin1Char('-'));
    const quint64 most =
        static_cast<quint64>(std::numeric_limits<qint64>::max()) + (isNegative ? 1 : 0);
    const qsizetype begin = isNegative ? 1 : 0;
    quint64 number = 0;
    for (qsizetype position = begin; position < text.size(); ++position) {
        const unsigned int digit = text.at(position).unicode() - static_cast<unsigned int>('0');
        if (digit > 9 || number > (most - digit) / 10) {
            return std::nullopt;
        }
        number = 10 * number + digit;
    }
    const bool hasOtherForm = text.mid(begin).startsWith(QLatin1Char('0')) && text.size() > 1;
    if (begin == text.size() || hasOtherForm) {
        return std::nullopt;
    }
    return static_cast<qint64>(isNegative ? 0 - number : number);
}
