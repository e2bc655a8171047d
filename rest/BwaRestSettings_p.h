// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWARESTSETTINGS_P_H
#define BWARESTSETTINGS_P_H

#include "rest/BwaRestOrigins_p.h"
#include "rest/BwaRestPool_p.h"

#include <QByteArray>

#include <memory>

class BwaRestHeldCalls;

/** The settings of a service, which its calls share. */
struct BwaRestSettings {
    const char* fileHeader = "X-Sendfile";
    BwaRestOrigins origins;
    std::shared_ptr<BwaRestPool> pool = std::make_shared<BwaRestPool>(nullptr, 64);
    BwaRestHeldCalls* calls = nullptr; // not owned
};

#endif
