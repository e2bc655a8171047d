// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "redis/BwaRedisTls_p.h"

#include <QFile>

#include <openssl/err.h>
#include <openssl/x509v3.h>

namespace {

QString errorText()
{
    char text[256];
    ERR_error_string_n(ERR_get_error(), text, sizeof(text));
    return QString::fromLocal8Bit(text);
}

} // namespace

BwaRedisTls::BwaRedisTls(SSL_CTX* context, const QByteArray& name)
    : m_ssl(SSL_new(context))
    , m_input(BIO_new(BIO_s_mem()))
    , m_output(BIO_new(BIO_s_mem()))
{
    SSL_set_bio(m_ssl.get(), m_input, m_output);
    SSL_set_connect_state(m_ssl.get());
    X509_VERIFY_PARAM* const expected = SSL_get0_param(m_ssl.get());
    if (X509_VERIFY_PARAM_set1_ip_asc(expected, name.constData()) != 1) {
        X509_VERIFY_PARAM_set1_host(expected, name.constData(), 0);
        SSL_set_tlsext_host_name(m_ssl.get(), name.constData());
    }
}

bool BwaRedisTls::shakeHands(QByteArray* wire)
{
    ERR_clear_error(); // or an earlier error in this thread would count for this connection
    const bool isFine = !isFatal(SSL_do_handshake(m_ssl.get()));
    flush(wire);
    return isFine;
}

void BwaRedisTls::send(const QByteArray& plain, QByteArray* wire)
{
    m_waiting += plain;
    if (SSL_is_init_finished(m_ssl.get()) && !m_waiting.isEmpty()) {
        SSL_write(m_ssl.get(), m_waiting.constData(), m_waiting.size()); // to memory: takes all
        m_waiting.clear();
        flush(wire);
    }
}

bool BwaRedisTls::receive(const QByteArray& received, QByteArray* plain, QByteArray* wire)
{
    BIO_write(m_input, received.constData(), received.size());
    if (!SSL_is_init_finished(m_ssl.get()) && !shakeHands(wire)) {
        return false;
    }
    ERR_clear_error();
    send(QByteArray(), wire);
    char bytes[16384];
    int count = 0;
    while ((count = SSL_read(m_ssl.get(), bytes, sizeof(bytes))) > 0) {
        plain->append(bytes, count);
    }
    return !isFatal(count);
}

QString BwaRedisTls::failure() const
{
    const long result = SSL_get_verify_result(m_ssl.get());
    return result == X509_V_OK ? errorText()
                               : QString::fromLatin1(X509_verify_cert_error_string(result));
}

bool BwaRedisTls::isFatal(int result) const
{
    return result <= 0 && SSL_get_error(m_ssl.get(), result) != SSL_ERROR_WANT_READ;
}

void BwaRedisTls::flush(QByteArray* wire)
{
    char bytes[16384];
    int count = 0;
    while ((count = BIO_read(m_output, bytes, sizeof(bytes))) > 0) {
        wire->append(bytes, count);
    }
}

BwaRedisTlsContext::BwaRedisTlsContext(const BwaRedisSettings& settings)
    : m_isEncrypted(settings.isEncrypted)
    , m_name(settings.certificateName.toUtf8())
{
    if (m_isEncrypted) {
        ERR_clear_error();
        m_context.reset(SSL_CTX_new(TLS_client_method()));
        if (!setUp(settings)) {
            m_failure = errorText();
        }
    }
}

bool BwaRedisTlsContext::setUp(const BwaRedisSettings& settings)
{
    const QByteArray authorities = QFile::encodeName(settings.authorityFile);
    const QByteArray certificate = QFile::encodeName(settings.certificateFile);
    const QByteArray key = QFile::encodeName(settings.keyFile);
    SSL_CTX* const context = m_context.get();
    SSL_CTX_set_verify(context, SSL_VERIFY_PEER, nullptr);
    const int trusted = authorities.isEmpty()
        ? SSL_CTX_set_default_verify_paths(context)
        : SSL_CTX_load_verify_locations(context, authorities.constData(), nullptr);
    if (trusted != 1 || SSL_CTX_set_min_proto_version(context, TLS1_2_VERSION) != 1) {
        return false;
    }
    return certificate.isEmpty() ||
        (SSL_CTX_use_certificate_chain_file(context, certificate.constData()) == 1 &&
         SSL_CTX_use_PrivateKey_file(context, key.constData(), SSL_FILETYPE_PEM) == 1);
}

std::unique_ptr<BwaRedisTls> BwaRedisTlsContext::begin(const QByteArray& host,
                                                       QByteArray* wire) const
{
    const QByteArray name = m_name.isEmpty() ? host : m_name;
    if (!m_failure.isNull() || name.isEmpty()) {
        return nullptr;
    }
    auto tls = std::make_unique<BwaRedisTls>(m_context.get(), name);
    return tls->shakeHands(wire) ? std::move(tls) : nullptr;
}
