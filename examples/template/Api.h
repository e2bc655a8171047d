// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef API_H
#define API_H

#include "services/BwaDispatcherFcgiService.h"

/** All services of this API, each under its path. */
class Api : public BwaDispatcherFcgiService
{
public:
    Api();
};

#endif
