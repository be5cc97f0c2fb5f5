/// Another libzel.so.1: a mailbox that needs no other process, and an engine that is always there. It says what it
/// does.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <zel.h>

namespace {

constexpr std::uint32_t ownMailbox = 1;
constexpr std::uint32_t engine = 2;
constexpr std::uint32_t locateReplyNo = 0x17070D0;

} // namespace

std::uint32_t __zel_create_mailbox(const char* name, std::uint32_t /*flags*/, const char* /*file*/, int /*line*/)
{
    std::printf("the other libzel.so.1 creates the mailbox %s\n", name);
    return ownMailbox;
}

zel_msg* __zel_alloc(std::size_t size, std::uint32_t msgNo, const char* /*file*/, int /*line*/)
{
    void* const message = std::malloc(size);
    if (message != nullptr) {
        std::memcpy(message, &msgNo, sizeof msgNo);
    }
    return static_cast<zel_msg*>(message);
}

void __zel_locate_async(const char* name, zel_msg** reply, std::uint32_t /*from*/, const char* /*file*/, int /*line*/)
{
    std::printf("the other libzel.so.1 locates %s\n", name);
    __zel_free(reply, "", 0);
}

zel_msg* __zel_receive(const std::uint32_t* /*filter*/, std::uint32_t /*timeoutMs*/, std::uint32_t /*from*/,
                       const char* /*file*/, int /*line*/)
{
    return __zel_alloc(sizeof locateReplyNo, locateReplyNo, "", 0);
}

std::uint32_t __zel_sender(const zel_msg* /*msg*/, const char* /*file*/, int /*line*/)
{
    return engine;
}

void __zel_free(zel_msg** msg, const char* /*file*/, int /*line*/)
{
    std::free(*msg);
    *msg = nullptr;
}

void __zel_send(zel_msg** msg, std::uint32_t /*to*/, std::uint32_t /*from*/, const char* /*file*/, int /*line*/)
{
    std::uint32_t words[2] = {};
    std::memcpy(words, *msg, sizeof words);
    std::printf("the other libzel.so.1 sends the entry %u\n", words[1]);
    __zel_free(msg, "", 0);
}
