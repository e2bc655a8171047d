// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAHTTPREPLYHEADER_H
#define BWAHTTPREPLYHEADER_H

#include "http/BwaAbstractHttpHeader.h"

#include <QString>
#include <QStringList>

/** A header block that starts with a protocol status line, such as "HTTP/1.1 200 OK". */
class BWA_EXPORT BwaHttpReplyHeader : public BwaAbstractHttpHeader
{
public:
    /** @a protocol is for example "HTTP/1.1"; nothing is checked. */
    BwaHttpReplyHeader(const QString& protocol, unsigned short statusCode,
                       const QString& reasonPhrase);
    ~BwaHttpReplyHeader() override;

    void render(std::ostream& stream) const override;

    /** Adds a line; earlier lines of the same name stay. */
    void addHeader(const QString& name, const QString& value);

    /** The protocol of the status line. */
    QString protocol() const { return m_protocol; }
    /** The code of the status line. */
    unsigned short statusCode() const { return m_statusCode; }
    /** The text after the code of the status line. */
    QString reasonPhrase() const { return m_reasonPhrase; }
    /** The added lines, without line ends, in the order of their addition. */
    QStringList headerLines() const { return m_headerLines; }

private:
    QString m_protocol;
    unsigned short m_statusCode;
    QString m_reasonPhrase;
    QStringList m_headerLines;
};

#endif
