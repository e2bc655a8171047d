// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWEBAPILIBINFORMATION_H
#define BWEBAPILIBINFORMATION_H

#include "BwaGlobal.h"

#include <QDateTime>
#include <QString>

/** Tells which build of the library an application runs on. */
class BWA_EXPORT BWebApiLibInformation
{
public:
    /** "Brindo Web API". */
    static QString libraryName();
    /** The version, for example "1.0.1". */
    static QString libraryVersion();
    /** When the library was compiled, in the local time of the machine that compiled it. */
    static QDateTime libraryDateTime();
};

#endif
