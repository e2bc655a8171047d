// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWARESTSTATUS_P_H
#define BWARESTSTATUS_P_H

#include <QByteArray>

/** The status codes of HTTP (RFC 9110, section 15). */
namespace BwaRestStatus {

/** "404 Not Found"; a status that has no registered phrase is named after its class. */
QByteArray line(int status);

} // namespace BwaRestStatus

#endif
