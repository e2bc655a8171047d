// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// Adds routes and finds one. The input has a pattern a line and, after an empty line, a path. A
// literal model refuses the same patterns and finds the same route and parameters.

#include "Choices.h"
#include "Fuzzing.h"
#include "json/BwaJson.h"
#include "rest/BwaRestService.h"
#include "support/QtPrinters.h"
#include "testing/BwaTestRequest.h"

#include <QRegularExpression>

#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>
#include <vector>

namespace {

const std::size_t mostPatterns = 6;

struct Place {
    QString kind; // "", ":int", ":uuid" or "..." of a parameter; null: a literal
    QString text; // of a literal; the name of a parameter
};

using Pattern = std::vector<Place>;

bool isParameter(const Place& place)
{
    return !place.kind.isNull();
}

// The parsed pattern; nothing when it is invalid.
std::optional<Pattern> patternOf(const QByteArray& bytes)
{
    const QRegularExpression form(
        QStringLiteral("^\\{([A-Za-z0-9_]+)(:int|:uuid|\\.\\.\\.)?\\}\\z"));
    const QString text = QString::fromUtf8(bytes); // a good one begins with a slash
    QStringList names;
    Pattern pattern;
    for (const QString& place : text.mid(1).split(QLatin1Char('/'))) {
        const QRegularExpressionMatch match = form.match(place);
        if (match.hasMatch()) {
            pattern.push_back({QLatin1String("") + match.captured(2), match.captured(1)});
            names.append(match.captured(1));
        } else if (place.contains(QLatin1Char('{')) || place.contains(QLatin1Char('}'))) {
            return std::nullopt;
        } else {
            pattern.push_back({QString(), place});
        }
    }
    for (std::size_t i = 0; i + 1 < pattern.size(); ++i) {
        if (pattern[i].kind == QLatin1String("...")) {
            return std::nullopt;
        }
    }
    const bool isWell = (bytes.isEmpty() || bytes.startsWith('/')) && names.removeDuplicates() == 0;
    return isWell ? std::optional<Pattern>(pattern) : std::nullopt;
}

// Whether the two patterns cannot both be added: they match the same paths, or have different kinds
// of parameters at the same place.
bool areAtOdds(const Pattern& one, const Pattern& other)
{
    for (std::size_t i = 0; i < one.size() && i < other.size(); ++i) {
        if (isParameter(one[i]) != isParameter(other[i])) {
            return false;
        }
        if (isParameter(one[i]) && one[i].kind != other[i].kind) {
            return true;
        }
        if (!isParameter(one[i]) && one[i].text != other[i].text) {
            return false;
        }
    }
    return one.size() == other.size();
}

bool fits(const Place& place, const QString& text)
{
    const auto matches = [&text](const char* expression) {
        return QRegularExpression(QString::fromLatin1(expression)).match(text).hasMatch();
    };
    if (!isParameter(place)) {
        return place.text == text;
    }
    if (place.kind == QLatin1String(":int")) {
        bool ok = false;
        text.toLongLong(&ok);
        return ok && matches("^(0|-?[1-9][0-9]*)\\z");
    }
    if (place.kind == QLatin1String(":uuid")) {
        return matches("^[0-9a-fA-F]{8}(-[0-9a-fA-F]{4}){3}-[0-9a-fA-F]{12}\\z");
    }
    return !text.isEmpty();
}

// The texts of the parameters; nothing when the path does not match.
std::optional<QVariantList> matched(const Pattern& pattern, const QString& path)
{
    QStringList texts = path.mid(1).split(QLatin1Char('/'));
    const auto count = static_cast<BwaSize>(pattern.size());
    if (pattern.back().kind == QLatin1String("...") && texts.size() >= count) {
        const QString rest = texts.mid(count - 1).join(QLatin1Char('/'));
        texts = texts.mid(0, count - 1) << rest;
    }
    if (!path.startsWith(QLatin1Char('/')) || texts.size() != count) {
        return std::nullopt;
    }
    QVariantList parameters;
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        const QString text = texts.at(static_cast<BwaSize>(i));
        if (!fits(pattern[i], text)) {
            return std::nullopt;
        }
        if (isParameter(pattern[i])) {
            parameters.append(text);
        }
    }
    return parameters;
}

// Whether @a one is tried before @a other: at the first place where they differ, a literal wins.
bool winsOver(const Pattern& one, const Pattern& other)
{
    for (std::size_t i = 0; i < one.size() && i < other.size(); ++i) {
        if (isParameter(one[i]) != isParameter(other[i])) {
            return !isParameter(one[i]);
        }
    }
    return false;
}

// The body with which the model replies; null for 404.
QByteArray expected(const std::vector<Pattern>& patterns, const QString& path)
{
    const Pattern* winner = nullptr;
    for (const Pattern& pattern : patterns) {
        if (matched(pattern, path) && (!winner || winsOver(pattern, *winner))) {
            winner = &pattern;
        }
    }
    if (!winner) {
        return QByteArray();
    }
    const QVariantList parameters = *matched(*winner, path);
    return BwaJson::write(QVariantList{qlonglong(winner - patterns.data()), parameters});
}

bool isAdded(BwaRestService& service, const QByteArray& text, const std::optional<Pattern>& pattern,
             std::size_t index)
{
    try {
        service.get(text, [index, pattern](const BwaRestCall& call) -> BwaRestReply {
            QVariantList parameters;
            for (const Place& place : *pattern) {
                if (isParameter(place)) {
                    parameters.append(call.text(place.text.toUtf8()));
                }
            }
            return QVariantList{qlonglong(index), parameters};
        });
    } catch (const std::logic_error&) {
        return false;
    }
    return true;
}

// Adds a route for each pattern, up to the first one that is refused.
std::vector<Pattern> addAll(BwaRestService& service, Choices& choices)
{
    std::vector<Pattern> patterns;
    while (!choices.isAtEnd() && patterns.size() < mostPatterns) {
        const QByteArray text = choices.line().constData(); // a pattern ends at a NUL
        if (text.isEmpty() && !patterns.empty()) {
            break;
        }
        const std::optional<Pattern> pattern = patternOf(text);
        bool isWell = pattern.has_value();
        for (const Pattern& other : patterns) {
            isWell = isWell && !areAtOdds(*pattern, other);
        }
        EXPECT_EQ(isAdded(service, text, pattern, patterns.size()), isWell) << text.toStdString();
        if (!isWell) {
            break;
        }
        patterns.push_back(*pattern);
    }
    return patterns;
}

} // namespace

void fuzz(const QByteArray& input)
{
    Choices choices(input);
    BwaRestService service;
    const std::vector<Pattern> patterns = addAll(service, choices);
    const QByteArray path = choices.rest().constData(); // a variable ends at a NUL
    BwaTestRequest request("GET");
    request.setVariable("PATH_INFO", path);

    const BwaTestReply reply = request.sendTo(service);

    EXPECT_EQ(reply.errorText, "");
    const QString text = QString::fromUtf8(' ' + path).mid(1); // keeps a byte order mark
    if (text.toUtf8() != path) {
        EXPECT_EQ(reply.statusCode, 400);
        return;
    }
    const QByteArray body = expected(patterns, path.isEmpty() ? QStringLiteral("/") : text);
    EXPECT_EQ(reply.statusCode, body.isNull() ? 404 : 200);
    if (!body.isNull()) {
        EXPECT_EQ(reply.body, body);
    }
}
