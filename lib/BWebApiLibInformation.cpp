// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "BWebApiLibInformation.h"

#include <QLocale>

namespace {

// The compiler writes "Jan  5 2026", with two blanks before a day below 10, for which Qt needs
// another format. Its month names are English in every locale.
QDateTime compilationDateTime()
{
    const QString text = QString::fromLatin1("%1 %2").arg(QString::fromLatin1(__DATE__),
                                                          QString::fromLatin1(__TIME__));
    const QLocale english(QLocale::English);
    const QDateTime dateTime = english.toDateTime(text, QString::fromLatin1("MMM d yyyy hh:mm:ss"));
    return dateTime.isValid()
        ? dateTime
        : english.toDateTime(text, QString::fromLatin1("MMM  d yyyy hh:mm:ss"));
}

} // namespace

QString BWebApiLibInformation::libraryName()
{
    return QString::fromLatin1("Brindo Web API");
}

QString BWebApiLibInformation::libraryVersion()
{
    return QString::fromLatin1("1.0.1");
}

QDateTime BWebApiLibInformation::libraryDateTime()
{
    // Parsing can fail when memory is short; then the next call parses the date again.
    static const QDateTime dateTime = compilationDateTime();
    return dateTime.isValid() ? dateTime : compilationDateTime();
}
