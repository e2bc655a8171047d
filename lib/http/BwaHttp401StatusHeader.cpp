// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "http/BwaHttp401StatusHeader.h"

#include "BwaStringStreaming.h"

#include <ostream>

namespace {

// Settled: there is a comma before every parameter, also between the scheme and its first one.
QString challengeOf(const QString& scheme, const QMap<QString, QString>& parameters)
{
    QString challenge = scheme;
    for (auto parameter = parameters.constBegin(); parameter != parameters.constEnd();
         ++parameter) {
        challenge += QLatin1String(", ") + parameter.key() + QLatin1Char('=') +
            BwaAbstractHttpHeader::quotedString(parameter.value());
    }
    return challenge;
}

} // namespace

BwaHttp401StatusHeader::BwaHttp401StatusHeader(
    const QMap<QString, QMap<QString, QString>>& challenges)
    : BwaHttpStatusHeader(401, QString::fromLatin1("Unauthorized"))
{
    for (auto scheme = challenges.constBegin(); scheme != challenges.constEnd(); ++scheme) {
        if (scheme != challenges.constBegin()) {
            m_challenge += QLatin1String(", ");
        }
        m_challenge += challengeOf(scheme.key(), scheme.value());
    }
}

void BwaHttp401StatusHeader::render(std::ostream& stream) const
{
    renderStatus(stream);
    stream << "WWW-Authenticate: " << m_challenge << std::endl;
    renderCookies(stream);
    stream << std::endl;
}

BwaHttp401StatusHeader::~BwaHttp401StatusHeader() = default;
