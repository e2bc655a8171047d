// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef REQUESTFILE_H
#define REQUESTFILE_H

#include <string>

/**
 * Reads an HTTP request and returns it as the FastCGI records that a web server makes of it.
 *
 * The file holds the request line, the header lines, an empty line and the body, all with bare
 * line feeds. Content-Length is added. The script name is the first segment of the path.
 * An application that is a script is told its @a scriptFile; otherwise it is empty. With @a keep
 * the records ask the application to leave the connection open.
 *
 * Throws std::runtime_error when there is no such file, or no request in it.
 */
std::string fcgiRecordsOf(const std::string& requestFile, const std::string& scriptFile, bool keep);

#endif
