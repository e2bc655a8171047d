// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// Peers that speak nonsense.

#include "FaultFixture.h"
#include "support/QtPrinters.h"

#include <algorithm>
#include <random>

#include <sys/socket.h>

namespace {

const QByteArray form = "a=1&b=2&c=3&d=" + QByteArray(200, 'd');

using DamagedRecords = FaultFixture;
using Random = std::mt19937;

int below(Random& random, int limit)
{
    return std::uniform_int_distribution<int>(0, limit - 1)(random);
}

// Lengths of more than 8 MiB are left out: libfcgi ends the process when it gets no memory for
// them.
char anyByte(Random& random)
{
    return static_cast<char>(below(random, 0x81));
}

// Some bytes are replaced, taken out or doubled, and often the end is missing.
QByteArray damaged(QByteArray bytes, Random& random)
{
    const int damages = 1 + below(random, 4);
    for (int count = 0; count < damages; ++count) {
        const int position = below(random, std::min<int>(bytes.size(), 60));
        switch (below(random, 4)) {
        case 0:
            bytes.remove(position, 1 + below(random, 8));
            break;
        case 1:
            bytes.insert(position, anyByte(random));
            break;
        case 2:
            bytes.insert(position, bytes.mid(below(random, bytes.size()), 16));
            break;
        default:
            bytes[position] = anyByte(random);
        }
    }
    return below(random, 2) ? bytes.left(1 + below(random, bytes.size())) : bytes;
}

void sendAndClose(const QByteArray& path, const QByteArray& bytes)
{
    const FcgiClient client(path);
    // The application may have closed the connection already.
    send(client.descriptor(), bytes.constData(), static_cast<std::size_t>(bytes.size()),
         MSG_NOSIGNAL | MSG_DONTWAIT);
}

void sendDamaged(const QByteArray& path, const QByteArray& request, int times, Random& random)
{
    for (int count = 0; count < times; ++count) {
        sendAndClose(path, damaged(request, random));
    }
}

} // namespace

TEST_F(DamagedRecords, LetTheNextRequestBeServed)
{
    const unsigned int seed = std::random_device()();
    RecordProperty("seed", std::to_string(seed));
    SCOPED_TRACE("seed " + std::to_string(seed));
    Random random(seed);
    const QByteArray request = FcgiClient::requestBytes(formRequest(form), form);
    start();
    serveWhile([&] { expectGoodAnswer(); });
    const int before = openDescriptors();

    serveWhile([&] {
        for (int round = 0; round < faultRounds(); ++round) {
            sendDamaged(path(), request, 100, random);
            expectGoodAnswer();
        }
    });

    waitUntil([&] { return openDescriptors() <= before; }); // the last one may have been open then
    EXPECT_EQ(listeningErrors, 0);
}
