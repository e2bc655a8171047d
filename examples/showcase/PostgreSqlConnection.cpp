// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "PostgreSqlConnection.h"

#include "rest/BwaRestProblem.h"

#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QtDebug>

#include <stdexcept>
#include <vector>

#include <libpq-fe.h>
#include <poll.h>

namespace {

using Result = std::unique_ptr<PGresult, decltype(&PQclear)>;

QList<QVariantList> rowsOf(const PGresult* result)
{
    QList<QVariantList> rows;
    for (int row = 0; row < PQntuples(result); ++row) {
        QVariantList values;
        for (int column = 0; column < PQnfields(result); ++column) {
            values.append(QString::fromUtf8(PQgetvalue(result, row, column)));
        }
        rows.append(values);
    }
    return rows;
}

// PostgreSQL keeps no text with U+0000, and libpq would take it for the end.
QByteArray textOf(const QVariant& value)
{
    QByteArray utf8 = value.toString().toUtf8();
    if (utf8.contains('\0')) {
        throw std::runtime_error("database: PostgreSQL keeps no text with U+0000");
    }
    return utf8;
}

// The address comes last, so what it says counts.
PGconn* connect(const QByteArray& address)
{
    const char* const names[] = {"application_name", "client_encoding", "connect_timeout",
                                 "options",          "dbname",          nullptr};
    const char* const values[] = {
        "showcase",
        "UTF8",
        "2",
        "-c statement_timeout=5s -c lock_timeout=1s -c client_min_messages=warning",
        address.constData(),
        nullptr};
    return PQconnectdbParams(names, values, 1 /* take dbname apart */);
}

class PostgreSqlConnection : public DatabaseConnection
{
public:
    explicit PostgreSqlConnection(const QByteArray& address)
        : m_connection(connect(address), &PQfinish)
    {
        if (PQstatus(m_connection.get()) != CONNECTION_OK) {
            throw std::runtime_error("cannot open the database: " + message());
        }
    }

    QList<QVariantList> run(const char* sql, const QVariantList& values) override
    {
        connectAgainIfLost();
        const Result result = send(sql, values);
        const ExecStatusType status = PQresultStatus(result.get());
        if (status != PGRES_TUPLES_OK && status != PGRES_COMMAND_OK) {
            fail();
        }
        return rowsOf(result.get());
    }

    const char* idType() const override
    {
        return "BIGINT GENERATED ALWAYS AS IDENTITY PRIMARY KEY";
    }

    void lock(const QString& name) override
    {
        run("SELECT pg_advisory_lock(hashtextextended($1, 0))", {name});
        m_isLocked = true;
    }

    // Where this fails, the server ends the lock because the connection has ended.
    void unlock(const QString& name) override
    {
        send("SELECT pg_advisory_unlock(hashtextextended($1, 0))", {name});
        m_isLocked = false;
    }

private:
    Result send(const char* sql, const QVariantList& values)
    {
        std::vector<QByteArray> texts;
        std::vector<const char*> pointers;
        for (const QVariant& value : values) {
            texts.push_back(textOf(value));
            pointers.push_back(texts.back().constData());
        }
        return {PQexecParams(m_connection.get(), sql, static_cast<int>(pointers.size()), nullptr,
                             pointers.data(), nullptr, nullptr, 0 /* as text */),
                &PQclear};
    }

    // Reads what the server said meanwhile: a server that ends closes its connections.
    bool isLost()
    {
        pollfd input{PQsocket(m_connection.get()), POLLIN, 0};
        while (input.fd >= 0 && poll(&input, 1, 0) > 0 && PQconsumeInput(m_connection.get()) == 1) {
        }
        return PQstatus(m_connection.get()) != CONNECTION_OK;
    }

    // A lock is lost with the connection, so what needs it must not go on.
    void connectAgainIfLost()
    {
        if (!isLost()) {
            return;
        }
        if (m_isLocked || !m_pause.hasExpired()) {
            fail();
        }
        QElapsedTimer attempt;
        attempt.start();
        PQreset(m_connection.get());
        if (PQstatus(m_connection.get()) != CONNECTION_OK) {
            m_pause.setRemainingTime(attempt.elapsed());
            fail();
        }
        qWarning("The database answers again");
        m_isAway = false;
    }

    // A client may come back when there is a connection again, but not when the statement is wrong.
    [[noreturn]] void fail()
    {
        if (PQstatus(m_connection.get()) == CONNECTION_OK) {
            throw std::runtime_error("database: " + message());
        }
        if (!m_isAway) {
            qWarning("The database does not answer: %s", message().c_str());
            m_isAway = true;
        }
        throw BwaRestProblem(BwaRestProblem(503, QStringLiteral("The database cannot be reached"))
                                 .header("Retry-After", "1"));
    }

    std::string message() const
    {
        return QByteArray(PQerrorMessage(m_connection.get())).trimmed().toStdString();
    }

    std::unique_ptr<PGconn, decltype(&PQfinish)> m_connection;
    QDeadlineTimer m_pause{0}; // until then there is no other attempt to connect
    bool m_isLocked = false;
    bool m_isAway = false; // and the log says so
};

} // namespace

std::unique_ptr<DatabaseConnection> connectToPostgreSql(const QByteArray& address)
{
    return std::make_unique<PostgreSqlConnection>(address);
}
