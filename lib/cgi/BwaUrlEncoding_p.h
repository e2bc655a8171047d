// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAURLENCODING_P_H
#define BWAURLENCODING_P_H

#include <QByteArray>
#include <QHash>
#include <QString>

// The format application/x-www-form-urlencoded; BwaCgiRequest tells its rules.

/** @a text with its "+" and escapes decoded; null when it is empty. */
QString urlDecoded(const QString& text);

/** The variables of @a text. */
QMultiHash<QString, QString> urlEncodedVariables(const QString& text);

/** The variables of @a latin1, which ends at its first NUL; moved here, it is soon let go. */
QMultiHash<QString, QString> urlEncodedVariables(QByteArray latin1);

#endif
