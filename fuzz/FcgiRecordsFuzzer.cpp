// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// Sends arbitrary bytes to the listener's socket: the next good request must be answered. Lengths
// of parameters are kept below 8 MiB, because libfcgi ends the process when it gets no memory for
// an announced length, and may get none for two of 2 GiB.

#include "Fuzzing.h"
#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiListener.h"
#include "fcgi/BwaFcgiRequest.h"
#include "support/Application.h"
#include "support/FcgiClient.h"
#include "support/FunctionService.h"

#include <QEventLoop>
#include <QSocketNotifier>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>

#include <sys/socket.h>

namespace {

/** Reads the body, if there is one, and answers "answered". */
void readAndAnswer(BwaFcgiRequest* request)
{
    request->cgiRequest()->processBodyContent();
    request->out() << "Content-Type: text/plain\n\nanswered";
    delete request;
}

/** A listener that is serving, and clients that send it bytes. */
class Server
{
public:
    Server()
        : m_listener({{QStringLiteral("/good"), &m_service}})
        , m_path(m_folder.filePath(QStringLiteral("socket")).toLatin1())
    {
        QObject::connect(&m_listener, &BwaFcgiListener::listeningError, [] { std::abort(); });
        m_listener.listen(QString::fromLatin1(m_path));
    }

    void take(const QByteArray& bytes)
    {
        FcgiClient client(m_path);
        sendSome(client, bytes);
        client.shutDownSending();
        expectGoodAnswer();
    }

private:
    // The listener may have closed the connection already.
    static void sendSome(const FcgiClient& client, const QByteArray& bytes)
    {
        ::send(client.descriptor(), bytes.constData(), static_cast<std::size_t>(bytes.size()),
               MSG_NOSIGNAL | MSG_DONTWAIT);
    }

    void expectGoodAnswer()
    {
        FcgiClient client(m_path);
        client.sendRequest({{"SCRIPT_NAME", "/good"}});
        client.shutDownSending();
        serveUntilReadable(client.descriptor());
        EXPECT_EQ(client.readReply().out, "Content-Type: text/plain\n\nanswered");
    }

    static void serveUntilReadable(int descriptor)
    {
        QEventLoop loop;
        const QSocketNotifier answer(descriptor, QSocketNotifier::Read);
        QObject::connect(&answer, SIGNAL(activated(int)), &loop, SLOT(quit()));
        loop.exec();
    }

    Application m_application;
    QTemporaryDir m_folder;
    FunctionService m_service{readAndAnswer};
    BwaFcgiListener m_listener;
    QByteArray m_path;
};

// A length that is not small takes four bytes, of which the first has its highest bit set.
QByteArray withSmallLengths(QByteArray bytes)
{
    const auto lowered = [](char byte) {
        return static_cast<char>(quint8(byte) > 0x80 ? byte & 0x7f : byte);
    };
    std::transform(bytes.begin(), bytes.end(), bytes.begin(), lowered);
    return bytes;
}

} // namespace

void fuzz(const QByteArray& input)
{
    static Server server;
    server.take(withSmallLengths(input));
}
