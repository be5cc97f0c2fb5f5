/// An application that writes one entry, whose event id and text are its arguments, and ends when the engine has it.
#include <string>

#include <elog/elogIf.h>
#include <zel.h>

int main(int, char** argv)
{
    // The client doesn't wait for an engine at the end, so this program does.
    __zel_create_mailbox("Waits", 0, "", 0);
    zel_msg* reply = __zel_alloc(4, 1, "", 0);
    __zel_locate_async("ElogEngine", &reply, ZEL_OWN_MAILBOX, "", 0);
    reply = __zel_receive(nullptr, 60000, ZEL_ANY_SENDER, "", 0);
    __zel_free(&reply, "", 0);
    Corvane::Elog::V2::ElogIf::getInstance().elogWrite(static_cast<unsigned int>(std::stoul(argv[1])), argv[2], {});
    return 0;
}
