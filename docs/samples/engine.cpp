#include <cstdint>
#include <cstdio>
#include <cstring>

#include <zel.h>

static std::uint32_t wordAt(const char* message, std::size_t offset)
{
    std::uint32_t word;
    std::memcpy(&word, message + offset, sizeof word);
    return word;
}

int main()
{
    if (__zel_create_mailbox("ElogEngine", 0, "", 0) == ZEL_NO_MAILBOX) {
        return 1;
    }
    const std::uint32_t entriesOnly[] = {1, 0x17070D1};
    for (;;) {
        zel_msg* message = __zel_receive(entriesOnly, 60000, ZEL_ANY_SENDER, "", 0);
        if (message == nullptr) {
            continue; // none came for a minute
        }
        const char* bytes = reinterpret_cast<const char*>(message);
        const std::uint32_t n = wordAt(bytes, 8);
        std::printf("event %u", wordAt(bytes, 4));
        for (std::uint32_t i = 0; i < n; ++i) {
            std::printf(" %u", wordAt(bytes, 16 + 4 * std::size_t{i}));
        }
        std::printf(": %.*s\n", static_cast<int>(wordAt(bytes, 12)), bytes + 16 + 4 * std::size_t{n});
        std::fflush(stdout);
        __zel_free(&message, "", 0);
    }
}
