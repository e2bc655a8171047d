// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef SERVICEREPLIES_H
#define SERVICEREPLIES_H

#include "support/TestReplies.h"

/** The variables of a request to the script "/app". */
inline CgiVariables requestTo(const QByteArray& pathInfo)
{
    return {{"SCRIPT_NAME", "/app"}, {"PATH_INFO", pathInfo}};
}

#endif
