// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAREDISTLS_P_H
#define BWAREDISTLS_P_H

#include "redis/BwaRedisSettings.h"

#include <QByteArray>

#include <memory>

#include <openssl/ssl.h>

/** The TLS of one connection. It works on buffers only; the caller reads and writes the socket. */
class BwaRedisTls
{
public:
    /** The server's certificate must contain @a name, as an IP address if it is one. */
    BwaRedisTls(SSL_CTX* context, const QByteArray& name);

    /**
     * Begins or continues the handshake. Appends bytes for the server to @a wire; false when it has
     * failed.
     */
    bool shakeHands(QByteArray* wire);
    /** Encrypts @a plain and appends it to @a wire: at once, or when the handshake is over. */
    void send(const QByteArray& plain, QByteArray* wire);
    /**
     * Decrypts @a received and appends it to @a plain. Appends bytes for the server to @a wire.
     * False when the connection cannot be used any more: see failure().
     */
    bool receive(const QByteArray& received, QByteArray* plain, QByteArray* wire);
    /** What has gone wrong. */
    QString failure() const;

private:
    struct Deleter {
        void operator()(SSL* ssl) const { SSL_free(ssl); }
    };

    bool isFatal(int result) const;
    void flush(QByteArray* wire);

    std::unique_ptr<SSL, Deleter> m_ssl;
    BIO* m_input;         // owned by m_ssl
    BIO* m_output;        // owned by m_ssl
    QByteArray m_waiting; // plain bytes to be sent after the handshake
};

/** What the connections share: the certificates to trust, and this client's certificate. */
class BwaRedisTlsContext
{
public:
    explicit BwaRedisTlsContext(const BwaRedisSettings& settings);

    bool isEncrypted() const { return m_isEncrypted; }
    /**
     * Begins TLS with the server at the IP address @a host, which is empty for a Unix socket. Null
     * when it cannot; failure() says why.
     */
    std::unique_ptr<BwaRedisTls> begin(const QByteArray& host, QByteArray* wire) const;
    /** Why the certificates cannot be used. */
    QString failure() const { return m_failure; }

private:
    struct Deleter {
        void operator()(SSL_CTX* context) const { SSL_CTX_free(context); }
    };

    bool setUp(const BwaRedisSettings& settings);

    bool m_isEncrypted;
    QByteArray m_name;
    QString m_failure;
    std::unique_ptr<SSL_CTX, Deleter> m_context; // null: not encrypted
};

#endif
