// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "Headers.h"
#include "Routes.h"
#include "cgi/BwaCgiEnvironment.h"

#include <QCryptographicHash>

namespace {

constexpr qint64 mostBytes = qint64{16} * 1024 * 1024;
constexpr int mostParts = 220; // fields and files

/** The digests of the files of one upload, in their order, as their pieces come. */
class Digests
{
public:
    void add(const BwaRestPart& part, const QByteArray& piece)
    {
        if (part.size == piece.size()) { // the first of this file
            m_hashes.push_back(std::make_unique<QCryptographicHash>(QCryptographicHash::Sha256));
        }
        m_hashes.back()->addData(piece);
    }

    // Of the next file. An empty one has no pieces.
    QString next(const BwaRestPart& part)
    {
        return part.size == 0 ? QCryptographicHash::hash({}, QCryptographicHash::Sha256).toHex()
                              : m_hashes.at(m_next++)->result().toHex();
    }

private:
    std::vector<std::unique_ptr<QCryptographicHash>> m_hashes; // of files with content
    std::size_t m_next = 0;
};

BwaRestReply shown(const QList<BwaRestPart>& parts, Digests& digests)
{
    QVariantList fields;
    QVariantList files;
    for (const BwaRestPart& part : parts) {
        if (part.fileName.isNull()) {
            fields.append(
                QVariantMap{{"name", part.name}, {"value", QString::fromUtf8(part.value)}});
        } else {
            files.append(QVariantMap{{"field", part.name},
                                     {"name", part.fileName},
                                     {"sha256", digests.next(part)},
                                     {"size", part.size},
                                     {"type", part.contentType}});
        }
    }
    return guarded(QVariantMap{{"fields", fields}, {"files", files}});
}

BwaRestReply receive(const BwaRestCall& call)
{
    const auto type = BwaCgiEnvironment::parseContentType(call.environment().contentType()).first;
    if (type.compare("multipart/form-data", Qt::CaseInsensitive) != 0) {
        throw BwaRestProblem(415, "The body is to be a form with files, multipart/form-data");
    }
    const auto digests = std::make_shared<Digests>();
    BwaRestUpload upload(mostBytes, mostParts);
    upload.data(
        [digests](const BwaRestPart& part, const QByteArray& piece) { digests->add(part, piece); });
    upload.done([digests](const BwaRestCall&, const QList<BwaRestPart>& parts) {
        return shown(parts, *digests);
    });
    return call.upload(upload);
}

} // namespace

void addUpload(BwaRestGroup& api)
{
    api.post("/upload", receive).says("Measures files, 16 MiB of them at most, and keeps none");
}
