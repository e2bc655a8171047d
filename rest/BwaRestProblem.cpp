// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "rest/BwaRestProblem.h"

#include "rest/BwaRestStatus_p.h"

namespace {

bool isError(int status)
{
    return status >= 400 && status <= 599;
}

} // namespace

BwaRestProblem::BwaRestProblem(int status, const QString& detail)
    : m_status(isError(status) ? status : 500)
    , m_what(BwaRestStatus::line(m_status))
{
    m_members.insert(QStringLiteral("status"), m_status);
    m_members.insert(QStringLiteral("title"), QString::fromLatin1(m_what.mid(4)));
    if (!detail.isEmpty()) {
        m_members.insert(QStringLiteral("detail"), detail);
        m_what += ": " + detail.toUtf8();
    }
    if (m_status != status) {
        m_complaint = QString::fromLatin1("A problem cannot have the status %1").arg(status);
    }
}

BwaRestProblem::~BwaRestProblem() = default;

BwaRestProblem& BwaRestProblem::with(const QString& member, const QVariant& value)
{
    if (member != QLatin1String("status")) {
        m_members.insert(member, value);
    }
    return *this;
}

BwaRestProblem& BwaRestProblem::header(const QByteArray& name, const QByteArray& value)
{
    m_headers.append(qMakePair(name, value));
    return *this;
}
