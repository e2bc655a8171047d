// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "Firmware.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>

#include <stdexcept>

namespace {

constexpr qint64 mostBytes = qint64{300} * 1024 * 1024;  // of an image
constexpr qint64 progressStep = qint64{4} * 1024 * 1024; // bytes between two events
constexpr int mostImages = 8;

} // namespace

// Removes incomplete uploads, which an earlier process left when it was killed.
Firmware::Firmware(const QString& folder, BwaRestEvents& events)
    : m_folder(folder)
    , m_events(events)
{
    QDir(folder + "/incoming").removeRecursively();
    if (!QDir(folder).mkpath("incoming")) {
        throw std::runtime_error("cannot write to the folder " + folder.toStdString());
    }
}

void Firmware::addTo(BwaRestGroup& readers, BwaRestGroup& operators)
{
    readers.get("/firmware", [this](const BwaRestCall&) {
        return BwaRestReply(QVariantMap{{"digests", digests()}});
    });
    operators.post("/upload", [this](const BwaRestCall& call) { return receive(call); })
        .says("Takes an image; with the query sha256=DIGEST only one that has it");
    operators.remove("/firmware/{digest}",
                     [this](const BwaRestCall& call) { return remove(call.text("digest")); });
}

BwaRestReply Firmware::receive(const BwaRestCall& call)
{
    const auto hash = std::make_shared<QCryptographicHash>(QCryptographicHash::Sha256);
    const QVariantMap about = {{"upload", ++m_lastUpload}, {"user", call.session()->user}};
    const QString expected = call.query("sha256").value(0).toLower();
    BwaRestUpload upload(mostBytes, 1);
    upload.toFolder(m_folder + "/incoming");
    upload.data([this, hash, about](const BwaRestPart& part, const QByteArray& piece) {
        hash->addData(piece);
        if (part.size / progressStep > (part.size - piece.size()) / progressStep) {
            QVariantMap progress = about;
            progress.insert("received", part.size);
            m_events.send(progress, "upload");
        }
    });
    upload.done([this, hash, expected](const BwaRestCall&, const QList<BwaRestPart>& parts) {
        const QString digest = hash->result().toHex();
        if (!expected.isEmpty() && expected != digest) {
            throw BwaRestProblem(422, "The image has another digest");
        }
        return keep(parts, digest);
    });
    return call.upload(upload);
}

BwaRestReply Firmware::keep(const QList<BwaRestPart>& parts, const QString& digest)
{
    if (parts.isEmpty() || parts.first().path.isNull() || parts.first().size == 0) {
        throw BwaRestProblem(422, "There is no image");
    }
    const QStringList kept = digests();
    if (!kept.contains(digest)) {
        if (kept.size() >= mostImages) {
            throw BwaRestProblem(507, "There are too many images: remove one");
        }
        if (!QFile::rename(parts.first().path, m_folder + '/' + digest)) {
            throw std::runtime_error("cannot rename an image");
        }
    }
    const QVariantMap json = {{"sha256", digest}, {"size", parts.first().size}};
    m_events.send(json, "firmware");
    return BwaRestReply::created("/firmware/" + digest, json);
}

// Paths are made only of names that this class has given, never of texts from clients.
BwaRestReply Firmware::remove(const QString& digest) const
{
    if (!digests().contains(digest) || !QFile::remove(m_folder + '/' + digest)) {
        throw BwaRestProblem(404, "There is no such image");
    }
    return BwaRestReply::empty();
}

QStringList Firmware::digests() const
{
    return QDir(m_folder).entryList({QString(64, '?')}, QDir::Files, QDir::Name);
}
