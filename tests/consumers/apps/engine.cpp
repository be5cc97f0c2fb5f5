/// A tiny engine: it sends itself the beginning of an entry, and looks at it as an engine does.
#include <cstdint>
#include <cstring>
#include <iostream>

#include <zel.h>
#include <zelStandin.h>

int main()
{
    const std::uint32_t mailbox = __zel_create_mailbox("ElogEngine", 0, "engine.cpp", 1);
    zel_msg* entry = __zel_alloc(8, 0x17070D1, "engine.cpp", 2);
    __zel_send(&entry, mailbox, ZEL_OWN_MAILBOX, "engine.cpp", 3);

    zel_msg* received = __zel_receive(nullptr, 10000, ZEL_ANY_SENDER, "engine.cpp", 4);
    if (received == nullptr) {
        std::cout << "nothing received\n";
        return 1;
    }
    std::uint32_t number = 0;
    std::memcpy(&number, received, sizeof(number));
    std::cout << "message " << std::hex << number << std::dec << " of " << zel_standin_size(received) << " bytes from "
              << (__zel_sender(received, "engine.cpp", 5) == mailbox ? "this mailbox" : "another mailbox") << "\n";
    __zel_free(&received, "engine.cpp", 6);
    zel_standin_close_mailbox();
    return 0;
}
