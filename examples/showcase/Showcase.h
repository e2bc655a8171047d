// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef SHOWCASE_H
#define SHOWCASE_H

#include "Accounts.h"
#include "Database.h"
#include "Diagnostics.h"
#include "Login.h"
#include "NoteStore.h"
#include "Notes.h"
#include "Sessions.h"

#include <QThreadPool>

#include <bwebapi/rest.h>

/** What an operator sets. */
struct ShowcaseSettings {
    QString scriptName = "/api"; // what the web server calls the API; empty: paths begin with /api
    QString database;
    QString files;    // the folder that the web server may send from
    QString renderer; // the folder of swagger-ui-dist, for a page that shows the API; may be empty
    SessionSettings sessions;
    bool hasDemoAccounts = false;
    bool hasDiagnostics = false;
};

/** The whole API without its listener, so that the tests can have it, too. */
class Showcase
{
    Q_DISABLE_COPY(Showcase)

public:
    /** @throws std::runtime_error when something cannot be used */
    explicit Showcase(const ShowcaseSettings& settings);

    BwaRestService& service() { return m_service; }
    Diagnostics& diagnostics() { return m_diagnostics; }

private:
    void addRoutes(BwaRestGroup& api, const ShowcaseSettings& settings);
    void addDescription(BwaRestGroup& api, const QString& scriptName);

    // Each outlives what stands below it.
    Database m_database;
    Accounts m_accounts;
    NoteStore m_store;
    Sessions m_sessions;
    Login m_login;
    Notes m_notes;
    Diagnostics m_diagnostics;
    QThreadPool m_pool;
    BwaRestService m_service;
};

#endif
