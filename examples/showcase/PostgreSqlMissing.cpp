// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "PostgreSqlConnection.h"

#include <stdexcept>

// For builds without libpq.
std::unique_ptr<DatabaseConnection> connectToPostgreSql(const QByteArray& /*address*/)
{
    throw std::runtime_error("cannot open the database: this program was built without PostgreSQL");
}
