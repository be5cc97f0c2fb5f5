/// Messages in memory: the sender's and receiver's bytes, with what the stand-in knows about them in front.
#ifndef ZEL_STANDIN_MESSAGE_H
#define ZEL_STANDIN_MESSAGE_H

#include <cstddef>
#include <cstdint>
#include <memory>

#include <zel.h>

namespace Zel {

constexpr std::uint32_t noMailbox = 0xFFFFFFFFU;
constexpr std::size_t smallestMessage = sizeof(std::uint32_t);
constexpr std::size_t largestMessage = std::size_t{64} << 20U;

struct FreeMessage
{
    void operator()(zel_msg* message) const;
};
using Message = std::unique_ptr<zel_msg, FreeMessage>;

/// Returns  a message with room for `size` bytes, none of them set; empty if there is no memory.
Message allocateMessage(std::size_t size);

/// Changes the size of a message and keeps its bytes.
///
/// Returns  false if there is no memory; the message is then as it was.
bool resizeMessage(Message& message, std::size_t size);

unsigned char* bytesOf(zel_msg* message);
std::size_t sizeOf(const zel_msg* message);
/// Returns  what a message that waits takes of the memory, with all that it takes beside its bytes.
std::size_t memoryOf(const zel_msg* message);
std::uint32_t numberOf(const zel_msg* message);
std::uint32_t senderOf(const zel_msg* message);
void setSender(zel_msg* message, std::uint32_t sender);

/// The process that sent a message.
struct Origin
{
    int process = 0;
    char program[16] = {}; // with its NUL
};
const Origin& originOf(const zel_msg* message);
void setOrigin(zel_msg* message, const Origin& origin);

} // namespace Zel

#endif
