// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWARESTROUTE_H
#define BWARESTROUTE_H

#include "rest/BwaRestGlobal.h"
#include "rest/BwaRestReply.h"

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QVariant>

#include <functional>

class BwaRestCall;
class BwaRestGroup;
class BwaRestSchema;

/**
 * A route: a method, a pattern of paths, and their handler. BwaRestGroup::get() and its like return
 * one.
 */
class BWA_REST_EXPORT BwaRestRoute
{
    Q_DISABLE_COPY(BwaRestRoute)

public:
    /** Answers a call; what it throws becomes the reply. */
    using Handler = std::function<BwaRestReply(const BwaRestCall&)>;

    /** Internal: for groups, which own their routes. */
    BwaRestRoute(const BwaRestGroup* group, const QByteArray& method, const QByteArray& pattern,
                 const Handler& handler);
    ~BwaRestRoute();

    /** Sets what the route is for, in one line; for BwaRestService::describe(). */
    BwaRestRoute& says(const QString& summary);
    /** Sets the fields of the body, or of the query of a GET; for BwaRestService::describe(). */
    BwaRestRoute& takes(const BwaRestSchema& body);
    /** Sets the fields of the body of a reply with @a status; for BwaRestService::describe(). */
    BwaRestRoute& gives(const BwaRestSchema& reply, int status = 200);

    /** The method, such as "GET". */
    QByteArray method() const { return m_method; }
    /** The pattern, after the prefixes of its groups, in UTF-8. */
    QByteArray pattern() const { return m_pattern; }
    /** What says() has set; null before. */
    QString summary() const { return m_summary; }
    /** The JSON Schema of what takes() has set; empty before. */
    QVariantMap taken() const { return m_taken; }
    /** The JSON Schemas of what gives() has set, by their status. */
    QMap<int, QVariantMap> given() const { return m_given; }
    /** The group that it was added to. */
    const BwaRestGroup* group() const { return m_group; }
    /** The handler. */
    const Handler& handler() const { return m_handler; }

private:
    const BwaRestGroup* m_group; // not owned; owns this
    QByteArray m_method;
    QByteArray m_pattern;
    Handler m_handler;
    QString m_summary;
    QVariantMap m_taken;
    QMap<int, QVariantMap> m_given;
};

#endif
