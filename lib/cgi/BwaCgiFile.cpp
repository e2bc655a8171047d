// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "cgi/BwaCgiFile.h"

#include <ostream>

BwaCgiFile::BwaCgiFile()
    : BwaCgiFile(QString(), QString(), QByteArray())
{
}

BwaCgiFile::BwaCgiFile(const QString& fileName, const QString& contentType, const QByteArray& data)
    : m_fileName(fileName)
    , m_contentType(contentType.isEmpty() ? QString::fromLatin1("text/plain") : contentType)
    , m_data(data)
{
}

void BwaCgiFile::writeToStream(std::ostream& stream) const
{
    stream.write(m_data.constData(), m_data.size());
}
