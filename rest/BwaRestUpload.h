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

/** What has been uploaded: a part of a form (RFC 7578), or a whole body of another media type. */
struct BwaRestPart {
    QString name;        /**< The field's; null for a whole body. */
    QString fileName;    /**< The client's, never to be used as a path; null for other fields. */
    QString contentType; /**< As sent; empty when it was not. */
    QString path;        /**< The file that holds the content; null without toFolder(). */
    QByteArray value;    /**< The content of a field that is no file. */
    qint64 size = 0;     /**< Bytes of the content. */
};

/**
 * Takes bodies piece by piece, however large they are, while other requests are answered.
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
 * Each turn of the event loop takes 64 KiB at most. Files of a refused or broken upload, and those
 * that done() leaves where they are, are deleted. What a function of the application throws becomes
 * the reply, as in a handler. To be used in the listener's thread.
 */
class BWA_REST_EXPORT BwaRestUpload
{
public:
    /** Takes a piece of a file, or of a whole body; none is empty. */
    using Piece = std::function<void(const BwaRestPart&, const QByteArray&)>;
    /** Answers when all has come. */
    using Done = std::function<BwaRestReply(const BwaRestCall&, const QList<BwaRestPart>&)>;

    /**
     * A body of more than @a mostBytes, or with more than @a mostParts parts, is refused with 413;
     * limits of groups do not count. So is a field that is no file and has more than 64 KiB.
     * @throws std::logic_error when @a mostBytes is negative
     */
    explicit BwaRestUpload(qint64 mostBytes, int mostParts = 16);
    ~BwaRestUpload();
    BwaRestUpload(const BwaRestUpload&) = default;
    BwaRestUpload& operator=(const BwaRestUpload&) = default;

    /** Writes each file to a new file of its own in @a folder, which only this user may read. */
    BwaRestUpload& toFolder(const QString& folder);
    /** Has @a piece called with the content of files as it comes: for digests and progress. */
    BwaRestUpload& data(const Piece& piece);
    /**
     * Has @a function answer; without, the reply is 204. The files are deleted when it returns: it
     * renames those that are to stay.
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
