// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "Tasks.h"

constexpr int mostBodyBytes = 64 * 1024;

//! [login]
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

void addLogin(BwaRestGroup& group, BwaRestSessions& sessions)
{
    group.post("/session", loginFields,
               [&sessions](const BwaRestCall&, const Login& login) -> BwaRestReply {
                   if (!isRight(login)) {
                       return BwaRestProblem(403, "Name or password is wrong");
                   }
                   return sessions.login(login.user, {"editor"});
               });
    group.put("/session", [&sessions](const BwaRestCall& call) { return sessions.renew(call); });
    group.remove("/session",
                 [&sessions](const BwaRestCall& call) { return sessions.logout(call); });
}
//! [login]

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);

    //! [main]
    BwaRestSessions sessions("tasks");
    Tasks tasks; // both outlive the service, whose handlers use them
    BwaRestService api;
    api.limit(mostBodyBytes);
    addLogin(api, sessions);
    tasks.addTo(api.group("").needs(sessions, "editor"));
    //! [main]

    return BwaRestServer({{"/api", &api}}).accessLog().run(QString::fromLatin1(argv[1]));
}
