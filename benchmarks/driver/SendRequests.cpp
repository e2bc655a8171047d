// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// Sends one request again and again to a FastCGI application, as a web server does, each on a
// connection of its own or, with --keep, one after the other on connections that stay open. Prints
// the first reply. All bodies must be the same.

#include "RequestFile.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

const int longestSilence = 120; // seconds; applications that are observed are slow
const unsigned char endRequest = 3;
const unsigned char stdoutRecord = 6;

class Connection
{
public:
    explicit Connection(const std::string& path)
        : m_descriptor(::socket(AF_UNIX, SOCK_STREAM, 0))
    {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        const timeval timeout = {longestSilence, 0};
        if (path.size() >= sizeof address.sun_path || m_descriptor < 0) {
            throw std::runtime_error("no socket for " + path);
        }
        std::memcpy(address.sun_path, path.c_str(), path.size());
        ::setsockopt(m_descriptor, SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof timeout);
        if (::connect(m_descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
            ::close(m_descriptor);
            throw std::runtime_error("cannot connect to " + path);
        }
    }
    ~Connection() { ::close(m_descriptor); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    void send(const std::string& bytes)
    {
        for (std::size_t sent = 0; sent < bytes.size();) {
            const ssize_t count =
                ::send(m_descriptor, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
            if (count <= 0) {
                throw std::runtime_error("the application takes no more of the request");
            }
            sent += static_cast<std::size_t>(count);
        }
    }

    std::string receive(std::size_t size)
    {
        while (m_received.size() < size) {
            char buffer[16384];
            const ssize_t count = ::recv(m_descriptor, buffer, sizeof buffer, 0);
            if (count <= 0) {
                throw std::runtime_error("the reply is not complete");
            }
            m_received.append(buffer, static_cast<std::size_t>(count));
        }
        std::string bytes = m_received.substr(0, size);
        m_received.erase(0, size);
        return bytes;
    }

private:
    int m_descriptor;
    std::string m_received;
};

// What the application wrote for the client.
std::string replyTo(const std::string& records, Connection& connection)
{
    connection.send(records);
    std::string reply;
    while (true) {
        const std::string header = connection.receive(8);
        const auto byteAt = [&header](std::size_t i) {
            return static_cast<unsigned char>(header[i]);
        };
        const std::size_t size = byteAt(4) * 256U + byteAt(5);
        const std::string content = connection.receive(size + byteAt(6));
        if (byteAt(1) == endRequest) {
            return reply;
        }
        if (byteAt(1) == stdoutRecord) {
            reply.append(content, 0, size);
        }
    }
}

// The body only, because header lines may contain the time of day.
std::string bodyOf(const std::string& reply)
{
    const std::size_t lineFeeds = reply.find("\n\n");
    const std::size_t pairs = reply.find("\r\n\r\n");
    return pairs < lineFeeds ? reply.substr(pairs + 4)
                             : reply.substr(std::min(lineFeeds, reply.size() - 2) + 2);
}

std::string replyTo(const std::string& records, const std::string& socket)
{
    Connection connection(socket);
    return replyTo(records, connection);
}

/** Shares a number of requests among connections that are open at the same time. */
class Sender
{
public:
    Sender(const std::string& socket, const std::string& records, bool keep, long count)
        : m_socket(socket)
        , m_records(records)
        , m_keep(keep)
        , m_reply(replyTo(records, socket))
        , m_remaining(count - 1)
        , m_failed(false)
    {
    }

    bool sendAll(int connections)
    {
        std::vector<std::thread> threads;
        for (int i = 1; i < connections; ++i) {
            threads.emplace_back([this] { sendRemaining(); });
        }
        sendRemaining();
        for (std::thread& thread : threads) {
            thread.join();
        }
        return !m_failed;
    }

    const std::string& reply() const { return m_reply; }

private:
    void sendRemaining()
    {
        try {
            std::unique_ptr<Connection> kept(m_keep ? new Connection(m_socket) : nullptr);
            while (m_remaining-- > 0) {
                check(kept ? replyTo(m_records, *kept) : replyTo(m_records, m_socket));
            }
        } catch (const std::exception& exception) {
            std::cerr << exception.what() << '\n';
            m_failed = true;
        }
    }

    void check(const std::string& reply) const
    {
        if (bodyOf(reply) != bodyOf(m_reply)) {
            throw std::runtime_error("the body differs from the first one");
        }
    }

    const std::string m_socket;
    const std::string m_records;
    const bool m_keep;
    const std::string m_reply;
    std::atomic<long> m_remaining;
    std::atomic<bool> m_failed;
};

} // namespace

int main(int argc, char** argv)
{
    const bool keep = argc > 1 && std::string(argv[1]) == "--keep";
    const std::vector<std::string> arguments(argv + (keep ? 2 : 1), argv + argc);
    if (arguments.size() != 4 && arguments.size() != 5) {
        std::cerr << "usage: " << argv[0]
                  << " [--keep] SOCKET REQUEST-FILE COUNT CONNECTIONS [SCRIPT-FILE]\n";
        return 2;
    }
    try {
        const std::string scriptFile = arguments.size() == 5 ? arguments[4] : "";
        Sender sender(arguments[0], fcgiRecordsOf(arguments[1], scriptFile, keep), keep,
                      std::stol(arguments[2]));
        const bool sent = sender.sendAll(std::stoi(arguments[3]));
        std::cout << sender.reply();
        return sent ? 0 : 1;
    } catch (const std::exception& exception) {
        std::cerr << exception.what() << '\n';
        return 1;
    }
}
