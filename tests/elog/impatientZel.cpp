/// A messaging library to be preloaded: the first three receives time out at once, the fourth gets its reply, and no
/// message can be allocated for an entry.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <utility>

#include <zel.h>

namespace {

constexpr std::uint32_t locateReplyNo = 0x17070D0;

} // namespace

std::uint32_t __zel_create_mailbox(const char* /*name*/, std::uint32_t /*flags*/, const char* /*file*/, int /*line*/)
{
    return 1;
}

zel_msg* __zel_alloc(std::size_t size, std::uint32_t msgNo, const char* /*file*/, int /*line*/)
{
    if (msgNo != locateReplyNo) {
        return nullptr;
    }
    void* const message = std::malloc(size);
    std::memcpy(message, &msgNo, sizeof msgNo);
    return static_cast<zel_msg*>(message);
}

void __zel_locate_async(const char* /*name*/, zel_msg** reply, std::uint32_t /*from*/, const char* file, int line)
{
    __zel_free(reply, file, line);
}

zel_msg* __zel_receive(const std::uint32_t* /*filter*/, std::uint32_t /*timeoutMs*/, std::uint32_t /*from*/,
                       const char* file, int line)
{
    static int timeouts = 3;
    return timeouts-- > 0 ? nullptr : __zel_alloc(sizeof locateReplyNo, locateReplyNo, file, line);
}

std::uint32_t __zel_sender(const zel_msg* /*msg*/, const char* /*file*/, int /*line*/)
{
    return 2;
}

void __zel_free(zel_msg** msg, const char* /*file*/, int /*line*/)
{
    std::free(std::exchange(*msg, nullptr));
}

void __zel_send(zel_msg** /*msg*/, std::uint32_t /*to*/, std::uint32_t /*from*/, const char* /*file*/, int /*line*/)
{
    std::abort(); // there was no message to send
}
