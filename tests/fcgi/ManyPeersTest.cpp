// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// Peers that say nothing, stop in the middle of a request's header, or send it byte by byte. They
// make nobody else wait.

#include "support/ListenerFixture.h"
#include "support/QtPrinters.h"
#include "support/Skips.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <thread>

#include <poll.h>
#include <sys/socket.h>

namespace {

using Clients = std::vector<std::unique_ptr<FcgiClient>>;

const std::size_t peersOfEachKind = 20;
const qint64 prompt = 500; // milliseconds; a busy machine takes most of them

/** Sends a header that does not end to each client, a byte at a time, as long as it lives. */
class DrippingPeers
{
public:
    explicit DrippingPeers(const Clients& clients)
        : m_thread([this, &clients] { drip(clients); })
    {
    }
    DrippingPeers(const DrippingPeers&) = delete;
    DrippingPeers& operator=(const DrippingPeers&) = delete;
    ~DrippingPeers()
    {
        m_isEnding = true;
        m_thread.join();
    }

private:
    void drip(const Clients& clients)
    {
        const QByteArray bytes = FcgiClient::requestBytes({{"A", QByteArray(60000, 'a')}});
        for (int sent = 0; !m_isEnding && sent < bytes.size() / 2; ++sent) {
            for (const auto& client : clients) {
                client->send(bytes.mid(sent, 1));
            }
            poll(nullptr, 0, 1); // 1 ms until the next byte
        }
    }

    std::atomic<bool> m_isEnding{false};
    std::thread m_thread;
};

class BwaFcgiListenerAmongManyPeers : public TransportFixture
{
protected:
    void SetUp() override
    {
        serve("/api", answerPathInfo);
        listener().setBacklog(1000); // TCP has a client that finds no room try again after 1 s
        startListening();
    }

    Clients connectedClients() const
    {
        Clients clients(peersOfEachKind);
        for (auto& client : clients) {
            client = connectedClient();
        }
        return clients;
    }

    // Milliseconds until the answer to a request on a connection of its own has come.
    qint64 timeOfRequest()
    {
        return millisecondsOf([this] {
            const auto client = connectedClient();
            client->sendRequest(apiRequest("/x"));
            EXPECT_EQ(replyTo(*client).out, QByteArray("/x"));
        });
    }

    qint64 timeOfSlowestRequest()
    {
        qint64 slowest = 0;
        for (int number = 0; number < 50; ++number) {
            slowest = std::max(slowest, timeOfRequest());
        }
        RecordProperty("slowest", static_cast<int>(slowest));
        return slowest;
    }
};

} // namespace

TEST_P(BwaFcgiListenerAmongManyPeers, AnswersPromptly)
{
    if (underValgrind()) {
        GTEST_SKIP() << "it measures time";
    }
    const QByteArray late = FcgiClient::requestBytes(apiRequest("/late"));
    const Clients silent = connectedClients();
    const Clients half = connectedClients();
    const Clients dripping = connectedClients();
    for (const auto& client : half) {
        client->send(late.left(30));
    }
    const DrippingPeers drip(dripping);

    EXPECT_LT(timeOfSlowestRequest(), prompt);

    for (std::size_t number = 0; number < peersOfEachKind; ++number) {
        silent[number]->send(late);
        half[number]->send(late.mid(30));
        EXPECT_EQ(replyTo(*silent[number]).out, QByteArray("/late"));
        EXPECT_EQ(replyTo(*half[number]).out, QByteArray("/late"));
    }
}

TEST_P(BwaFcgiListenerAmongManyPeers, WhenTheirBodiesAreMissingAnswersPromptly)
{
    if (underValgrind()) {
        GTEST_SKIP() << "it measures time";
    }
    const QByteArray whole = FcgiClient::requestBytes(apiRequest("/late"), "body");
    const Clients clients = connectedClients();
    for (const auto& client : clients) {
        client->send(whole.chopped(12)); // half of the body's record, and its end
    }
    for (const auto& client : clients) {
        EXPECT_EQ(replyTo(*client).out, QByteArray("/late"));
    }

    EXPECT_LT(timeOfSlowestRequest(), prompt);
}

INSTANTIATE_TEST_SUITE_P(Transports, BwaFcgiListenerAmongManyPeers, testing::Bool(),
                         [](const auto& info) { return info.param ? "Tcp" : "Unix"; });
