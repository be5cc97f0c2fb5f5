// SPDX-License-Identifier: MIT
/// The event-log client.
#include "elog/src/elogImpl_V2.h"

#include <chrono>
#include <cstring>
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
constexpr std::chrono::seconds longestWaitForWriters{2};

// An entry's message: four words, in the host's byte order; the parameters, a word each; the text and its NUL.
//     0  the message number, set by the allocation
//     1  the event id
//     2  the number of parameters
//     3  the length of the text in bytes, without its NUL
constexpr std::size_t wordSize = sizeof(std::uint32_t);
constexpr std::size_t headWords = 4;
constexpr std::size_t nulWords = 1; // a whole word for the text's NUL; three of its bytes are never set
constexpr std::size_t unsetBytes = 3;
static_assert(sizeof(unsigned int) == wordSize, "parameters are copied as they are");

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

/// Emits INFO on the client's thread. Without memory for its text the report is lost: nobody could catch an exception
/// there, and it would end the process.
template <typename WriteText>
void report(unsigned int line, const WriteText& writeText)
{
    try {
        Trace::info(__FILE__, line, writeText);
    } catch (const std::bad_alloc&) {
    }
}

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

/// An entry as it waits: its message without the first word, in one block. A job must be copyable, so an entry is.
class WaitingEntry
{
public:
    WaitingEntry(unsigned int event, const std::string& text, const std::vector<unsigned int>& params)
        : WaitingEntry(event, messageSize(text.size(), params.size()).value_or(0))
    {
        if (sizeOfMessage == 0) {
            return;
        }
        const std::uint32_t head[] = {event, static_cast<std::uint32_t>(params.size()),
                                      static_cast<std::uint32_t>(text.size())};
        unsigned char* place = bytes.get();
        std::memcpy(place, head, sizeof head);
        place += sizeof head;
        if (!params.empty()) { // the data of an empty vector may be null
            std::memcpy(place, params.data(), params.size() * wordSize);
        }
        std::memcpy(place + params.size() * wordSize, text.c_str(), text.size() + 1);
    }
    WaitingEntry(const WaitingEntry& other) : WaitingEntry(other.eventId, other.sizeOfMessage)
    {
        std::memcpy(bytes.get(), other.bytes.get(), size());
    }
    WaitingEntry(WaitingEntry&&) = default;
    WaitingEntry& operator=(const WaitingEntry&) = delete;
    WaitingEntry& operator=(WaitingEntry&&) = delete;
    ~WaitingEntry() = default;

    std::size_t size() const { return sizeOfMessage == 0 ? 0 : sizeOfMessage - wordSize - unsetBytes; }

    const unsigned int eventId;
    const std::uint32_t sizeOfMessage; // 0: the message would be too long, so there is none
    std::unique_ptr<unsigned char[]> bytes;

private:
    WaitingEntry(unsigned int event, std::uint32_t messageBytes)
        : eventId(event), sizeOfMessage(messageBytes), bytes(new unsigned char[size()]) // not set, unlike a vector's
    {
    }
};

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
        activeObject->post([this, entry = WaitingEntry(eventId, text, params)] { aoElogWrite(entry); });
    }
}

void ElogImpl::end()
{
    m_writers |= hasEnded;
    const auto latest = std::chrono::steady_clock::now() + longestWaitForWriters;
    while (m_writers != hasEnded) {
        if (std::chrono::steady_clock::now() > latest) {
            return; // a writer that never leaves, such as this very thread, needs the active object
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1)); // a writer leaves within microseconds
    }
    activeObject.reset();
}

void ElogImpl::aoInit()
{
    if (__zel_create_mailbox(clientMboxName, 0, "", 0) == ZEL_NO_MAILBOX) {
        report(TraceLine::noMailbox,
               [](std::ostream& msg) { msg << "ABN: Failed to create ZEL mailbox: " << clientMboxName; });
        return;
    }
    zel_msg* reply = __zel_alloc(wordSize, locateReplyNo, "", 0);
    __zel_locate_async(engineMboxName, &reply, ZEL_OWN_MAILBOX, "", 0);

    static constexpr std::uint32_t filter[] = {1, locateReplyNo};
    while ((reply = __zel_receive(filter, locateTimeoutMs, ZEL_ANY_SENDER, "", 0)) == nullptr) {
        report(TraceLine::waiting,
               [](std::ostream& msg) { msg << "ABN: '" << engineMboxName << "' not available. Still waiting ..."; });
    }
    elogEngineMbox = __zel_sender(reply, "", 0);
    __zel_free(&reply, "", 0);
}

void ElogImpl::aoElogWrite(const WaitingEntry& entry) const
{
    zel_msg* message = nullptr;
    if (elogEngineMbox != ZEL_NO_MAILBOX && entry.sizeOfMessage != 0) {
        message = __zel_alloc(entry.sizeOfMessage, writeNo, "", 0);
    }
    if (message == nullptr) {
        report(TraceLine::discarded,
               [&](std::ostream& msg) { msg << "ABN: Discarding elog write for eventId: " << entry.eventId; });
        return;
    }
    std::memcpy(reinterpret_cast<unsigned char*>(message) + wordSize, entry.bytes.get(), entry.size());
    __zel_send(&message, elogEngineMbox, ZEL_OWN_MAILBOX, "", 0);
}

} // namespace Corvane::Elog::V2
