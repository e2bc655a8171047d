// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAURLENCODING_P_H
#define BWAURLENCODING_P_H

#include <QByteArray>
#include <QHash>
#include <QString>

/** The format application/x-www-form-urlencoded; BwaCgiRequest documents its rules. */
namespace BwaUrlEncoding {

/** @a text with each "+" and each escape decoded; null when it is empty. */
QString decoded(const QString& text);

/** The variables of @a text. */
QMultiHash<QString, QString> variables(const QString& text);

/**
 * The variables of @a latin1, which ends at its first NUL. Move a long text here, so that its
 * memory is freed while it is decoded.
 */
QMultiHash<QString, QString> variables(QByteArray latin1);

} // namespace BwaUrlEncoding

#endif
