// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef FIRMWARE_H
#define FIRMWARE_H

#include <bwebapi/rest.h>

/** Firmware images: files in a folder, each named by its SHA-256 digest. */
class Firmware
{
public:
    /** Tells @a events of the progress of uploads; not owned, must outlive this. */
    Firmware(const QString& folder, BwaRestEvents& events);

    /** Adds the routes; only @a operators may upload and remove. */
    void addTo(BwaRestGroup& readers, BwaRestGroup& operators);

private:
    BwaRestReply receive(const BwaRestCall& call);
    BwaRestReply keep(const QList<BwaRestPart>& parts, const QString& digest);
    BwaRestReply remove(const QString& digest) const;
    QStringList digests() const;

    QString m_folder;
    BwaRestEvents& m_events;
    int m_lastUpload = 0;
};

#endif
