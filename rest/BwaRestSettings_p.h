// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWARESTSETTINGS_P_H
#define BWARESTSETTINGS_P_H

#include "rest/BwaRestOrigins_p.h"

#include <QByteArray>

/** What a service has been told about all its replies. */
struct BwaRestSettings {
    QByteArray fileHeader = "X-Sendfile";
    BwaRestOrigins origins;
};

#endif
