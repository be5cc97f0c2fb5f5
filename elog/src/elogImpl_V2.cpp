/// The event-log client.
#include "elog/src/elogImpl_V2.h"

#include <atomic>
#include <cstring>
#include <functional>
#include <limits>

#include <dlfcn.h>
#include <zel.h>

#include "trace/emit.h"

namespace Corvane::Elog::V2 {

namespace {

constexpr std::uint32_t locateReplyNo = 0x17070D0;
constexpr std::uint32_t writeNo = 0x17070D1;
constexpr const char* clientMboxName = "ElogEngineClient";
constexpr const char* engineMboxName = "ElogEngine";

constexpr std::uint32_t noMbox = 0xFFFFFFFF;
constexpr std::uint32_t fromOwnMbox = 0xFFF00000;
constexpr std::uint32_t fromAnyMbox = 0xFFF11111;
constexpr std::uint32_t locateTimeoutMs = 60000;

// A message is these words, the parameters, the text and its NUL. The first word is set by the allocation.
constexpr std::size_t wordSize = sizeof(std::uint32_t);
constexpr std::size_t eventIdOffset = 1 * wordSize;
constexpr std::size_t numParamsOffset = 2 * wordSize;
constexpr std::size_t textLengthOffset = 3 * wordSize;
constexpr std::size_t paramsOffset = 4 * wordSize;
static_assert(sizeof(unsigned int) == wordSize, "parameters are copied as they are");

void putWord(unsigned char* message, std::size_t offset, std::size_t value)
{
    const auto word = static_cast<std::uint32_t>(value);
    std::memcpy(message + offset, &word, wordSize);
}

/// The client's thread runs this library's code until the process ends, so the library must stay as long.
///
/// Takes the loader's lock: nobody may hold another one that a constructor of a library being loaded could wait for.
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

} // namespace

std::optional<std::uint32_t> messageSize(std::size_t textLength, std::size_t numParams)
{
    constexpr std::uint64_t most = std::numeric_limits<std::uint32_t>::max();
    if (textLength > most || numParams > most) { // so that the sum can't overflow either
        return std::nullopt;
    }
    const std::uint64_t size = std::uint64_t{textLength} + (std::uint64_t{numParams} + 5) * wordSize;
    return size > most ? std::nullopt : std::optional(static_cast<std::uint32_t>(size));
}

ElogIf::~ElogIf() = default;

ElogIf& ElogIf::getInstance()
{
    keepLibraryLoaded();
    static ElogImpl instance;
    return instance;
}

ElogImpl::ElogImpl() : elogEngineMbox(noMbox)
{
    using namespace Pindle::ActiveObject::V1;
    activeObject = ActiveObjectIf::create([this] { aoInit(); }, SchedulingPolicy{0});
}

ElogImpl::~ElogImpl() = default;

void ElogImpl::elogWrite(unsigned int eventId, const std::string& text, const std::vector<unsigned int>& params)
{
    activeObject->post([this, eventId, text, params] { aoElogWrite(eventId, text, params); });
}

void ElogImpl::aoInit()
{
    if (__zel_create_mailbox(clientMboxName, 0, "", 0) == noMbox) {
        Trace::info(__FILE__, 59,
                    [](std::ostream& msg) { msg << "ABN: Failed to create ZEL mailbox: " << clientMboxName; });
        return;
    }
    zel_msg* reply = __zel_alloc(wordSize, locateReplyNo, "", 0);
    __zel_locate_async(engineMboxName, &reply, fromOwnMbox, "", 0);

    static constexpr std::uint32_t filter[] = {1, locateReplyNo};
    while ((reply = __zel_receive(filter, locateTimeoutMs, fromAnyMbox, "", 0)) == nullptr) {
        Trace::info(__FILE__, 71, [](std::ostream& msg) {
            msg << "ABN: '" << engineMboxName << "' not available. Still waiting ...";
        });
    }
    elogEngineMbox = __zel_sender(reply, "", 0);
    __zel_free(&reply, "", 0);
}

void ElogImpl::aoElogWrite(unsigned int eventId, const std::string& text, const std::vector<unsigned int>& params) const
{
    zel_msg* message = nullptr;
    if (elogEngineMbox != noMbox) {
        if (const auto size = messageSize(text.size(), params.size())) {
            message = __zel_alloc(*size, writeNo, "", 0);
        }
    }
    if (message == nullptr) {
        Trace::info(__FILE__, 98,
                    [&](std::ostream& msg) { msg << "ABN: Discarding elog write for eventId: " << eventId; });
        return;
    }
    auto* const bytes = reinterpret_cast<unsigned char*>(message);
    putWord(bytes, eventIdOffset, eventId);
    putWord(bytes, numParamsOffset, params.size());
    putWord(bytes, textLengthOffset, text.size());
    const std::size_t paramsSize = params.size() * wordSize;
    if (paramsSize > 0) { // the data of an empty vector may be null
        std::memcpy(bytes + paramsOffset, params.data(), paramsSize);
    }
    std::memcpy(bytes + paramsOffset + paramsSize, text.c_str(), text.size() + 1);
    __zel_send(&message, elogEngineMbox, fromOwnMbox, "", 0);
}

} // namespace Corvane::Elog::V2
