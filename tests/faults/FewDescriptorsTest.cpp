// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// Many more clients than descriptors, and each takes 50 ms to be answered.

#include "FaultFixture.h"
#include "support/QtPrinters.h"

#include <QDir>
#include <QProcess>

#include <algorithm>
#include <thread>

#include <poll.h>

namespace {

const int patience = 120000; // milliseconds; 500 clients take 25 s

/** The application for faults, which may open 64 descriptors. */
class FewDescriptors : public testing::Test
{
public:
    FewDescriptors()
    {
        m_application.setProcessChannelMode(QProcess::ForwardedChannels);
        m_application.start(QStringLiteral("sh"),
                            {QStringLiteral("-c"), QStringLiteral("ulimit -n 64; exec \"$@\""),
                             QStringLiteral("sh"), QStringLiteral(BWA_FAULT_APPLICATION),
                             m_folder.filePath(QStringLiteral("socket"))});
    }

    ~FewDescriptors() override
    {
        m_application.terminate();
        m_application.waitForFinished();
    }

protected:
    QByteArray answerTo(const QByteArray& pathInfo) const
    {
        FcgiClient client(m_folder.filePath(QStringLiteral("socket")).toLatin1());
        client.sendRequest({{"SCRIPT_NAME", "/api"}, {"PATH_INFO", pathInfo}});
        client.shutDownSending();
        pollfd entry = {client.descriptor(), POLLIN, 0};
        poll(&entry, 1, patience);
        return client.readReply().out;
    }

    // All at the same time.
    void expectAnswers(int clientCount, const QByteArray& pathInfo, const QByteArray& expected)
    {
        std::vector<std::thread> clients;
        clients.reserve(static_cast<std::size_t>(clientCount));
        for (int count = 0; count < clientCount; ++count) {
            clients.emplace_back([&] { EXPECT_EQ(answerTo(pathInfo), expected); });
        }
        for (std::thread& client : clients) {
            client.join();
        }
    }

    int descriptorsOfApplication() const
    {
        const QDir folder(QStringLiteral("/proc/%1/fd").arg(m_application.processId()));
        return static_cast<int>(folder.entryList(QDir::System | QDir::Files).size());
    }

    bool isAlive()
    {
        return !m_application.waitForFinished(0) && m_application.state() == QProcess::Running;
    }

private:
    QTemporaryDir m_folder;
    QProcess m_application;
};

} // namespace

TEST_F(FewDescriptors, EveryClientIsAnsweredAndServingGoesOn)
{
    const QByteArray header = "Content-Type: text/plain\n\n";
    ASSERT_EQ(answerTo("/now"), header + "at once\n");
    const int before = descriptorsOfApplication();
    ASSERT_GT(before, 0);

    expectAnswers(std::min(100 + faultRounds(), 500), "/slow", header + "slowly\n");

    EXPECT_LT(millisecondsOf([&] { EXPECT_EQ(answerTo("/now"), header + "at once\n"); }), 1000);
    EXPECT_TRUE(isAlive());
    // The connection of the first answer may not have been closed when they were counted.
    waitUntil([&] { return descriptorsOfApplication() <= before; });
}
