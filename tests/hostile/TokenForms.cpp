// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "fcgi/BwaFcgiRequest.h"
#include "hostile/Forms.h"
#include "hostile/Measuring.h"
#include "sessions/BwaCookiesFcgiSessionIdentifier.h"
#include "sessions/BwaSessionTokenFcgiSessionIdentifier.h"
#include "sessions/BwaWebSession.h"
#include "support/TwoSessions.h"
#include "testing/BwaTestRequest.h"

#include <QByteArray>
#include <QUuid>

namespace {

// The token of credentials with other digits, of letters where there are letters: reading a text
// may take its time by what the client has sent, comparing it may not by what the session has.
constexpr char firstWrong[] = "{bbcdef01-2345-4678-9abc-def012345678}";
constexpr char lastWrong[] = "{abcdef01-2345-4678-9abc-def012345679}";
constexpr char allWrong[] = "{bcdefa10-3254-5769-8bcd-efa103254769}";

// Whether any of so many look-ups finds a session.
template <typename Identifier>
bool findsSession(Identifier& identifier, BwaFcgiRequest* request, int count)
{
    bool isFound = false;
    for (int i = 0; i < count; ++i) {
        isFound = identifier.session(request) || isFound;
    }
    return isFound;
}

// A first look-up prepares what is made only once; the others are counted.
template <typename Identifier>
void measureLookUps(Identifier& identifier, const BwaTestRequest& request, int count)
{
    request.sendTo([&identifier, count](BwaFcgiRequest* received) {
        identifier.session(received);
        measure([&] { return !findsSession(identifier, received, count); });
        delete received;
    });
}

template <const char* Token>
void lookUpCookies(int count)
{
    TwoSessions sessions;
    BwaCookiesFcgiSessionIdentifier identifier(&sessions.manager, QStringLiteral("id"),
                                               QStringLiteral("token"));
    BwaTestRequest request("GET");
    request.setHeader("Cookie", "id=" + credentials::id + "; token=" + Token);
    measureLookUps(identifier, request, count);
}

template <const char* Token>
void lookUpAuthorization(int count)
{
    TwoSessions sessions;
    BwaSessionTokenFcgiSessionIdentifier identifier(&sessions.manager, QStringLiteral("realm"));
    BwaTestRequest request("GET");
    request.setHeader("Authorization", "SESSION-TOKEN " + credentials::id + ":" + Token);
    measureLookUps(identifier, request, count);
}

// What the checks must notice: a comparison that ends at the first difference.
template <const char* Token>
void compareCarelessly(int count)
{
    const QUuid token(QString::fromLatin1(credentials::token));
    const QUuid presented(QString::fromLatin1(Token));
    measure([&] {
        int equal = 0;
        for (int i = 0; i < count; ++i) {
            equal += token == presented ? 1 : 0;
        }
        return equal == 0;
    });
}

} // namespace

QList<Form> tokenForms()
{
    return {
        {"tokens", "cookies-first-byte-wrong", lookUpCookies<firstWrong>},
        {"tokens", "cookies-last-byte-wrong", lookUpCookies<lastWrong>},
        {"tokens", "cookies-all-bytes-wrong", lookUpCookies<allWrong>},
        {"tokens", "authorization-first-byte-wrong", lookUpAuthorization<firstWrong>},
        {"tokens", "authorization-last-byte-wrong", lookUpAuthorization<lastWrong>},
        {"tokens", "authorization-all-bytes-wrong", lookUpAuthorization<allWrong>},
        {"control", "careless-first-byte-wrong", compareCarelessly<firstWrong>},
        {"control", "careless-last-byte-wrong", compareCarelessly<lastWrong>},
        {"control", "careless-all-bytes-wrong", compareCarelessly<allWrong>},
    };
}
