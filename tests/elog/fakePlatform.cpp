/// Fakes of libzel and libpindle.
#include "tests/elog/fakePlatform.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <sstream>
#include <system_error>
#include <utility>

#include <dlfcn.h>
#include <pindle/activeObjectIf.h>
#include <zel.h>

#include "tests/support/failingAllocation.h"

namespace Corvane::Testing {

FakePlatform* FakePlatform::s_current = nullptr;
int FakePlatform::loaderCalls = 0;

FakePlatform::FakePlatform()
{
    s_current = this;
}

FakePlatform::~FakePlatform()
{
    s_current = nullptr;
}

FakePlatform& FakePlatform::current()
{
    return *s_current;
}

void FakePlatform::run()
{
    if (init) {
        std::exchange(init, nullptr)();
    }
    while (!jobs.empty()) {
        const auto job = std::move(jobs.front());
        jobs.pop_front();
        job();
    }
}

namespace {

/// In front of a message's bytes.
struct Head
{
    std::size_t size;
    std::size_t unused; // keeps what follows aligned
};

Head* headOf(zel_msg* message)
{
    return reinterpret_cast<Head*>(message) - 1;
}

template <typename... Arguments>
void record(const std::string& call, const Arguments&... arguments)
{
    const MemoryForTest memory;
    std::ostringstream text;
    [[maybe_unused]] const char* separator = ""; // not used for a call without arguments
    text << call << "(" << std::hex << std::showbase;
    ((text << std::exchange(separator, ", ") << arguments), ...);
    text << ")";
    FakePlatform::current().calls.push_back(text.str());
}

std::string quoted(const char* text)
{
    const MemoryForTest memory;
    return '"' + std::string(text) + '"';
}

class FakeActiveObject final : public Pindle::ActiveObject::V1::ActiveObjectIf
{
public:
    FakeActiveObject() { FakePlatform::current().hasActiveObject = true; }
    ~FakeActiveObject() override
    {
        if (FakePlatform::exists()) { // the process's one client outlives the tests
            record("release");
            FakePlatform::current().hasActiveObject = false;
        }
    }
    FakeActiveObject(const FakeActiveObject&) = delete;
    FakeActiveObject& operator=(const FakeActiveObject&) = delete;

    void post(std::function<void()> job) override
    {
        FakePlatform& platform = FakePlatform::current();
        if (platform.whilePosting) {
            platform.whilePosting();
        }
        platform.jobs.push_back(std::move(job));
    }
};

} // namespace

} // namespace Corvane::Testing

using namespace Corvane::Testing;

std::shared_ptr<Pindle::ActiveObject::V1::ActiveObjectIf>
Pindle::ActiveObject::V1::ActiveObjectIf::create(const std::function<void()>& init, const SchedulingPolicy& policy)
{
    if (FakePlatform::current().refuseThread) {
        throw std::system_error(EAGAIN, std::generic_category());
    }
    record("create", static_cast<unsigned int>(policy));
    FakePlatform::current().init = init;
    return std::make_shared<FakeActiveObject>();
}

extern "C" [[gnu::visibility("default")]] void* dlopen(const char* file, int mode)
{
    ++FakePlatform::loaderCalls;
    static const auto original = reinterpret_cast<void* (*)(const char*, int)>(::dlsym(RTLD_NEXT, "dlopen"));
    return original(file, mode);
}

std::uint32_t __zel_create_mailbox(const char* name, std::uint32_t flags, const char* file, int line)
{
    record("create_mailbox", quoted(name), flags, quoted(file), line);
    return FakePlatform::current().mailboxId;
}

zel_msg* __zel_alloc(std::size_t size, std::uint32_t msgNo, const char* file, int line)
{
    record("alloc", size, msgNo, quoted(file), line);
    if (FakePlatform::current().refuseAllocation) {
        return nullptr;
    }
    auto* const head = static_cast<Head*>(std::malloc(sizeof(Head) + size));
    if (head == nullptr) {
        throw std::bad_alloc();
    }
    head->size = size;
    std::memset(head + 1, 0xEE, size);
    std::memcpy(head + 1, &msgNo, sizeof msgNo);
    ++FakePlatform::current().messages;
    return reinterpret_cast<zel_msg*>(head + 1);
}

void __zel_locate_async(const char* name, zel_msg** reply, std::uint32_t from, const char* file, int line)
{
    record("locate_async", quoted(name), headOf(*reply)->size, from, quoted(file), line);
    __zel_free(reply, "fake", 1);
    FakePlatform::current().calls.pop_back();
}

zel_msg* __zel_receive(const std::uint32_t* filter, std::uint32_t timeoutMs, std::uint32_t from, const char* file,
                       int line)
{
    record("receive", filter[0], filter[1], timeoutMs, from, quoted(file), line);
    if (FakePlatform::current().timeouts-- > 0) {
        return nullptr;
    }
    zel_msg* const reply = __zel_alloc(4, filter[1], "fake", 1);
    FakePlatform::current().calls.pop_back();
    return reply;
}

std::uint32_t __zel_sender(const zel_msg* /*msg*/, const char* file, int line)
{
    record("sender", quoted(file), line);
    return FakePlatform::current().engineId;
}

void __zel_free(zel_msg** msg, const char* file, int line)
{
    record("free", quoted(file), line);
    std::free(headOf(std::exchange(*msg, nullptr)));
    --FakePlatform::current().messages;
}

void __zel_send(zel_msg** msg, std::uint32_t to, std::uint32_t from, const char* file, int line)
{
    record("send", to, from, quoted(file), line);
    const auto* const bytes = reinterpret_cast<const unsigned char*>(*msg);
    FakePlatform::current().sent.emplace_back(bytes, bytes + headOf(*msg)->size);
    std::free(headOf(std::exchange(*msg, nullptr)));
    --FakePlatform::current().messages;
}
