// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWARESTPROBLEM_H
#define BWARESTPROBLEM_H

#include "rest/BwaRestGlobal.h"

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QString>
#include <QVariant>

#include <exception>

/**
 * Why a call is refused, as application/problem+json (RFC 9457). A handler returns or throws it.
 *
 *     throw BwaRestProblem(404, QStringLiteral("There is no device 7"));
 *     return BwaRestProblem(503).header("Retry-After", "5");
 *     throw BwaRestProblem(409).with(QStringLiteral("type"), QStringLiteral("/errors/taken"))
 *                              .with(QStringLiteral("name"), name);
 *
 * The client sees the status, its reason phrase as the title, the detail and what with() added.
 */
class BWA_REST_EXPORT BwaRestProblem : public std::exception
{
public:
    /**
     * A @a status outside 400 to 599 becomes 500, which is logged. An empty @a detail is left out.
     */
    explicit BwaRestProblem(int status, const QString& detail = QString());
    ~BwaRestProblem() override;
    BwaRestProblem(const BwaRestProblem&) = default;
    BwaRestProblem& operator=(const BwaRestProblem&) = default;

    /**
     * Sets a member, which becomes JSON as in BwaRestReply. It replaces an earlier one of that
     * name; "status" cannot be replaced.
     */
    BwaRestProblem& with(const QString& member, const QVariant& value);
    /** Adds a header of the reply, as BwaRestReply::header() does. */
    BwaRestProblem& header(const QByteArray& name, const QByteArray& value);

    /** The status, from 400 to 599. */
    int status() const { return m_status; }
    /** The body of the reply. */
    QVariantMap members() const { return m_members; }
    /** Name and value of each header, in the order in which they were added. */
    QList<QPair<QByteArray, QByteArray>> headers() const { return m_headers; }
    /** What is wrong with the problem itself, for the log; null when nothing is. */
    QString complaint() const { return m_complaint; }
    /** Status, title and detail, in UTF-8. */
    const char* what() const noexcept override { return m_what.constData(); }

private:
    int m_status;
    QVariantMap m_members;
    QList<QPair<QByteArray, QByteArray>> m_headers;
    QString m_complaint;
    QByteArray m_what;
};

#endif
