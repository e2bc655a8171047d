// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWATESTEXCHANGE_P_H
#define BWATESTEXCHANGE_P_H

#include <QByteArray>
#include <QList>
#include <QVector>

#include <fcgiapp.h>

#include <functional>
#include <memory>

/**
 * The web server's side of one request, in memory. The object exists at least until the request has
 * been finished.
 */
class BwaTestExchange
{
    Q_DISABLE_COPY(BwaTestExchange)

public:
    /**
     * A request with these variables, each "NAME=value", and this body.
     * @throws std::runtime_error when the process has no descriptors left
     */
    static std::shared_ptr<BwaTestExchange> begin(const QList<QByteArray>& variables,
                                                  const QByteArray& body);

    /** The request, made by plain new; the caller owns it. */
    FCGX_Request* request() { return m_request; }
    /** Whether the request has been finished. */
    bool isComplete() const { return !m_self; }
    /** Calls @a action when the request is finished. Replaces the action that was set before. */
    void whenComplete(const std::function<void()>& action) { m_whenComplete = action; }

    QByteArray out() const { return m_out.bytes; }
    QByteArray err() const { return m_err.bytes; }

private:
    // Collects what is written on one stream.
    struct Sink {
        BwaTestExchange* exchange = nullptr; // not owned
        QByteArray bytes;
        unsigned char buffer[4096] = {};
    };

    BwaTestExchange(const QList<QByteArray>& variables, const QByteArray& body);
    void redirectInput();
    void redirectOutput(FCGX_Stream* stream, Sink* sink);
    void complete();
    static void takeWritten(FCGX_Stream* stream, int doClose);

    QList<QByteArray> m_variables;
    QVector<char*> m_entries; // where each of m_variables begins, and a null at the end
    QByteArray m_body;
    Sink m_out;
    Sink m_err;
    FCGX_Request* m_request;                 // not owned
    std::shared_ptr<BwaTestExchange> m_self; // keeps this object alive; null once complete
    std::function<void()> m_whenComplete;
};

#endif
