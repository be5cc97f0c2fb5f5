/// A thread's mailbox: what comes in, what is waited for, and the connections to those it sends to.
///
/// The sockets are the queue. Nothing is read before the thread asks for a message, so a receiver that doesn't keep up
/// stops its senders in the kernel; there is no thread and no lock of the stand-in's own.
#ifndef ZEL_STANDIN_MAILBOX_H
#define ZEL_STANDIN_MAILBOX_H

#include <chrono>
#include <cstdint>
#include <deque>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <poll.h>
#include <sys/types.h>
#include <unistd.h>

#include "incoming.h"
#include "locator.h"
#include "meetingPoint.h"
#include "message.h"

namespace Zel {

/// Which messages a receive takes.
struct Filter
{
    const std::uint32_t* numbers = nullptr; // a count, then as many message numbers; null: all
    std::uint32_t sender = 0;

    bool matches(const zel_msg* message) const;
};

class Mailbox
{
public:
    /// Returns  null if the name is taken or can't be.
    static std::unique_ptr<Mailbox> create(const std::string& name);

    Mailbox(const Mailbox&) = delete;
    Mailbox& operator=(const Mailbox&) = delete;
    ~Mailbox();

    std::uint32_t id() const { return m_address.id; }
    /// Returns  whether this process is a child made by fork(). The mailbox is the parent's then: the child may destroy
    ///          its copy, which closes the descriptors, and do nothing else with it.
    bool isInherited() const { return ::getpid() != m_process; }
    void locate(std::string name, Message reply);
    Message receive(const Filter& filter, std::uint32_t timeoutMs);
    void send(Message message, std::uint32_t to);
    /// Ends what comes in; see zel_standin_close_mailbox().
    void close();

private:
    using Clock = std::chrono::steady_clock;

    Mailbox(MeetingPoint meetingPoint, std::string name, Address address);

    Message takeArrived(const Filter& filter);
    int waitMs(bool forEver, Clock::time_point deadline) const;
    /// Waits for input and takes in what is there, up to a buffer full of each connection.
    ///
    /// Returns  false if nothing was there.
    bool takeIn(int timeoutMs);
    void acceptAll();
    /// Ends the connection that has been silent longest between two messages, or else one with a slow message; except
    /// where messages wait to be received: its sender would come again, as one of whom none wait. If the mailbox is
    /// closed, any.
    ///
    /// Returns  false if there is none.
    bool makePlace();
    void readFrom(std::list<Incoming>::iterator connection);
    /// Lets long messages come, first come first served, as far as there is memory for them.
    void giveRoom();
    /// Ends a connection that has room for a slow message.
    void endSlow();
    void end(std::list<Incoming>::iterator connection);
    void remove(std::list<Incoming>::iterator connection);
    /// Closes the connections to receivers that have gone.
    void forgetTheGone();
    bool sendOn(int connection, zel_msg* message) const;

    const pid_t m_process = ::getpid();
    MeetingPoint m_meetingPoint; // where others are found now; the locator follows it
    const std::string m_name;
    Address m_address;
    bool m_isClosed = false;
    bool m_isFull = false;        // no descriptor, or no place, for another connection
    bool m_isShort = false;       // no room for a long message that has begun
    Incoming::Time m_spent = {};  // in waiting for input and taking it in
    std::size_t m_endedBytes = 0; // of messages that wait to be received, and whose connections have ended

    std::list<Incoming> m_incoming; // the one that has moved last is at the end
    std::deque<Arrived> m_arrived;
    Locator m_locator{m_meetingPoint};
    std::map<std::uint32_t, Fd> m_outgoing;
    // Found gone last. Whoever goes on sending there shall not be slower than with a receiver. An id is drawn from
    // 2^32, so it doesn't come back.
    std::uint32_t m_gone = noMailbox;
    std::vector<pollfd> m_pollSet;
};

} // namespace Zel

#endif
