/// One connection into a mailbox, and how messages travel on it.
///
/// A frame is a header of three 32-bit words in the host's byte order (mark, size, sender) and the message's bytes.
/// Anyone who can open the socket can write to it: nothing is believed that isn't checked, and memory is taken only as
/// bytes arrive.
#ifndef ZEL_STANDIN_INCOMING_H
#define ZEL_STANDIN_INCOMING_H

#include <chrono>
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

/// The memory of a connection's messages that have arrived and were not received yet.
struct Waiting
{
    std::size_t bytes = 0;
    bool hasEnded = false; // the connection
};

/// A message that has arrived, and where it is counted until it is received; null if it came by no connection.
struct Arrived
{
    Message message;
    std::shared_ptr<Waiting> waiting;
};

class Incoming
{
public:
    explicit Incoming(Fd connection);

    /// How long its owner has been receiving, in all.
    using Time = std::chrono::steady_clock::duration;

    /// Takes what has arrived, up to a buffer full, and appends the messages that became whole.
    ///
    /// Returns  false if the connection is at its end, or carries something that isn't a message.
    bool read(std::deque<Arrived>& arrived, Time now);

    /// No more is sent on this connection; what was sent can still be read.
    void refuseMore();

    /// Ends the connection without a loss: what was sent is read, and a sender that is in the middle of a message sends
    /// that again on a new connection.
    void end(std::deque<Arrived>& arrived, Time now);

    int fd() const { return m_connection.get(); }
    const std::shared_ptr<Waiting>& waiting() const { return m_waiting; }

    /// A message that is longer than a buffer is to be read only once there is room for all of it.
    bool needsRoom() const { return m_partial && m_room == 0 && m_header.size > sizeOf(m_partial.get()); }
    void giveRoom(Time now)
    {
        m_room = m_header.size;
        m_movedAt = now;
    }
    /// Memory that it was given and still needs.
    std::size_t room() const { return m_room; }
    std::size_t neededRoom() const { return m_header.size; }

    bool isInsideMessage() const { return m_headerBytes > 0; }
    /// Returns  whether its message comes so slowly, with nothing in its way, that others shall not wait for it.
    bool isSlow(Time now) const;

private:
    std::size_t takeHeader(const unsigned char* bytes, std::size_t count);
    bool startMessage();
    /// Makes room for the bytes that come next.
    bool growTo(std::size_t size);
    void finishMessage(std::deque<Arrived>& arrived);

    Fd m_connection;
    Origin m_origin;
    FrameHeader m_header = {};
    std::size_t m_headerBytes = 0;
    Message m_partial; // there once the header is whole
    std::size_t m_partialFill = 0;
    std::size_t m_room = 0;
    Time m_movedAt = {};       // when its message began, got room, or had got on a good deal
    std::size_t m_movedTo = 0; // and how far it was then
    std::shared_ptr<Waiting> m_waiting = std::make_shared<Waiting>();
};

} // namespace Zel

#endif
