// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWACGIFILE_H
#define BWACGIFILE_H

#include "BwaGlobal.h"

#include <QByteArray>
#include <QString>

#include <iosfwd>

/** One uploaded file. */
class BWA_EXPORT BwaCgiFile
{
public:
    /** Null name and data; the content type is "text/plain". */
    BwaCgiFile();
    /** An empty @a contentType becomes "text/plain" (RFC 7578, section 4.4). */
    BwaCgiFile(const QString& fileName, const QString& contentType, const QByteArray& data);

    /** Writes the data unchanged. */
    void writeToStream(std::ostream& stream) const;

    /** The name that the client gave. Do not use it as a path: it may be "../../etc/passwd". */
    QString fileName() const { return m_fileName; }
    /** As the client sent it, or "text/plain"; never empty. */
    QString contentType() const { return m_contentType; }
    /** The content, byte for byte. */
    QByteArray data() const { return m_data; }

private:
    QString m_fileName;
    QString m_contentType;
    QByteArray m_data;
};

#endif
