// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAHTTP401STATUSHEADER_H
#define BWAHTTP401STATUSHEADER_H

#include "http/BwaHttpStatusHeader.h"

#include <QMap>

/**
 * The header block that asks a client to authenticate: 401 Unauthorized with its challenges.
 *
 * There is a comma before every parameter, also between the scheme and its first one, as in
 * "SESSION-TOKEN, realm=\"notes\"", because existing clients rely on it. Clients that follow RFC
 * 9110, section 11.6.1, such as browsers, read this as a scheme without parameters. For them write
 * the parameters into the name of the scheme:
 *
 *     request->out() << BwaHttp401StatusHeader({{QStringLiteral("Basic realm=\"notes\""), {}}});
 */
class BWA_EXPORT BwaHttp401StatusHeader : public BwaHttpStatusHeader
{
public:
    /**
     * @param challenges the parameters of each authentication scheme, by the scheme's name; values
     *        are written as quoted strings, names unchanged
     */
    explicit BwaHttp401StatusHeader(const QMap<QString, QMap<QString, QString>>& challenges);

    // Settled: the destructor comes second, here and in the virtual table.
    void render(std::ostream& stream) const override;
    ~BwaHttp401StatusHeader() override;

    /** The value of the WWW-Authenticate line; null without a challenge. */
    QString challenge() const { return m_challenge; }

private:
    QString m_challenge;
};

#endif
