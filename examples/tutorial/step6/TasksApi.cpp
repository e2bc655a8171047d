// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "TasksApi.h"

namespace {

constexpr int mostBodyBytes = 64 * 1024;

struct Login {
    QString user;
    QString password;
};

const auto loginFields =
    BwaRestFields<Login>().add("user", &Login::user).add("password", &Login::password);

// For the tutorial only: a real application keeps salted hashes.
bool isRight(const Login& login)
{
    return login.user == "ann" && login.password == "tea and biscuits";
}

} // namespace

//! [api]
TasksApi::TasksApi()
{
    m_service.limit(mostBodyBytes);
    addLogin();
    m_tasks.addTo(m_service.group("").needs(m_sessions, "editor"));
}
//! [api]

void TasksApi::addLogin()
{
    m_service.post("/session", loginFields,
                   [this](const BwaRestCall&, const Login& login) -> BwaRestReply {
                       if (!isRight(login)) {
                           return BwaRestProblem(403, "Name or password is wrong");
                       }
                       return m_sessions.login(login.user, {"editor"});
                   });
    m_service.put("/session", [this](const BwaRestCall& call) { return m_sessions.renew(call); });
    m_service.remove("/session",
                     [this](const BwaRestCall& call) { return m_sessions.logout(call); });
}
