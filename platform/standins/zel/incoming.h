/// One connection into a mailbox, and how messages travel on it.
///
/// A frame is a header of three 32-bit words in the host's byte order (mark, size, sender) and the message's bytes.
/// Anyone who can open the socket can write to it: nothing is believed that isn't checked, and memory is taken only as
/// bytes arrive.
#ifndef ZEL_STANDIN_INCOMING_H
#define ZEL_STANDIN_INCOMING_H

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>

#include "fd.h"
#include "message.h"

namespace Zel {

struct FrameHeader
{
    std::uint32_t mark;
    std::uint32_t size;
    std::uint32_t sender;
};
constexpr std::uint32_t frameMark = 0x5A454C31;

/// A message that has arrived, and the count of its connection in which it stands until it is received; null if it came
/// by no connection.
struct Arrived
{
    Message message;
    std::shared_ptr<std::size_t> waitingBytes;
};

class Incoming
{
public:
    explicit Incoming(Fd connection) : m_connection(std::move(connection)) {}

    /// Takes what has arrived, up to a buffer full, and appends the messages that became whole.
    ///
    /// Returns  false if the connection is at its end, or carries something that isn't a message.
    bool read(std::deque<Arrived>& arrived);

    /// No more is sent on this connection; what was sent can still be read.
    void refuseMore();

    int fd() const { return m_connection.get(); }
    bool hasDelivered() const { return m_hasDelivered; }
    /// Bytes of its messages that have arrived and were not received yet.
    std::size_t waitingBytes() const { return *m_waitingBytes; }
    /// Memory of a message that has arrived in part.
    std::size_t partialBytes() const { return m_partial ? sizeOf(m_partial.get()) : 0; }

private:
    std::size_t takeHeader(const unsigned char* bytes, std::size_t count);
    bool startMessage();
    /// Makes room for the bytes that come next.
    bool growTo(std::size_t size);
    void finishMessage(std::deque<Arrived>& arrived);

    Fd m_connection;
    FrameHeader m_header = {};
    std::size_t m_headerBytes = 0;
    Message m_partial; // there once the header is whole
    std::size_t m_partialFill = 0;
    bool m_hasDelivered = false;
    std::shared_ptr<std::size_t> m_waitingBytes = std::make_shared<std::size_t>(0);
};

} // namespace Zel

#endif
