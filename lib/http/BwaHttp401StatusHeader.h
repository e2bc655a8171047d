// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAHTTP401STATUSHEADER_H
#define BWAHTTP401STATUSHEADER_H

#include "http/BwaHttpStatusHeader.h"

#include <QMap>

/**
 * The header block that asks a client to authenticate: 401 Unauthorized with its challenges.
 *
 * A comma stands before every parameter, also between the scheme and its first one, as in
 * "SESSION-TOKEN, realm=\"notes\"": programs rely on it. Clients that follow RFC 9110, section
 * 11.6.1, browsers among them, take such a scheme to have no parameters. For them give the
 * parameters as part of the scheme:
 *
 *     request->out() << BwaHttp401StatusHeader({{QStringLiteral("Basic realm=\"notes\""), {}}});
 */
class BWA_EXPORT BwaHttp401StatusHeader : public BwaHttpStatusHeader
{
public:
    /**
     * @param challenges the parameters of each authentication scheme, by scheme name; values are
     *        written as quoted strings, names as they stand
     */
    explicit BwaHttp401StatusHeader(const QMap<QString, QMap<QString, QString>>& challenges);

    void render(std::ostream& stream) const override;
    ~BwaHttp401StatusHeader() override;

    /** The value of the WWW-Authenticate line; null without a challenge. */
    QString challenge() const { return m_challenge; }

private:
    QString m_challenge;
};

#endif
