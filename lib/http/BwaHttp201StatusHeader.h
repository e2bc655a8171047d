// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAHTTP201STATUSHEADER_H
#define BWAHTTP201STATUSHEADER_H

#include "http/BwaHttpStatusContentHeader.h"

/**
 * The header block of a reply to the creation of something: 201 Created.
 *
 * The line of a location has two colons, as in "Location:: /notes/7", because existing clients rely
 * on them. A web server passes it on with the value ": /notes/7", which no other client can follow.
 * For other clients, leave the location out and derive a header block of your own from
 * BwaHttpStatusContentHeader that writes the line, as examples/howto/Headers.cpp does.
 */
class BWA_EXPORT BwaHttp201StatusHeader : public BwaHttpStatusContentHeader
{
public:
    /** With a null @a location there is no location line; an empty one gives an empty value. */
    explicit BwaHttp201StatusHeader(const QString& contentType,
                                    const QString& location = QString());

    // Settled: the destructor comes second, here and in the virtual table.
    void render(std::ostream& stream) const override;
    ~BwaHttp201StatusHeader() override;

    /** Where the new thing is found; null when none is written. */
    QString location() const { return m_location; }

private:
    QString m_location;
};

#endif
