// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "redis/RedisTest.h"
#include "support/FreePort.h"
#include "support/QtPrinters.h"

#include <QFile>

#include <gmock/gmock.h>

namespace {

// A server with a certificate of its own, which is the authority as well, for 127.0.0.1 and
// redis.example. It wants the same from its clients.
class BwaRedisTlsTest : public RedisTest
{
protected:
    BwaRedisTlsTest()
    {
        settings.isEncrypted = true;
        settings.authorityFile = certificate();
        settings.certificateFile = certificate();
        settings.keyFile = key();
    }

    QString certificate() const { return m_folder.filePath(QStringLiteral("certificate.pem")); }
    QString key() const { return m_folder.filePath(QStringLiteral("key.pem")); }

    QStringList options()
    {
        QProcess openssl;
        openssl.start(QStringLiteral("openssl"),
                      QStringLiteral("req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes "
                                     "-subj /CN=redis -addext "
                                     "subjectAltName=IP:127.0.0.1,DNS:redis.example -out %1 "
                                     "-keyout %2")
                          .arg(certificate(), key())
                          .split(QLatin1Char(' ')));
        EXPECT_TRUE(openssl.waitForFinished());
        EXPECT_EQ(openssl.exitCode(), 0) << openssl.readAllStandardError().constData();
        return QStringLiteral("--tls-port %1 --tls-cert-file %2 --tls-key-file %3 "
                              "--tls-ca-cert-file %2")
            .arg(QString::number(m_port), certificate(), key())
            .split(QLatin1Char(' '));
    }

    QString failure() const
    {
        const MessageRecorder recorder;
        BwaRedisSessions sessions(settings);
        EXPECT_EQ(sessions.create(ann), nullptr);
        return warnings(recorder).join(QLatin1Char('\n'));
    }

private:
    QTemporaryDir m_folder;
    quint16 m_port = freePort();

protected:
    RedisServer server{options()};
    QString address = QStringLiteral("127.0.0.1:%1").arg(m_port);
    BwaRedisSettings settings = settingsFor(QStringList{address});
};

} // namespace

TEST_F(BwaRedisTlsTest, GivenTheAddressInTheCertificateConnects)
{
    BwaRedisSessions sessions(settings);

    EXPECT_NE(find(sessions, Credentials(sessions.create(ann))), nullptr);
}

TEST_F(BwaRedisTlsTest, GivenTheNameInTheCertificateConnects)
{
    settings.certificateName = QStringLiteral("redis.example");
    BwaRedisSessions sessions(settings);

    EXPECT_NE(find(sessions, Credentials(sessions.create(ann))), nullptr);
}

TEST_F(BwaRedisTlsTest, GivenDataOfManyRecordsKeepsIt)
{
    BwaRedisSessions sessions(settings);
    const QVariantMap data = {{QStringLiteral("a"), QString(100000, QLatin1Char('x'))}};
    const Credentials ours(sessions.create(ann, {}, data));

    ASSERT_NE(find(sessions, ours), nullptr);
    EXPECT_EQ(find(sessions, ours)->data(), data);
}

TEST_F(BwaRedisTlsTest, GivenAnotherNameFails)
{
    settings.certificateName = QStringLiteral("other.example");

    EXPECT_EQ(failure(),
              QStringLiteral("Redis does not answer: %1: hostname mismatch").arg(address));
}

TEST_F(BwaRedisTlsTest, GivenAnUntrustedCertificateFails)
{
    settings.authorityFile.clear();

    EXPECT_EQ(failure(),
              QStringLiteral("Redis does not answer: %1: self-signed certificate").arg(address));
}

TEST_F(BwaRedisTlsTest, GivenNoOwnCertificateFails)
{
    settings.certificateFile.clear();

    EXPECT_THAT(failure().toStdString(), testing::HasSubstr("certificate required"));
}

TEST_F(BwaRedisTlsTest, GivenAFileThatIsMissingFails)
{
    settings.authorityFile = QStringLiteral("/nowhere");

    EXPECT_THAT(failure().toStdString(), testing::HasSubstr("o such file"));
}

TEST_F(BwaRedisTlsTest, GivenAServerWithoutTlsFails)
{
    const RedisServer plain;
    settings.addresses = QStringList{plain.path()};
    settings.certificateName = QStringLiteral("redis.example");
    settings.timeout = 200;

    EXPECT_THAT(failure().toStdString(), testing::HasSubstr("Redis does not answer: "));
}
