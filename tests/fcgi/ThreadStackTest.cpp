// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// How much stack the library needs. Small C libraries give a thread 128 KiB unless it asks for
// more, and an application may want to serve on a thread.

#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiListenerThread.h"
#include "json/BwaJson.h"
#include "support/ListenerFixture.h"
#include "support/MemoryCgiInput.h"
#include "support/Skips.h"

#include <fcgiapp.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <memory>
#include <utility>

#include <pthread.h>
#include <sys/mman.h>

namespace {

const std::size_t kibibyte = 1024;
const std::size_t largestStack = 8192 * kibibyte;
const unsigned char paint = 0xA5;

/** A thread on a stack that is painted, so that it shows how far down it was written. */
class PaintedThread
{
public:
    explicit PaintedThread(std::function<void()> work)
        : m_work(std::move(work))
        , m_stack(static_cast<unsigned char*>(mmap(nullptr, largestStack, PROT_READ | PROT_WRITE,
                                                   MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)))
    {
        std::fill(m_stack, m_stack + largestStack, paint);
        pthread_attr_t attributes;
        pthread_attr_init(&attributes);
        EXPECT_EQ(pthread_attr_setstack(&attributes, m_stack, largestStack), 0);
        EXPECT_EQ(pthread_create(&m_thread, &attributes, run, this), 0);
        pthread_attr_destroy(&attributes);
    }

    PaintedThread(const PaintedThread&) = delete;
    PaintedThread& operator=(const PaintedThread&) = delete;
    ~PaintedThread() { munmap(m_stack, largestStack); }

    /** Waits for the end of the thread; the bytes of stack that it has used. */
    std::size_t usedStack()
    {
        pthread_join(m_thread, nullptr);
        const unsigned char* const end = m_stack + largestStack;
        const unsigned char* const deepest = std::find_if(
            m_stack, m_stack + largestStack, [](unsigned char byte) { return byte != paint; });
        return static_cast<std::size_t>(end - deepest);
    }

private:
    static void* run(void* thread)
    {
        static_cast<PaintedThread*>(thread)->m_work();
        return nullptr;
    }

    std::function<void()> m_work;
    unsigned char* m_stack; // owned
    pthread_t m_thread = {};
};

std::size_t stackUsedBy(const std::function<void()>& work)
{
    return PaintedThread(work).usedStack();
}

/** A test that measures how much stack is used. */
class ServingThreadStack : public testing::Test
{
protected:
    void SetUp() override
    {
        if (underValgrind() || underSanitizer()) {
            GTEST_SKIP() << "valgrind takes the paint for uninitialised memory, and sanitizers "
                            "make the frames of functions larger";
        }
    }
};

/** A worker that accepts on a painted thread, and drops what it has accepted. */
class AcceptingThreadStack : public ServingThreadStack
{
public:
    AcceptingThreadStack()
    {
        FCGX_Init();
        QObject::connect(
            &m_worker, &BwaFcgiListenerThread::newRequest, &m_worker,
            [this](FCGX_Request* request) {
                m_parameter = FCGX_GetParam("LONG", request->envp);
                FCGX_Finish_r(request);
                delete request;
            },
            Qt::DirectConnection);
    }

protected:
    /** Listens on @a address until @a client has been answered. */
    std::size_t stackToAccept(const QString& address,
                              const std::function<std::unique_ptr<FcgiClient>()>& connectClient)
    {
        const Watchdog watchdog(30);
        std::atomic<bool> ended(false);
        PaintedThread thread([&] {
            m_worker.listen(address);
            ended = true;
        });
        const std::unique_ptr<FcgiClient> client = connectClient();
        client->sendRequest({{"LONG", longText}});
        client->shutDownSending();
        EXPECT_TRUE(client->readReply().ended);
        waitUntil([&] {
            m_worker.stopListening();
            return ended.load();
        });
        EXPECT_EQ(m_parameter, longText);
        return thread.usedStack();
    }

    const QByteArray longText = QByteArray(1 << 20, 'x');

private:
    BwaFcgiListenerThread m_worker;
    QByteArray m_parameter;
};

QByteArray nested(const QByteArray& opening, const QByteArray& closing, int depth)
{
    return opening.repeated(depth) + '1' + closing.repeated(depth);
}

void parseCompareAndWrite(const QByteArray& text)
{
    bool ok = false;
    const QVariant value = BwaJson::parse(text, &ok);
    EXPECT_TRUE(ok);
    EXPECT_TRUE(value == BwaJson::parse(text, &ok));
    EXPECT_TRUE(BwaJson::write(value) == text);
}

} // namespace

TEST_F(AcceptingThreadStack, GivenUnixSocketIsHalfOf128KiBAtMost)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("socket"));

    const std::size_t used =
        stackToAccept(path, [&] { return std::make_unique<FcgiClient>(path.toLatin1()); });

    RecordProperty("bytes", static_cast<int>(used));
    EXPECT_LE(used, 64 * kibibyte);
}

TEST_F(AcceptingThreadStack, GivenHostNameIsHalfOf128KiBAtMost)
{
    const quint16 port = freePort();
    const QString address = QLatin1String("localhost:") + QString::number(port);

    const std::size_t used = stackToAccept(address, [&] { return FcgiClient::onPort(port); });

    RecordProperty("bytes", static_cast<int>(used));
    EXPECT_LE(used, 64 * kibibyte);
}

TEST_F(ServingThreadStack, GivenDeepestJsonIs1MiBAtMost)
{
    const std::size_t used = stackUsedBy([] {
        parseCompareAndWrite(nested("[", "]", 1024));
        parseCompareAndWrite(nested("{\"a\":", "}", 1024));
        parseCompareAndWrite(nested("[{\"a\":", "}]", 512));
    });

    RecordProperty("bytes", static_cast<int>(used));
    EXPECT_LE(used, 1024 * kibibyte);
}

TEST_F(ServingThreadStack, GivenLongInputsIs64KiBAtMost)
{
    const QByteArray longText(1 << 20, 'x');
    MemoryCgiInput form("application/x-www-form-urlencoded", "a=" + longText + "&b=%41" + longText);
    form.set("QUERY_STRING", "q=" + longText);
    form.set("HTTP_COOKIE", "c=" + longText);
    MemoryCgiInput upload("multipart/form-data; boundary=B",
                          "--B\r\nContent-Disposition: form-data; name=\"" + longText +
                              "\"\r\n\r\n" + longText + "\r\n--B--\r\n");

    const std::size_t used = stackUsedBy([&] {
        EXPECT_TRUE(BwaCgiRequest(&form).processBodyContent());
        EXPECT_TRUE(BwaCgiRequest(&upload).processBodyContent());
    });

    RecordProperty("bytes", static_cast<int>(used));
    EXPECT_LE(used, 64 * kibibyte);
}
