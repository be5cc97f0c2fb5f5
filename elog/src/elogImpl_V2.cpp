// SPDX-License-Identifier: MIT
/// The event-log client.
#include "elog/src/elogImpl_V2.h"

#include <chrono>
#include <cstring>
#include <functional>
#include <limits>
#include <new>
#include <thread>

#include <dlfcn.h>
#include <unistd.h>
#include <zel.h>

#include "trace/emit.h"

namespace Corvane::Elog::V2 {

namespace {

namespace TraceLine {
constexpr unsigned int noMailbox = 59, waiting = 71, discarded = 98;
}

constexpr std::uint32_t locateReplyNo = 0x17070D0;
constexpr std::uint32_t writeNo = 0x17070D1;
constexpr const char* clientMboxName = "ElogEngineClient";
constexpr const char* engineMboxName = "ElogEngine";
constexpr std::uint32_t locateTimeoutMs = 60000;

// An entry's message: four words, in the host's byte order; the parameters, a word each; the text and its NUL.
//     0  the message number, set by the allocation
//     1  the event id
//     2  the number of parameters
//     3  the length of the text in bytes, without its NUL
constexpr std::size_t wordSize = sizeof(std::uint32_t);
constexpr std::size_t headWords = 4;
constexpr std::size_t nulWords = 1; // a whole word for the text's NUL; three of its bytes are never set
static_assert(sizeof(unsigned int) == wordSize, "parameters are copied as they are");

void putWord(unsigned char* message, std::size_t index, std::size_t value)
{
    const auto word = static_cast<std::uint32_t>(value);
    std::memcpy(message + index * wordSize, &word, wordSize);
}

/// Keeps the library loaded until the process ends: the client's thread runs its code for as long.
///
/// dlopen() takes the loader's lock. Call this before taking any lock that a library's constructor may want, such as
/// the guard of a function's static object. A thread that loads a library runs its constructor with the loader's lock
/// held: if each thread held the lock that the other wants, both would wait for ever.
void keepLibraryLoaded()
{
    static std::atomic<bool> isKept{false};
    if (isKept) {
        return;
    }
    Dl_info library = {};
    if (::dladdr(reinterpret_cast<void*>(&keepLibraryLoaded), &library) != 0) {
        void* const handle = ::dlopen(library.dli_fname, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE);
        if (handle != nullptr) { // null where the code is part of the program itself, which always stays
            ::dlclose(handle);
        }
    }
    isKept = true;
}

/// Ends the client when the process that started it ends.
///
/// It does nothing in a child made by fork(). The child has neither the client's thread nor its parent's writers, who
/// may still be counted: it would wait for them for ever.
class ClientEnd
{
public:
    explicit ClientEnd(ElogImpl& client) : m_client(client) {}
    ClientEnd(const ClientEnd&) = delete;
    ClientEnd& operator=(const ClientEnd&) = delete;
    ~ClientEnd()
    {
        if (::getpid() == m_process) {
            m_client.end();
        }
    }

private:
    ElogImpl& m_client;
    const pid_t m_process = ::getpid();
};

constexpr std::uint32_t hasEnded = 0x80000000; // in the count of writers

/// Counts a writer until it leaves. After the end has begun nobody is counted any more.
class Writer
{
public:
    explicit Writer(std::atomic<std::uint32_t>& writers) : m_writers(writers)
    {
        std::uint32_t count = writers;
        while (!m_isCounted && (count & hasEnded) == 0) {
            m_isCounted = writers.compare_exchange_weak(count, count + 1);
        }
    }
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;
    ~Writer()
    {
        if (m_isCounted) {
            --m_writers;
        }
    }

    bool isCounted() const { return m_isCounted; }

private:
    std::atomic<std::uint32_t>& m_writers;
    bool m_isCounted = false;
};

} // namespace

std::optional<std::uint32_t> messageSize(std::size_t textLength, std::size_t numParams)
{
    constexpr std::uint64_t most = std::numeric_limits<std::uint32_t>::max();
    if (textLength > most || numParams > most) { // so that the sum can't overflow either
        return std::nullopt;
    }
    const std::uint64_t size = (headWords + std::uint64_t{numParams} + nulWords) * wordSize + textLength;
    return size > most ? std::nullopt : std::optional(static_cast<std::uint32_t>(size));
}

ElogIf::~ElogIf() = default;

ElogIf& ElogIf::getInstance()
{
    keepLibraryLoaded();
    // Never destroyed: threads may write while the process ends and after its static objects are destroyed.
    alignas(ElogImpl) static unsigned char memory[sizeof(ElogImpl)];
    static ElogImpl& client = *new (memory) ElogImpl;
    static const ClientEnd end(client);
    return client;
}

ElogImpl::ElogImpl() : elogEngineMbox(ZEL_NO_MAILBOX), m_writers(0)
{
    using namespace Pindle::ActiveObject::V1;
    activeObject = ActiveObjectIf::create([this] { aoInit(); }, SchedulingPolicy{0});
}

ElogImpl::~ElogImpl() = default;

void ElogImpl::elogWrite(unsigned int eventId, const std::string& text, const std::vector<unsigned int>& params)
{
    const Writer writer(m_writers);
    if (writer.isCounted()) {
        // Without an initialiser the copies would be const, as the parameters are, and be copied again for the job.
        activeObject->post([this, eventId, text = text, params = params] { aoElogWrite(eventId, text, params); });
    }
}

void ElogImpl::end()
{
    m_writers |= hasEnded;
    while (m_writers != hasEnded) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1)); // a writer leaves within microseconds
    }
    activeObject.reset();
}

void ElogImpl::aoInit()
{
    if (__zel_create_mailbox(clientMboxName, 0, "", 0) == ZEL_NO_MAILBOX) {
        Trace::info(__FILE__, TraceLine::noMailbox,
                    [](std::ostream& msg) { msg << "ABN: Failed to create ZEL mailbox: " << clientMboxName; });
        return;
    }
    zel_msg* reply = __zel_alloc(wordSize, locateReplyNo, "", 0);
    __zel_locate_async(engineMboxName, &reply, ZEL_OWN_MAILBOX, "", 0);

    static constexpr std::uint32_t filter[] = {1, locateReplyNo};
    while ((reply = __zel_receive(filter, locateTimeoutMs, ZEL_ANY_SENDER, "", 0)) == nullptr) {
        Trace::info(__FILE__, TraceLine::waiting, [](std::ostream& msg) {
            msg << "ABN: '" << engineMboxName << "' not available. Still waiting ...";
        });
    }
    elogEngineMbox = __zel_sender(reply, "", 0);
    __zel_free(&reply, "", 0);
}

void ElogImpl::aoElogWrite(unsigned int eventId, const std::string& text, const std::vector<unsigned int>& params) const
{
    zel_msg* message = nullptr;
    if (elogEngineMbox != ZEL_NO_MAILBOX) {
        if (const auto size = messageSize(text.size(), params.size())) {
            message = __zel_alloc(*size, writeNo, "", 0);
        }
    }
    if (message == nullptr) {
        Trace::info(__FILE__, TraceLine::discarded,
                    [&](std::ostream& msg) { msg << "ABN: Discarding elog write for eventId: " << eventId; });
        return;
    }
    auto* bytes = reinterpret_cast<unsigned char*>(message);
    putWord(bytes, 1, eventId);
    putWord(bytes, 2, params.size());
    putWord(bytes, 3, text.size());
    bytes += headWords * wordSize;
    const std::size_t paramsSize = params.size() * wordSize;
    if (paramsSize > 0) { // the data of an empty vector may be null
        std::memcpy(bytes, params.data(), paramsSize);
    }
    std::memcpy(bytes + paramsSize, text.c_str(), text.size() + 1);
    __zel_send(&message, elogEngineMbox, ZEL_OWN_MAILBOX, "", 0);
}

} // namespace Corvane::Elog::V2
