// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAHTTPREDIRECTHEADER_H
#define BWAHTTPREDIRECTHEADER_H

#include "http/BwaAbstractHttpHeader.h"

#include <QString>

/** A header block that sends the client to another place. */
class BWA_EXPORT BwaHttpRedirectHeader : public BwaAbstractHttpHeader
{
public:
    /** Redirects to @a location and leaves the status to the web server. */
    explicit BwaHttpRedirectHeader(const QString& location);
    /** Redirects with the status 301 when @a permanent is true, with 302 otherwise. */
    BwaHttpRedirectHeader(const QString& location, bool permanent);
    ~BwaHttpRedirectHeader() override;

    void render(std::ostream& stream) const override;

    /** The place; it is written unchanged. */
    QString location() const { return m_location; }
    /** 301, 302, or -1 when no status line is written. */
    short statusCode() const { return m_statusCode; }

private:
    QString m_location;
    short m_statusCode;
};

#endif
