/// Another libzel.so.1: a mailbox that needs no other process, and an engine that is always there. It says what it
/// does.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

#include <zel.h>

std::uint32_t __zel_create_mailbox(const char* name, std::uint32_t /*flags*/, const char* /*file*/, int /*line*/)
{
    std::printf("the other libzel.so.1 creates the mailbox %s\n", name);
    return 1;
}

zel_msg* __zel_alloc(std::size_t size, std::uint32_t msgNo, const char* /*file*/, int /*line*/)
{
    void* const message = std::malloc(size);
    return message == nullptr ? nullptr : static_cast<zel_msg*>(std::memcpy(message, &msgNo, sizeof msgNo));
}

void __zel_locate_async(const char* name, zel_msg** reply, std::uint32_t /*from*/, const char* /*file*/, int /*line*/)
{
    std::printf("the other libzel.so.1 locates %s\n", name);
    std::free(std::exchange(*reply, nullptr));
}

zel_msg* __zel_receive(const std::uint32_t* filter, std::uint32_t /*timeoutMs*/, std::uint32_t /*from*/,
                       const char* /*file*/, int /*line*/)
{
    return __zel_alloc(sizeof(std::uint32_t), filter[1], "", 0);
}

std::uint32_t __zel_sender(const zel_msg* /*msg*/, const char* /*file*/, int /*line*/)
{
    return 2;
}

void __zel_free(zel_msg** msg, const char* /*file*/, int /*line*/)
{
    std::free(std::exchange(*msg, nullptr));
}

void __zel_send(zel_msg** msg, std::uint32_t /*to*/, std::uint32_t /*from*/, const char* /*file*/, int /*line*/)
{
    std::uint32_t words[2] = {};
    std::memcpy(words, *msg, sizeof words);
    std::printf("the other libzel.so.1 sends the entry %u\n", words[1]);
    std::free(std::exchange(*msg, nullptr));
}
