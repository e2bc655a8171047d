// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAHTTPSTATUSHEADER_H
#define BWAHTTPSTATUSHEADER_H

#include "http/BwaAbstractHttpHeader.h"

#include <QString>

/** A header block that starts with a "Status:" line (RFC 3875, section 6.3.3). */
class BWA_EXPORT BwaHttpStatusHeader : public virtual BwaAbstractHttpHeader
{
public:
    /** A header block of any status; neither code nor phrase is checked. */
    BwaHttpStatusHeader(unsigned short statusCode, const QString& reasonPhrase);

    // Settled: the destructor comes second, here and in the virtual table.
    void render(std::ostream& stream) const override;
    ~BwaHttpStatusHeader() override;

    /** The code of the status line. */
    unsigned short statusCode() const { return m_statusCode; }
    /** The text after the code of the status line. */
    QString reasonPhrase() const { return m_reasonPhrase; }

protected:
    /** Writes the status line only. */
    void renderStatus(std::ostream& stream) const;

private:
    unsigned short m_statusCode;
    QString m_reasonPhrase;
};

#endif
