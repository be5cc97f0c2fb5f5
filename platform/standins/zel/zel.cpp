/// Stand-in for the unit's messaging library, libzel.so.1. Its contract is in zel.h, its additions in zelStandin.h.
#include <zel.h>

#include <cstring>
#include <exception>
#include <memory>
#include <utility>

#include "mailbox.h"
#include "message.h"
#include "zelStandin.h"

namespace {

using Zel::Message;

constexpr std::uint32_t ownMailbox = 0xFFF00000U;

// Of the thread's life, and nothing of the process's: a thread may still wait in here while the process ends.
thread_local std::unique_ptr<Zel::Mailbox> t_mailbox;

/// Returns  the calling thread's mailbox; null if it has none.
Zel::Mailbox* mailbox()
{
    if (t_mailbox != nullptr && t_mailbox->isInherited()) {
        t_mailbox.reset();
    }
    return t_mailbox.get();
}

Message takeOver(zel_msg** message)
{
    return message == nullptr ? Message() : Message(std::exchange(*message, nullptr));
}

/// The callers are not prepared for exceptions; a call for which there is no memory has failed.
template <typename Action>
void withoutExceptions(const Action& action)
{
    try {
        action();
    } catch (const std::exception&) {
    }
}

} // namespace

std::uint32_t __zel_create_mailbox(const char* name, std::uint32_t flags, const char* /*file*/, int /*line*/)
{
    std::uint32_t id = Zel::noMailbox;
    withoutExceptions([&] {
        if (name == nullptr || flags != 0 || mailbox() != nullptr) {
            return;
        }
        t_mailbox = Zel::Mailbox::create(name);
        if (t_mailbox != nullptr) {
            id = t_mailbox->id();
        }
    });
    return id;
}

zel_msg* __zel_alloc(std::size_t size, std::uint32_t msgNo, const char* /*file*/, int /*line*/)
{
    if (size < Zel::smallestMessage || size > Zel::largestMessage) {
        return nullptr;
    }
    Message message = Zel::allocateMessage(size);
    if (message != nullptr) {
        std::memcpy(message.get(), &msgNo, sizeof msgNo);
    }
    return message.release();
}

void __zel_locate_async(const char* name, zel_msg** reply, std::uint32_t from, const char* /*file*/, int /*line*/)
{
    Message message = takeOver(reply);
    if (name != nullptr && message != nullptr && from == ownMailbox && mailbox() != nullptr) {
        withoutExceptions([&] { t_mailbox->locate(name, std::move(message)); });
    }
}

zel_msg* __zel_receive(const std::uint32_t* filter, std::uint32_t timeoutMs, std::uint32_t from, const char* /*file*/,
                       int /*line*/)
{
    Message message;
    if (mailbox() != nullptr) {
        withoutExceptions([&] { message = t_mailbox->receive({filter, from}, timeoutMs); });
    }
    return message.release();
}

std::uint32_t __zel_sender(const zel_msg* msg, const char* /*file*/, int /*line*/)
{
    return msg == nullptr ? Zel::noMailbox : Zel::senderOf(msg);
}

void __zel_free(zel_msg** msg, const char* /*file*/, int /*line*/)
{
    takeOver(msg);
}

void __zel_send(zel_msg** msg, std::uint32_t to, std::uint32_t from, const char* /*file*/, int /*line*/)
{
    Message message = takeOver(msg);
    if (message != nullptr && from == ownMailbox && mailbox() != nullptr) {
        withoutExceptions([&] { t_mailbox->send(std::move(message), to); });
    }
}

std::size_t zel_standin_size(const zel_msg* msg)
{
    return msg == nullptr ? 0 : Zel::sizeOf(msg);
}

int zel_standin_process(const zel_msg* msg)
{
    return msg == nullptr ? 0 : Zel::originOf(msg).process;
}

const char* zel_standin_program(const zel_msg* msg)
{
    return msg == nullptr ? "" : Zel::originOf(msg).program;
}

void zel_standin_close_mailbox()
{
    if (mailbox() != nullptr) {
        withoutExceptions([] { t_mailbox->close(); });
    }
}
