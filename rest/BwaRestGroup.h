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
 * Routes below a prefix, with the sessions, limits and hooks that they share.
 *
 *     BwaRestGroup& devices = api.group("/devices").limit(64 * 1024);
 *     devices.get("", listDevices);
 *     devices.get("/{id:int}", [&](const BwaRestCall& call) -> BwaRestReply {
 *         return store.device(call.number("id"));
 *     });
 *
 * A pattern is a path whose segments are texts or parameters. {name} matches any segment that is
 * not empty, {name:int} a decimal number of 64 bits without leading zeros, {name:uuid} 8-4-4-4-12
 * hexadecimal digits, and {name...}, at the end only, all segments that follow. A path that matches
 * no pattern is answered with 404. A text is tried before a parameter, in whatever order the routes
 * were added. Paths and patterns are compared byte by byte: "/devices/" is not "/devices". A
 * request for the service itself, without a path below it, has the path "/".
 *
 * An invalid pattern, two equal ones, and two kinds of parameters at the same place throw a
 * std::logic_error that names them. Add all routes before the first request.
 */
class BWA_REST_EXPORT BwaRestGroup
{
    Q_DISABLE_COPY(BwaRestGroup)

public:
    /** Answers a call; what it throws becomes the reply. */
    using Handler = BwaRestRoute::Handler;
    /**
     * Is called before the handler. When it returns a reply, that is sent and the handler is not
     * called.
     */
    using Hook = std::function<std::optional<BwaRestReply>(const BwaRestCall&)>;

    virtual ~BwaRestGroup();

    /** Answers GET, and HEAD without the body. @a pattern, in UTF-8, is appended to the prefix. */
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
     * The same for a handler that is called with the call and the T that @a query has read. The
     * fields become part of BwaRestService::describe().
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
     * For a handler that is called with the call and a function. The handler calls that function
     * with a T to change it as the body says: see BwaRestFields::patch().
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

    /** A group below this one, which owns it; @a prefix may contain parameters. */
    BwaRestGroup& group(const char* prefix);
    /**
     * Has @a hook called for each call of this group and those below; hooks of outer groups come
     * first.
     */
    BwaRestGroup& before(const Hook& hook);
    /**
     * Refuses calls of this group and those below: with 401 those without a session; with 403 those
     * whose session lacks @a role, unless @a role is empty, and writing calls from pages of another
     * origin, unless BwaRestService::allowOrigins() names that origin; with 503 those that present
     * a session while the store cannot be reached. When it is called several times, each call adds
     * a need. @a sessions is not owned.
     */
    BwaRestGroup& needs(const BwaRestSessions& sessions, const QString& role = QString());
    /**
     * Sets how many bytes a body may have, in this group and those below; 1 MiB unless set.
     * @throws std::logic_error when it is negative
     */
    BwaRestGroup& limit(qint64 bodySize);

    /** What limit() has set for this group or a group above, in bytes. */
    qint64 bodyLimit() const;

protected:
    /** Constructs the outermost group. */
    BwaRestGroup();

    /** All routes of the service. */
    const BwaRestRouter& router() const { return *m_router; }
    /** Calls the hooks, from the outermost group on, and returns the first reply. */
    std::optional<BwaRestReply> askHooks(const BwaRestCall& call) const;

    /** Checks the needs of this group and those above. @throws BwaRestProblem 401, 403, 503 */
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
    QByteArray m_prefix;                     // begins with those of the groups above
    std::shared_ptr<BwaRestRouter> m_router; // one for all groups
    std::vector<std::unique_ptr<BwaRestGroup>> m_groups;
    std::vector<Need> m_needs;
    std::vector<Hook> m_hooks;
    qint64 m_limit; // bytes; -1: as the parent's
};

#endif
