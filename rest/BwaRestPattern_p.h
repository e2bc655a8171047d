// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWARESTPATTERN_P_H
#define BWARESTPATTERN_P_H

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringView>

#include <optional>
#include <vector>

/** What a segment of a path may be. */
enum class BwaRestKind {
    Literal, /**< This text. */
    Text,    /**< {name}: one segment, not empty. */
    Number,  /**< {name:int}: decimal digits, with or without a "-" before them, within 64 bits. */
    Uuid,    /**< {name:uuid}: 8-4-4-4-12 hexadecimal digits. */
    Rest     /**< {name...}: all segments that follow, with the slashes between them, not empty. */
};

/** One segment of a pattern. */
struct BwaRestSegment {
    BwaRestKind kind;
    QString text;    // of a literal
    QByteArray name; // of a parameter
};

/** Patterns of paths, such as "/devices/{id:int}/log". */
namespace BwaRestPattern {

/**
 * The segments of @a pattern; an empty pattern is "/".
 * @throws std::logic_error, with @a pattern in its text, when it is invalid
 */
std::vector<BwaRestSegment> segmentsOf(const QByteArray& pattern);
/** Whether a parameter of @a kind matches @a text. @a kind is not Literal. */
bool fits(BwaRestKind kind, QStringView text);
/** The number that @a text is for {name:int}; nothing when it is none. */
std::optional<qint64> number(QStringView text);

} // namespace BwaRestPattern

#endif
