// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWARESTUPLOAD_H
#define BWARESTUPLOAD_H

#include "rest/BwaRestGlobal.h"
#include "rest/BwaRestReply.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <functional>

class BwaRestCall;

/** A part of an uploaded form (RFC 7578), or a whole body of another media type. */
struct BwaRestPart {
    QString name;        /**< The name of the field; null for a whole body. */
    QString fileName;    /**< The client's; do not use it as a path. Null for other fields. */
    QString contentType; /**< As sent; empty when it was not sent. */
    QString path;        /**< The file with the content; null without toFolder(). */
    QByteArray value;    /**< The content of a field that is not a file. */
    qint64 size = 0;     /**< The size of the content in bytes. */
};

/**
 * Receives bodies of any size, piece by piece, while other requests are answered.
 *
 *     BwaRestUpload images(300 * 1024 * 1024);
 *     images.toFolder("/srv/images/incoming").done(
 *         [](const BwaRestCall&, const QList<BwaRestPart>& parts) -> BwaRestReply {
 *             for (const BwaRestPart& part : parts) {
 *                 store(part); // renames part.path
 *             }
 *             return BwaRestReply::empty(201);
 *         });
 *     api.post("/images", [&](const BwaRestCall& call) { return call.upload(images); });
 *
 * Each turn of the event loop reads 64 KiB at most. The files are deleted when the upload is
 * refused or breaks off, and otherwise when done() has returned, unless it has renamed them. What a
 * function of the application throws becomes the reply, as in a handler. Use it in the listener's
 * thread.
 */
class BWA_REST_EXPORT BwaRestUpload
{
public:
    /** Called with each piece of a file or of a whole body; never with an empty one. */
    using Piece = std::function<void(const BwaRestPart&, const QByteArray&)>;
    /** Makes the reply when the whole body has arrived. */
    using Done = std::function<BwaRestReply(const BwaRestCall&, const QList<BwaRestPart>&)>;

    /**
     * Refuses with 413 a body of more than @a mostBytes, one with more than @a mostParts parts, and
     * a field of more than 64 KiB that is not a file. Limits of groups do not apply.
     * @throws std::logic_error when @a mostBytes is negative
     */
    explicit BwaRestUpload(qint64 mostBytes, int mostParts = 16);
    ~BwaRestUpload();
    BwaRestUpload(const BwaRestUpload&) = default;
    BwaRestUpload& operator=(const BwaRestUpload&) = default;

    /**
     * Writes each file into a new file in @a folder, which only the user of this process may read.
     */
    BwaRestUpload& toFolder(const QString& folder);
    /** Has @a piece called with the content of files as it arrives: for digests and progress. */
    BwaRestUpload& data(const Piece& piece);
    /**
     * Has @a function make the reply. Without this call it is 204. The files are deleted when the
     * function has returned, so it must rename those that are to stay.
     */
    BwaRestUpload& done(const Done& function);

private:
    friend class BwaRestReception;

    qint64 m_mostBytes;
    int m_mostParts;
    QString m_folder; // null: no files
    Piece m_data;     // may be empty
    Done m_done;      // may be empty
};

#endif
