/// Messages in memory.
#include "message.h"

#include <cstdlib>
#include <cstring>

namespace Zel {

namespace {

/// Stands in front of a message's bytes and keeps them aligned for any type.
struct alignas(std::max_align_t) Head
{
    std::size_t size;
    std::uint32_t sender;
    Origin origin;
};

Head* headOf(zel_msg* message)
{
    return static_cast<Head*>(static_cast<void*>(message)) - 1;
}

const Head* headOf(const zel_msg* message)
{
    return static_cast<const Head*>(static_cast<const void*>(message)) - 1;
}

zel_msg* messageOf(Head* head)
{
    return static_cast<zel_msg*>(static_cast<void*>(head + 1));
}

} // namespace

void FreeMessage::operator()(zel_msg* message) const
{
    std::free(headOf(message));
}

Message allocateMessage(std::size_t size)
{
    auto* const head = static_cast<Head*>(std::malloc(sizeof(Head) + size));
    if (head == nullptr) {
        return {};
    }
    head->size = size;
    head->sender = noMailbox;
    head->origin = {};
    return Message(messageOf(head));
}

bool resizeMessage(Message& message, std::size_t size)
{
    auto* const head = static_cast<Head*>(std::realloc(headOf(message.get()), sizeof(Head) + size));
    if (head == nullptr) {
        return false;
    }
    static_cast<void>(message.release()); // realloc() has taken it over
    head->size = size;
    message.reset(messageOf(head));
    return true;
}

unsigned char* bytesOf(zel_msg* message)
{
    return static_cast<unsigned char*>(static_cast<void*>(message));
}

std::size_t sizeOf(const zel_msg* message)
{
    return headOf(message)->size;
}

std::size_t memoryOf(const zel_msg* message)
{
    constexpr std::size_t placeInQueue = 24;
    constexpr std::size_t allocation = 16;
    return sizeOf(message) + sizeof(Head) + placeInQueue + allocation;
}

std::uint32_t numberOf(const zel_msg* message)
{
    std::uint32_t number = 0;
    std::memcpy(&number, message, sizeof number);
    return number;
}

std::uint32_t senderOf(const zel_msg* message)
{
    return headOf(message)->sender;
}

void setSender(zel_msg* message, std::uint32_t sender)
{
    headOf(message)->sender = sender;
}

const Origin& originOf(const zel_msg* message)
{
    return headOf(message)->origin;
}

void setOrigin(zel_msg* message, const Origin& origin)
{
    headOf(message)->origin = origin;
}

} // namespace Zel
