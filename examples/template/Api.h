// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef API_H
#define API_H

#include <bwebapi/rest.h>

/** All routes of this API. */
class Api : public BwaRestService
{
public:
    Api();
};

#endif
