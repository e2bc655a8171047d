// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// Memory that is short. Every allocation of a request fails in its turn, in Qt as well as here: the
// one fault that the program itself makes, by a malloc() of its own. Only the thread that serves is
// concerned, while a request is handed to it: libfcgi allocates in the accepting thread, and ends
// the process when it gets nothing. What a request has allocated must be freed when it has ended,
// whatever failed.

#include "BwaStringStreaming.h"
#include "FaultFixture.h"
#include "cgi/BwaCgiRequest.h"
#include "http/BwaHttpJsonHeader.h"
#include "services/BwaDispatcherFcgiService.h"
#include "services/BwaStandardFcgiRequestProcessor.h"
#include "services/BwaStandardFcgiService.h"
#include "sessions/BwaCookiesFcgiSessionIdentifier.h"
#include "sessions/BwaWebSession.h"
#include "sessions/BwaWebSessionManager.h"
#include "support/QtPrinters.h"

#include <QEvent>

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <exception>
#include <memory>
#include <mutex>
#include <stdexcept>

// The names are those of the C library.
// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming)
extern "C" void* __libc_malloc(std::size_t size);
extern "C" void* __libc_calloc(std::size_t count, std::size_t size);
extern "C" void* __libc_realloc(void* memory, std::size_t size);
extern "C" void __libc_free(void* memory);
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)

namespace {

enum class Shortage { Passes, Lasts };

// Of this thread: how many allocations are left until one fails, 0 when none does; whether all
// further ones fail, too; how many there were.
thread_local int untilFailure = 0;
thread_local Shortage shortage = Shortage::Passes;
thread_local int allocations = 0;
// Whether this thread has a request handed to it.
thread_local bool isServing = false;

/** The memory that requests have allocated and nobody has freed yet; it allocates nothing. */
class MemoryOfRequests
{
public:
    void add(void* memory)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_pieces.at(m_count++) = memory;
    }

    /** Whether @a memory was there. */
    bool remove(const void* memory)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        void** const end = m_pieces.data() + m_count;
        void** const found = std::find(m_pieces.data(), end, memory);
        if (found == end) {
            return false;
        }
        *found = m_pieces.at(--m_count);
        return true;
    }

    std::size_t count()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_count;
    }

private:
    std::mutex m_mutex;
    std::array<void*, 10000> m_pieces = {};
    std::size_t m_count = 0;
};

MemoryOfRequests memoryOfRequests;

// Whether there is no memory for the allocation that is asked for.
bool isShort()
{
    ++allocations;
    if (untilFailure == 0 || --untilFailure > 0) {
        return false;
    }
    untilFailure = shortage == Shortage::Lasts ? 1 : 0;
    errno = ENOMEM;
    return true;
}

// As it is, but among the memory of requests when it is for one.
void* noted(void* memory)
{
    if (isServing && memory) {
        memoryOfRequests.add(memory);
    }
    return memory;
}

struct Case {
    const char* name;
    Shortage shortage;
    const char* method;
    QByteArray contentType;
    QByteArray body;
    QByteArray answer; // how it ends when memory is not short
};

class Processor : public BwaStandardFcgiRequestProcessor
{
public:
    using BwaStandardFcgiRequestProcessor::BwaStandardFcgiRequestProcessor;

protected:
    void processPostMethod(BwaFcgiRequest* request) override
    {
        if (authenticateRequest(request)) {
            answer(request, request->cgiRequest()->processBodyContent());
        }
        delete request;
    }

    void processPutMethod(BwaFcgiRequest* request) override
    {
        bool isJson = false;
        parseJsonContent(request, &isJson);
        answer(request, isJson);
        delete request;
    }

    void processGetMethod(BwaFcgiRequest* /*request*/) override
    {
        throw std::runtime_error("out of paper");
    }

    void processDeleteMethod(BwaFcgiRequest* request) override
    {
        delete request;
        throw std::runtime_error("out of paper");
    }

private:
    static void answer(BwaFcgiRequest* request, bool isRead)
    {
        BwaHttpJsonHeader header(QStringLiteral("utf-8"));
        header.cookies.append(BwaHttpCookie(QStringLiteral("seen"), QStringLiteral("yes")));
        request->out() << header << (isRead ? "read" : "not read");
    }
};

/** Hands requests on while memory is short, and counts their allocations. */
class ShortOfMemory : public QObject
{
public:
    std::atomic<int> failing{0};   // the number of the allocation that fails; 0: none
    std::atomic<int> allocated{0}; // for the last request
    std::atomic<int> served{0};    // requests

    explicit ShortOfMemory(Shortage kind)
        : m_kind(kind)
    {
    }

    bool eventFilter(QObject* receiver, QEvent* event) override
    {
        if (event->type() != QEvent::MetaCall) {
            return false;
        }
        shortage = m_kind;
        allocations = 0;
        untilFailure = failing;
        bool escaped = false;
        isServing = true;
        try {
            receiver->event(event);
        } catch (const std::exception&) {
            escaped = true;
        }
        isServing = false;
        untilFailure = 0;
        allocated = allocations;
        ++served;
        EXPECT_FALSE(escaped) << "an exception has left the listener at allocation " << failing;
        return true;
    }

private:
    const Shortage m_kind;
};

class Allocation
    : public FaultFixture
    , public testing::WithParamInterface<Case>
{
public:
    Allocation()
        : m_identifier(&m_sessions, QStringLiteral("id"), QStringLiteral("token"))
        , m_memory(GetParam().shortage)
    {
        const QUuid id(QStringLiteral("{11111111-1111-4111-8111-111111111111}"));
        m_sessions.createSession(QStringLiteral("user"), id, id);
        m_root.addService(QStringLiteral("short"),
                          new BwaStandardFcgiService(new Processor(&m_identifier)));
        serve("/root", [this](BwaFcgiRequest* request) { process(request); });
        listener().installEventFilter(&m_memory);
    }

protected:
    FcgiReply reply()
    {
        const QByteArray id = "{11111111-1111-4111-8111-111111111111}";
        const int before = m_memory.served;
        FcgiClient client(path());
        client.sendRequest({{"SCRIPT_NAME", "/root"},
                            {"PATH_INFO", "/short"},
                            {"REQUEST_METHOD", GetParam().method},
                            {"QUERY_STRING", "a=b&c=%20d"},
                            {"HTTP_COOKIE", "id=" + id + "; token=" + id},
                            {"CONTENT_TYPE", GetParam().contentType},
                            {"CONTENT_LENGTH", QByteArray::number(GetParam().body.size())}},
                           GetParam().body);
        client.shutDownSending();
        const FcgiReply reply = client.readReply();
        waitUntil([&] { return m_memory.served > before; });
        return reply;
    }

    void expectAnswer()
    {
        const FcgiReply answer = reply();
        EXPECT_TRUE(answer.ended && answer.out.endsWith(GetParam().answer));
    }

    // How many allocations the request takes when memory is not short.
    int allocationsOfRequest()
    {
        reply(); // for what is made once only
        expectAnswer();
        return m_memory.allocated;
    }

    // The allocation of that number fails.
    void expectEndAndServing(int number)
    {
        SCOPED_TRACE(number);
        const std::size_t before = memoryOfRequests.count();
        m_memory.failing = number;
        EXPECT_TRUE(reply().ended);
        m_memory.failing = 0;
        expectAnswer();
        EXPECT_EQ(memoryOfRequests.count(), before) << "pieces of memory";
    }

private:
    // A request that an exception leaves here is still the service's: deleted with the next one.
    void process(BwaFcgiRequest* request)
    {
        m_left.reset();
        try {
            m_root.processRequest(request);
        } catch (const std::exception&) {
            m_left.reset(request);
            throw;
        }
    }

    BwaWebSessionManager m_sessions;
    BwaCookiesFcgiSessionIdentifier m_identifier;
    BwaDispatcherFcgiService m_root;
    ShortOfMemory m_memory;
    std::unique_ptr<BwaFcgiRequest> m_left;
};

} // namespace

// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name)
extern "C" void* malloc(std::size_t size)
{
    return isShort() ? nullptr : noted(__libc_malloc(size));
}

extern "C" void* calloc(std::size_t count, std::size_t size)
{
    return isShort() ? nullptr : noted(__libc_calloc(count, size));
}

extern "C" void* realloc(void* memory, std::size_t size)
{
    if (isShort()) {
        return nullptr;
    }
    // Before the other threads can be given it.
    const bool isOfRequest = !memory || memoryOfRequests.remove(memory);
    void* const moved = __libc_realloc(memory, size);
    return isOfRequest ? noted(moved) : moved;
}

extern "C" void free(void* memory)
{
    memoryOfRequests.remove(memory);
    __libc_free(memory);
}
// NOLINTEND(readability-inconsistent-declaration-parameter-name)

TEST_P(Allocation, WhenAnyFailsTheRequestEndsAndTheNextOneIsServed)
{
    start();

    serveWhile([&] {
        const int count = allocationsOfRequest();
        ASSERT_GT(count, 20);
        RecordProperty("allocations", count);
        for (int number = 1; number <= count; ++number) {
            expectEndAndServing(number);
        }
    });
}

const char* const urlEncoded = "application/x-www-form-urlencoded";
const QByteArray parts = "--b\r\nContent-Disposition: form-data; name=\"a\"\r\n\r\none\r\n"
                         "--b\r\nContent-Disposition: form-data; name=\"b\"; filename=\"b.txt\"\r\n"
                         "Content-Type: text/plain\r\n\r\ntwo\r\n--b--\r\n";

INSTANTIATE_TEST_SUITE_P(
    Requests, Allocation,
    testing::Values(Case{"OfAForm", Shortage::Passes, "POST", urlEncoded, "a=b&c=%20d", "\n\nread"},
                    Case{"OfAnUpload", Shortage::Passes, "POST", "multipart/form-data; boundary=b",
                         parts, "\n\nread"},
                    Case{"OfJson", Shortage::Passes, "PUT", "application/json",
                         "{\"a\": [1, \"b\"]}", "\n\nread"},
                    Case{"OfWhatIsNotThere", Shortage::Passes, "HEAD", "", "", "</html>"},
                    Case{"OfOneThatThrows", Shortage::Passes, "GET", "", "", "</html>"},
                    Case{"OfOneThatThrowsTooLate", Shortage::Passes, "DELETE", "", "", ""},
                    Case{"OfAFormFromThenOn", Shortage::Lasts, "POST", urlEncoded, "a=b&c=%20d",
                         "\n\nread"},
                    Case{"OfAnUploadFromThenOn", Shortage::Lasts, "POST",
                         "multipart/form-data; boundary=b", parts, "\n\nread"},
                    Case{"OfJsonFromThenOn", Shortage::Lasts, "PUT", "application/json",
                         "{\"a\": [1, \"b\"]}", "\n\nread"},
                    Case{"OfOneThatThrowsFromThenOn", Shortage::Lasts, "GET", "", "", "</html>"}),
    [](const auto& info) { return info.param.name; });
