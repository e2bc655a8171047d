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

/** A method, a pattern of paths, and the handler of both; get() and others of groups return it. */
class BWA_REST_EXPORT BwaRestRoute
{
    Q_DISABLE_COPY(BwaRestRoute)

public:
    /** Answers a call; what it throws becomes the reply. */
    using Handler = std::function<BwaRestReply(const BwaRestCall&)>;

    /** For groups, which own their routes. */
    BwaRestRoute(const BwaRestGroup* group, const QByteArray& method, const QByteArray& pattern,
                 const Handler& handler);
    ~BwaRestRoute();

    /** What it is for, in one line; for the description of the service. */
    BwaRestRoute& says(const QString& summary);
    /** The fields of the body, or of the query of a GET; for the description, too. */
    BwaRestRoute& takes(const BwaRestSchema& body);
    /** The fields of what a reply with @a status holds; for the description, too. */
    BwaRestRoute& gives(const BwaRestSchema& reply, int status = 200);

    /** Such as "GET". */
    QByteArray method() const { return m_method; }
    /** With the prefixes of its groups, in UTF-8. */
    QByteArray pattern() const { return m_pattern; }
    /** What says() was told; null before. */
    QString summary() const { return m_summary; }
    /** The JSON Schema of what takes() was told; empty before. */
    QVariantMap taken() const { return m_taken; }
    /** By their status, the JSON Schemas of what gives() was told. */
    QMap<int, QVariantMap> given() const { return m_given; }
    /** The group that it was added to. */
    const BwaRestGroup* group() const { return m_group; }
    /** What answers. */
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
