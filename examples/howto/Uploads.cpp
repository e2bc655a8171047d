// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "rest/BwaRestProblem.h"
#include "rest/BwaRestService.h"
#include "rest/BwaRestUpload.h"
#include "testing/BwaTestRequest.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QUuid>

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>

namespace {

class Images
{
public:
    explicit Images(const QString& folder)
        : m_folder(folder)
    {
        QDir(folder).mkdir(QStringLiteral("incoming"));
        //! [folder]
        // Both folders are on one file system, so renaming copies nothing.
        BwaRestUpload images(qint64{300} * 1024 * 1024); // bytes
        images.toFolder(m_folder + QStringLiteral("/incoming"))
            .done([this](const BwaRestCall&, const QList<BwaRestPart>& parts) {
                return keep(parts);
            });
        service.post("/images", [images](const BwaRestCall& call) { return call.upload(images); });
        //! [folder]
        addDigest();
    }

    BwaRestService service;
    bool isBroken = false;

private:
    //! [keep]
    BwaRestReply keep(const QList<BwaRestPart>& parts) const
    {
        QVariantList names;
        for (const BwaRestPart& part : parts) {
            if (part.path.isNull()) {
                continue; // a field that is no file: part.value
            }
            const QString name = newName(); // never the client's
            if (!QFile::rename(part.path, m_folder + QLatin1Char('/') + name)) {
                throw BwaRestProblem(503, QLatin1String("The image cannot be kept"));
            }
            names.append(name);
        }
        return BwaRestReply(names, 201);
    }
    //! [keep]

    QString newName() const
    {
        if (isBroken) {
            throw std::runtime_error("a secret of ours");
        }
        return QUuid::createUuid().toString(QUuid::WithoutBraces);
    }

    void addDigest()
    {
        //! [data]
        service.put("/digest", [](const BwaRestCall& call) {
            const auto hash = std::make_shared<QCryptographicHash>(QCryptographicHash::Sha256);
            return call.upload(BwaRestUpload(qint64{300} * 1024 * 1024)
                                   .data([hash](const BwaRestPart&, const QByteArray& piece) {
                                       hash->addData(piece);
                                   })
                                   .done([hash](const BwaRestCall&, const QList<BwaRestPart>&) {
                                       return BwaRestReply::bytes(hash->result().toHex(),
                                                                  "text/plain");
                                   }));
        });
        //! [data]
    }

    QString m_folder;
};

class HowToUploads : public testing::Test
{
protected:
    // The names of all files, those that are coming included.
    QStringList files() const
    {
        return QDir(folder.path()).entryList(QDir::Files) +
            QDir(folder.path() + QStringLiteral("/incoming")).entryList(QDir::Files);
    }

    static BwaTestRequest imageRequest(const QByteArray& fileName)
    {
        BwaTestRequest request("POST", "/images");
        request.addField("title", "Paris");
        request.addFile("image", fileName, "image/png", "content");
        return request;
    }

    int argc = 1;
    char name[5] = "test";
    char* argv[2] = {name, nullptr};
    QCoreApplication application = {argc, argv};
    QTemporaryDir folder;
    Images images{folder.path()};
};

} // namespace

TEST_F(HowToUploads, GivenAnImageKeepsItUnderANewName)
{
    const BwaTestReply reply = imageRequest("../../etc/passwd").sendTo(images.service);

    EXPECT_EQ(reply.statusCode, 201);
    EXPECT_EQ(files().size(), 1);
    EXPECT_EQ(reply.body, "[\"" + files().value(0).toUtf8() + "\"]");
    EXPECT_FALSE(files().value(0).contains(QStringLiteral("passwd")));
}

TEST_F(HowToUploads, GivenPiecesMakesTheirDigest)
{
    BwaTestRequest request("PUT", "/digest");
    request.setBody("image/png", QByteArray(200000, 'x'));

    EXPECT_EQ(
        request.sendTo(images.service).body,
        QCryptographicHash::hash(QByteArray(200000, 'x'), QCryptographicHash::Sha256).toHex());
}

TEST_F(HowToUploads, WhenMoreIsAnnouncedThanMayComeRefusesIt)
{
    BwaTestRequest request = imageRequest("a");
    request.setHeader("Content-Length", "5368709120");

    EXPECT_EQ(request.sendTo(images.service).statusCode, 413);
    EXPECT_EQ(files(), QStringList());
}

TEST_F(HowToUploads, WhenItIsCutOffKeepsNothing)
{
    BwaTestRequest request("POST", "/images");
    request.setBody("multipart/form-data; boundary=b",
                    "--b\r\nContent-Disposition: form-data; name=a; filename=b\r\n\r\ncont");

    EXPECT_EQ(request.sendTo(images.service).statusCode, 400);
    EXPECT_EQ(files(), QStringList());
}

TEST_F(HowToUploads, WhenKeepingThrowsKeepsNothing)
{
    images.isBroken = true;

    const BwaTestReply reply = imageRequest("a").sendTo(images.service);

    EXPECT_EQ(reply.body, R"({"status":500,"title":"Internal Server Error"})");
    EXPECT_EQ(files(), QStringList());
}
