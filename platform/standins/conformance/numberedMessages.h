/// Messages whose every byte follows from their index and size, so that a receiver knows a torn one.
#ifndef ZEL_CONFORMANCE_NUMBEREDMESSAGES_H
#define ZEL_CONFORMANCE_NUMBEREDMESSAGES_H

#include <cstddef>
#include <cstdint>
#include <string>

#include <zel.h>

namespace Conformance {

constexpr std::uint32_t noMailbox = 0xFFFFFFFF;
constexpr std::uint32_t ownMailbox = 0xFFF00000;
constexpr std::uint32_t anySender = 0xFFF11111;
constexpr std::uint32_t patience = 60000; // milliseconds; to fail rather than to hang

constexpr std::uint32_t numberedNo = 0x2001;

/// Returns  a size between 12 bytes and `largest`, another one for every index.
std::size_t sizeOfMessage(std::uint32_t index, std::size_t largest);

/// Sends message number `index` of `size` bytes, 12 at least, to `to`.
void sendNumbered(std::uint32_t to, std::uint32_t index, std::size_t size);

/// Returns  what is wrong with a message that should be number `index`; empty if it is whole.
std::string flawOf(const zel_msg* message, std::uint32_t index, std::size_t size);

/// Takes the next message with `msgNo`, or null after `timeoutMs`.
zel_msg* receive(std::uint32_t msgNo, std::uint32_t timeoutMs = patience, std::uint32_t from = anySender);

/// Returns  the mailbox of that name, as soon as it exists; noMailbox if it doesn't within the patience.
std::uint32_t locate(const std::string& name);

/// Returns  a mailbox name that no other run of any program uses.
std::string uniqueName(const std::string& purpose);

} // namespace Conformance

#endif
