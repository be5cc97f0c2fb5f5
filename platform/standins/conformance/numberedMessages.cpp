/// Messages whose every byte follows from their index and size.
#include "numberedMessages.h"

#include <array>
#include <atomic>
#include <cstring>

#include <unistd.h>

namespace Conformance {

namespace {

constexpr std::uint32_t locateReplyNo = 0x2000;

unsigned char byteAt(std::uint32_t index, std::size_t offset)
{
    return static_cast<unsigned char>(index * 131 + offset + (offset >> 8U));
}

std::uint32_t wordAt(const zel_msg* message, std::size_t position)
{
    std::uint32_t word = 0;
    std::memcpy(&word, reinterpret_cast<const unsigned char*>(message) + position * sizeof word, sizeof word);
    return word;
}

} // namespace

std::size_t sizeOfMessage(std::uint32_t index, std::size_t largest)
{
    constexpr std::uint32_t spread = 2654435761; // neighbours are far apart
    return 12 + std::size_t{index * spread + 13} % (largest - 11);
}

void sendNumbered(std::uint32_t to, std::uint32_t index, std::size_t size)
{
    zel_msg* message = __zel_alloc(size, numberedNo, "", 0);
    auto* const bytes = reinterpret_cast<unsigned char*>(message);
    const std::array<std::uint32_t, 2> words = {index, static_cast<std::uint32_t>(size)};
    std::memcpy(bytes + sizeof(std::uint32_t), words.data(), sizeof words);
    for (std::size_t offset = 12; offset < size; ++offset) {
        bytes[offset] = byteAt(index, offset);
    }
    __zel_send(&message, to, ownMailbox, "", 0);
}

std::string flawOf(const zel_msg* message, std::uint32_t index, std::size_t size)
{
    if (message == nullptr) {
        return "message " + std::to_string(index) + " didn't come";
    }
    if (wordAt(message, 1) != index || wordAt(message, 2) != size) {
        return "message " + std::to_string(wordAt(message, 1)) + " of " + std::to_string(wordAt(message, 2)) +
               " bytes came for message " + std::to_string(index) + " of " + std::to_string(size) + " bytes";
    }
    const auto* const bytes = reinterpret_cast<const unsigned char*>(message);
    for (std::size_t offset = 12; offset < size; ++offset) {
        if (bytes[offset] != byteAt(index, offset)) {
            return "message " + std::to_string(index) + " differs at byte " + std::to_string(offset);
        }
    }
    return "";
}

zel_msg* receive(std::uint32_t msgNo, std::uint32_t timeoutMs, std::uint32_t from)
{
    const std::array<std::uint32_t, 2> filter = {1, msgNo};
    return __zel_receive(filter.data(), timeoutMs, from, "", 0);
}

std::uint32_t locate(const std::string& name)
{
    zel_msg* reply = __zel_alloc(sizeof(std::uint32_t), locateReplyNo, "", 0);
    __zel_locate_async(name.c_str(), &reply, ownMailbox, "", 0);
    reply = receive(locateReplyNo);
    if (reply == nullptr) {
        return noMailbox;
    }
    const std::uint32_t id = __zel_sender(reply, "", 0);
    __zel_free(&reply, "", 0);
    return id;
}

std::string uniqueName(const std::string& purpose)
{
    static std::atomic<unsigned int> count{0};
    return purpose + "-" + std::to_string(::getpid()) + "-" + std::to_string(++count);
}

} // namespace Conformance
