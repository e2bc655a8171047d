// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWARESTGROUP_H
#define BWARESTGROUP_H

#include "rest/BwaRestCall.h"
#include "rest/BwaRestGlobal.h"
#include "rest/BwaRestReply.h"
#include "rest/BwaRestRoute.h"

#include <QByteArray>
#include <QString>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

class BwaRestExchange;
class BwaRestRouter;
class BwaRestSessions;
template <class T>
class BwaRestFields;

/**
 * Routes below a prefix, and what they need.
 *
 *     BwaRestGroup& devices = api.group("/devices").limit(64 * 1024);
 *     devices.get("", listDevices);
 *     devices.get("/{id:int}", [&](const BwaRestCall& call) -> BwaRestReply {
 *         return store.device(call.number("id"));
 *     });
 *
 * A pattern is a path whose places between slashes are texts or parameters: {name} takes one that
 * is not empty, {name:int} a decimal number of 64 bits without leading zeros, {name:uuid}
 * 8-4-4-4-12 hexadecimal digits, {name...} at the end all that follows. A path that fits no pattern
 * is answered with 404. A text wins over a parameter, in whatever order they were added. Paths and
 * patterns are compared byte by byte: "/devices/" is not "/devices". An empty path of the service
 * is "/".
 *
 * Patterns that are none, equal ones, and two kinds of parameters at one place, throw a
 * std::logic_error that names them. All routes are to be added before the first request.
 */
class BWA_REST_EXPORT BwaRestGroup
{
    Q_DISABLE_COPY(BwaRestGroup)

public:
    /** Answers a call; what it throws becomes the reply. */
    using Handler = BwaRestRoute::Handler;
    /** Looks at a call before its handler does; a reply is sent in the handler's place. */
    using Hook = std::function<std::optional<BwaRestReply>(const BwaRestCall&)>;

    virtual ~BwaRestGroup();

    /** Answers GET, and HEAD without the body. @a pattern is behind the prefix, in UTF-8. */
    BwaRestRoute& get(const char* pattern, const Handler& handler);
    /** Answers POST. */
    BwaRestRoute& post(const char* pattern, const Handler& handler);
    /** Answers PUT. */
    BwaRestRoute& put(const char* pattern, const Handler& handler);
    /** Answers PATCH. */
    BwaRestRoute& patch(const char* pattern, const Handler& handler);
    /** Answers DELETE. */
    BwaRestRoute& remove(const char* pattern, const Handler& handler);

    /**
     * The same for a handler that is given the struct that @a query reads: it is called with the
     * call and a T. What a route takes is in the description of the service.
     */
    template <class T, class F>
    BwaRestRoute& get(const char* pattern, const BwaRestFields<T>& query, const F& handler)
    {
        return get(pattern, reading(query, handler)).takes(query);
    }
    /** The same, of the body. */
    template <class T, class F>
    BwaRestRoute& post(const char* pattern, const BwaRestFields<T>& body, const F& handler)
    {
        return post(pattern, reading(body, handler)).takes(body);
    }
    /** The same, of the body. */
    template <class T, class F>
    BwaRestRoute& put(const char* pattern, const BwaRestFields<T>& body, const F& handler)
    {
        return put(pattern, reading(body, handler)).takes(body);
    }
    /**
     * For a handler that is called with the call and a function, which changes the T that it is
     * given as the body says: see BwaRestFields::patch().
     *
     *     api.patch("/devices/{id:int}", deviceFields, [&](const BwaRestCall& call, auto change) {
     *         Device& device = store.at(call.number("id"));
     *         change(device);
     *         return BwaRestReply(deviceFields.json(device));
     *     });
     */
    template <class T, class F>
    BwaRestRoute& patch(const char* pattern, const BwaRestFields<T>& body, const F& handler)
    {
        const auto answer = [body, handler](const BwaRestCall& call) -> BwaRestReply {
            return handler(call, [&body, &call](T& target) { body.patch(call, target); });
        };
        return patch(pattern, answer).takes(body);
    }

    /** A group below this one, which owns it; @a prefix may hold parameters. */
    BwaRestGroup& group(const char* prefix);
    /** Has @a hook called for each call of the group and those below; the outer ones first. */
    BwaRestGroup& before(const Hook& hook);
    /**
     * Refuses each call of the group and those below without a session (401), whose session has not
     * @a role, unless that is empty, and those that would write and come from a page of another
     * origin, unless BwaRestService::allowOrigins() names it (403). When the store of the sessions
     * cannot be reached, a call that presents one is refused as the store says (503). A further
     * need is checked, too. @a sessions is not owned.
     */
    BwaRestGroup& needs(const BwaRestSessions& sessions, const QString& role = QString());
    /**
     * How many bytes a body may have, here and in the groups below; 1 MiB unless set.
     * @throws std::logic_error when it is negative
     */
    BwaRestGroup& limit(qint64 bodySize);

    /** What limit() has set, here or above, in bytes. */
    qint64 bodyLimit() const;

protected:
    /** The outermost group. */
    BwaRestGroup();

    /** All routes of this and the groups above and below. */
    const BwaRestRouter& router() const { return *m_router; }
    /** What the first hook with a reply says, from the outermost group on. */
    std::optional<BwaRestReply> askHooks(const BwaRestCall& call) const;

    /** Checks what this and the groups above need. @throws BwaRestProblem 401, 403, 503 */
    void checkNeeds(BwaRestExchange* exchange) const;

private:
    friend class BwaRestService;

    struct Need {
        const BwaRestSessions* sessions; // not owned
        QString role;                    // empty: any
    };

    BwaRestGroup(BwaRestGroup* parent, const QByteArray& prefix);
    template <class T, class F>
    static Handler reading(const BwaRestFields<T>& fields, const F& handler)
    {
        return [fields, handler](const BwaRestCall& call) -> BwaRestReply {
            return handler(call, fields.read(call));
        };
    }
    BwaRestRoute& add(const char* method, const char* pattern, const Handler& handler);

    BwaRestGroup* m_parent;                  // not owned; owns this; null for the outermost
    QByteArray m_prefix;                     // with those of the groups above
    std::shared_ptr<BwaRestRouter> m_router; // one for all groups
    std::vector<std::unique_ptr<BwaRestGroup>> m_groups;
    std::vector<Need> m_needs;
    std::vector<Hook> m_hooks;
    qint64 m_limit; // bytes; -1: as the parent's
};

#endif
