// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAHTTPCONTENTHEADER_H
#define BWAHTTPCONTENTHEADER_H

#include "http/BwaAbstractHttpHeader.h"

#include <QString>

/** A header block that announces the type of the body. */
class BWA_EXPORT BwaHttpContentHeader : public virtual BwaAbstractHttpHeader
{
public:
    /** @a contentType is the whole value, parameters included. */
    explicit BwaHttpContentHeader(const QString& contentType);

    // Settled: the destructor comes second, here and in the virtual table.
    void render(std::ostream& stream) const override;
    ~BwaHttpContentHeader() override;

    /** The whole value, parameters included. */
    QString contentType() const { return m_contentType; }

protected:
    /** Writes the content type line only. */
    void renderContentType(std::ostream& stream) const;
    /** @a mediaType with @a charset as its parameter; null leaves it out, empty stays empty. */
    static QString withCharset(const char* mediaType, const QString& charset);

private:
    QString m_contentType;
};

#endif
