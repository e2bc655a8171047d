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
    /** Allows no origin. */
    BwaRestOrigins();
    /**
     * Allows these origins, each as in "https://example.org:8443", or any for "*".
     * @throws std::logic_error for "*" with @a credentials, which browsers refuse
     */
    BwaRestOrigins(const QStringList& origins, bool credentials);

    bool isEmpty() const { return m_origins.isEmpty(); }
    /** Whether the list contains @a origin itself; "*" does not count. */
    bool names(const QByteArray& origin) const { return m_origins.contains(origin); }
    /**
     * The header lines of a reply to a page of @a origin, which may be null. Its scripts may read
     * the headers named in @a exposed.
     */
    QByteArray lines(const QByteArray& origin, const QList<QByteArray>& exposed) const;
    /**
     * The further lines of a preflight reply: a request may use @a methods, an Allow list, and the
     * headers in @a requested, the value of Access-Control-Request-Headers.
     */
    QByteArray preflightLines(const QByteArray& origin, const QByteArray& methods,
                              const QByteArray& requested) const;

private:
    bool allows(const QByteArray& origin) const;

    QList<QByteArray> m_origins;
    bool m_credentials;
};

#endif
