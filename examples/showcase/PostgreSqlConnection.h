// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef POSTGRESQLCONNECTION_H
#define POSTGRESQLCONNECTION_H

#include "DatabaseConnection.h"

#include <memory>

/**
 * A new connection to a database of PostgreSQL. @a address is what libpq takes: a URI, as
 * "postgresql://app@10.0.0.2/notes", or keywords with values, as "host=/run/postgresql
 * dbname=notes".
 *
 * A connection that has been lost while nothing was asked is noticed before the next statement,
 * which then goes over a new one. A statement during which the connection is lost fails, and is not
 * sent again: it may have been carried out.
 *
 * Without a connection, statements throw a BwaRestProblem with 503, and the log gets one line, as
 * it does when there is one again. When the first connection cannot be made, that is a
 * std::runtime_error.
 *
 * Statements fail after 5 seconds, waits for locks after one, attempts to connect after two. After
 * an attempt that has failed the next one is made once as much time has passed as it took; until
 * then statements fail at once.
 */
std::unique_ptr<DatabaseConnection> connectToPostgreSql(const QByteArray& address);

#endif
