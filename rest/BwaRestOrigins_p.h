// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWARESTORIGINS_P_H
#define BWARESTORIGINS_P_H

#include <QByteArray>
#include <QList>
#include <QStringList>

/** Which pages of other origins may read replies (the Fetch standard, CORS protocol). */
class BwaRestOrigins
{
public:
    /** None. */
    BwaRestOrigins();
    /**
     * These, each as in "https://example.org:8443", or all for "*".
     * @throws std::logic_error for "*" with @a credentials, which browsers refuse
     */
    BwaRestOrigins(const QStringList& origins, bool credentials);

    bool isEmpty() const { return m_origins.isEmpty(); }
    /** Whether @a origin is one of these, by its name: "*" names nobody. */
    bool names(const QByteArray& origin) const { return m_origins.contains(origin); }
    /**
     * The header lines of a reply to @a origin, which may be null, whose script is to see the
     * headers of these names.
     */
    QByteArray lines(const QByteArray& origin, const QList<QByteArray>& exposed) const;
    /**
     * Those that a preflight reply has besides: a request may have one of @a methods and the
     * headers that @a requested, the value of Access-Control-Request-Headers, names.
     */
    QByteArray preflightLines(const QByteArray& origin, const QByteArray& methods,
                              const QByteArray& requested) const;

private:
    bool allows(const QByteArray& origin) const;

    QList<QByteArray> m_origins;
    bool m_credentials;
};

#endif
