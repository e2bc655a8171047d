// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "Showcase.h"

#include "Routes.h"

namespace {

constexpr int mostWaiting = 16; // logins
constexpr int mostBodyBytes = 64 * 1024;

} // namespace

Showcase::Showcase(const ShowcaseSettings& settings)
    : m_database(settings.database)
    , m_accounts(m_database)
    , m_store(m_database)
    , m_sessions(settings.sessions)
    , m_login(m_accounts, m_sessions)
    , m_notes(m_store)
{
    if (settings.hasDemoAccounts) { // known to everybody who has read this
        m_accounts.add("demo", "tea and biscuits");
        m_accounts.add("guest", "coffee and cake");
    }
    m_pool.setMaxThreadCount(1); // for passwords: each takes 64 MiB while it is checked
    m_service.setPool(&m_pool, mostWaiting);
    m_service.limit(mostBodyBytes);
    addRoutes(m_service.group(settings.scriptName.isEmpty() ? "/api" : ""), settings);
}

void Showcase::addRoutes(BwaRestGroup& api, const ShowcaseSettings& settings)
{
    m_login.addTo(api);
    m_sessions.addTo(api);
    m_notes.addTo(m_sessions.users(api));
    addEcho(api);
    addOrder(api);
    addUpload(api);
    addFiles(api, settings.files);
    addPages(api);
    addApiPage(api, settings.renderer);
    if (settings.hasDiagnostics) {
        m_diagnostics.addTo(api);
    }
    addDescription(api, settings.scriptName);
}

void Showcase::addDescription(BwaRestGroup& api, const QString& scriptName)
{
    api.get("/openapi.json",
            [this, scriptName](const BwaRestCall&) {
                QVariantMap document = m_service.describe("Showcase", "1.0");
                if (!scriptName.isEmpty()) {
                    document.insert("servers", QVariantList{QVariantMap{{"url", scriptName}}});
                }
                return BwaRestReply(document);
            })
        .says("This document");
}
