// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAREDISTLS_P_H
#define BWAREDISTLS_P_H

#include "redis/BwaRedisSettings.h"

#include <QByteArray>

#include <memory>

#include <openssl/ssl.h>

/** The TLS of one connection, between two buffers: it never touches the socket. */
class BwaRedisTls
{
public:
    /** @a name must be in the certificate of the server; if it is an IP address, as one. */
    BwaRedisTls(SSL_CTX* context, const QByteArray& name);

    /** Begins, or continues, with what is to be sent in @a wire. */
    bool shakeHands(QByteArray* wire);
    /** Encrypts @a plain to the end of @a wire, at once or when the handshake is over. */
    void send(const QByteArray& plain, QByteArray* wire);
    /**
     * Decrypts @a received to the end of @a plain; what is to be sent goes to the end of @a wire.
     * False if the connection is of no use: see failure().
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
    QByteArray m_waiting; // for the end of the handshake
};

/** What the connections share: whom to trust, and the own certificate. */
class BwaRedisTlsContext
{
public:
    explicit BwaRedisTlsContext(const BwaRedisSettings& settings);

    bool isEncrypted() const { return m_isEncrypted; }
    /** Begins with the server at the IP address @a host, empty at a path. Null on failure(). */
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
