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

/** What a place of a path may hold. */
enum class BwaRestKind {
    Literal, /**< This text. */
    Text,    /**< {name}: one segment, not empty. */
    Number,  /**< {name:int}: decimal digits behind a "-" or not, within 64 bits. */
    Uuid,    /**< {name:uuid}: 8-4-4-4-12 hexadecimal digits. */
    Rest     /**< {name...}: all that follows, with its slashes, not empty. */
};

/** One place of a pattern. */
struct BwaRestSegment {
    BwaRestKind kind;
    QString text;    // of a literal
    QByteArray name; // of a parameter
};

/** Patterns of paths, such as "/devices/{id:int}/log". */
namespace BwaRestPattern {

/**
 * The places between the slashes; an empty pattern is "/".
 * @throws std::logic_error with @a pattern in its text when it is none
 */
std::vector<BwaRestSegment> segmentsOf(const QByteArray& pattern);
/** Whether @a text is of @a kind, which is not that of literals. */
bool fits(BwaRestKind kind, QStringView text);
/** What a {name:int} holds; nothing when it is none. */
std::optional<qint64> number(QStringView text);

} // namespace BwaRestPattern

#endif
