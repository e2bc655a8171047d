// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWARESTSTATUS_P_H
#define BWARESTSTATUS_P_H

#include <QByteArray>

/** The status codes of HTTP (RFC 9110, section 15). */
namespace BwaRestStatus {

/**
 * The code and its phrase, such as "404 Not Found". A status without a registered phrase has that
 * of its class.
 */
QByteArray line(int status);

} // namespace BwaRestStatus

#endif
