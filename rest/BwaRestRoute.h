// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWARESTROUTE_H
#define BWARESTROUTE_H

#include "rest/BwaRestGlobal.h"
#include "rest/BwaRestReply.h"

#include <QByteArray>
#include <QString>

#include <functional>

class BwaRestCall;
class BwaRestGroup;

/** A method and a pattern of paths with the handler of both; what a group's get() and others give.
 */
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

    /** Such as "GET". */
    QByteArray method() const { return m_method; }
    /** With the prefixes of its groups, in UTF-8. */
    QByteArray pattern() const { return m_pattern; }
    /** What says() was told; null before. */
    QString summary() const { return m_summary; }
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
};

#endif
