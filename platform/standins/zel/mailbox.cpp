/// A thread's mailbox.
#include "mailbox.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <limits>

#include <sys/socket.h>
#include <sys/uio.h>

namespace Zel {

namespace {

constexpr std::uint32_t anySender = 0xFFF11111U;
constexpr std::uint32_t forEverMs = 0xFFFFFFFFU;
constexpr std::size_t mostConnections = 512;
constexpr std::size_t mostWaitingBytes = std::size_t{8} << 20U; // of one sender, while others are wanted
constexpr std::size_t mostEndedBytes = std::size_t{64} << 20U;  // of senders that have gone since
constexpr std::size_t mostRoom = 2 * largestMessage;            // of all messages that are longer than a buffer
constexpr int mostAttemptsAtOnce = 100;     // to a receiver that ends each connection before it has the message
constexpr int mostRoundsPastTheTime = 1024; // enough for the largest message, and an end beside senders without one
constexpr int followMs = 5000;              // between two looks at whether the meeting folder is still that
constexpr int retryMs = 100; // where the system has run out of something and tells nobody when there is more

bool hasPlace(const Incoming& connection)
{
    return connection.waiting()->bytes < mostWaitingBytes;
}

} // namespace

bool Filter::matches(const zel_msg* message) const
{
    if (sender != anySender && sender != senderOf(message)) {
        return false;
    }
    const std::uint32_t count = numbers == nullptr ? 0 : numbers[0];
    return count == 0 || std::find(numbers + 1, numbers + 1 + count, numberOf(message)) != numbers + 1 + count;
}

std::unique_ptr<Mailbox> Mailbox::create(const std::string& name)
{
    auto meetingPoint = MeetingPoint::open();
    if (!meetingPoint) {
        return nullptr;
    }
    auto address = meetingPoint->takeName(name);
    if (!address) {
        return nullptr;
    }
    return std::unique_ptr<Mailbox>(new Mailbox(std::move(*meetingPoint), name, std::move(*address)));
}

Mailbox::Mailbox(MeetingPoint meetingPoint, std::string name, Address address)
    : m_meetingPoint(std::move(meetingPoint)), m_name(std::move(name)), m_address(std::move(address))
{
}

Mailbox::~Mailbox()
{
    if (!isInherited()) {
        close();
    }
}

void Mailbox::close()
{
    if (m_isClosed) {
        return;
    }
    m_isClosed = true;
    // A child between fork() and exec() has all descriptors too: closing them doesn't end what they stand for.
    ::shutdown(m_address.listener.get(), SHUT_RDWR);
    acceptAll();
    m_meetingPoint.releaseName(m_name, m_address);
    for (Incoming& connection : m_incoming) {
        connection.refuseMore();
    }
}

void Mailbox::locate(std::string name, Message reply)
{
    m_locator.request(std::move(name), std::move(reply));
    m_locator.check(m_arrived);
}

Message Mailbox::receive(const Filter& filter, std::uint32_t timeoutMs)
{
    const bool forEver = timeoutMs == forEverMs;
    const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(forEver ? 0 : timeoutMs);
    int roundsLeft = mostRoundsPastTheTime;
    for (;;) {
        if (Message message = takeArrived(filter)) {
            return message;
        }
        if (m_isClosed && m_incoming.empty()) {
            return {};
        }
        giveRoom();
        const int wait = waitMs(forEver, deadline);
        const bool isMore = takeIn(wait);
        if (wait == 0 && !m_isClosed && (!isMore || --roundsLeft == 0)) {
            return takeArrived(filter);
        }
    }
}

Message Mailbox::takeArrived(const Filter& filter)
{
    const auto found = std::find_if(m_arrived.begin(), m_arrived.end(),
                                    [&](const Arrived& arrived) { return filter.matches(arrived.message.get()); });
    if (found == m_arrived.end()) {
        return {};
    }
    Message message = std::move(found->message);
    if (found->waiting) {
        const std::size_t bytes = memoryOf(message.get());
        found->waiting->bytes -= bytes;
        m_endedBytes -= found->waiting->hasEnded ? bytes : 0;
    }
    m_arrived.erase(found);
    return message;
}

int Mailbox::waitMs(bool forEver, Clock::time_point deadline) const
{
    if (m_isClosed) {
        return 0;
    }
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
    const bool canTell = !m_isFull && !m_isShort && (!m_locator.isWaiting() || m_locator.fd() >= 0);
    const int longest = canTell ? m_locator.isWaiting() ? followMs : std::numeric_limits<int>::max() : retryMs;
    if (forEver) {
        return longest == std::numeric_limits<int>::max() ? -1 : longest;
    }
    return static_cast<int>(std::clamp<std::int64_t>(left, 0, longest));
}

bool Mailbox::takeIn(int timeoutMs)
{
    const Clock::time_point begun = Clock::now();
    // The descriptors by position: the listener, the locator's, then the connections'. A negative one is passed over.
    const bool wasFull = m_isFull;
    m_pollSet.clear();
    m_pollSet.push_back({wasFull ? -1 : m_address.listener.get(), POLLIN, 0});
    m_pollSet.push_back({m_locator.fd(), POLLIN, 0});
    for (const Incoming& connection : m_incoming) {
        const bool isWanted = m_isClosed || (hasPlace(connection) && !connection.needsRoom());
        m_pollSet.push_back({isWanted ? connection.fd() : -1, POLLIN, 0});
    }
    const int ready = ::poll(m_pollSet.data(), m_pollSet.size(), timeoutMs);
    if (ready < 0) {
        return true; // a signal; the caller looks at its clock again
    }
    std::size_t position = 2;
    for (auto next = m_incoming.begin(); position < m_pollSet.size(); ++position) {
        const auto connection = next++;
        if (m_pollSet[position].revents != 0) {
            readFrom(connection);
        }
    }
    if (m_isShort) {
        endSlow();
    }
    if (!m_isClosed && (wasFull || m_pollSet[0].revents != 0)) {
        acceptAll();
    }
    if (m_locator.isWaiting() && (ready == 0 || m_locator.fd() < 0 || m_pollSet[1].revents != 0)) {
        m_locator.check(m_arrived);
    }
    m_spent += Clock::now() - begun;
    return ready > 0;
}

void Mailbox::acceptAll()
{
    m_isFull = false;
    for (std::size_t accepted = 0; m_isClosed || accepted < mostConnections;) {
        if (!m_isClosed && m_incoming.size() >= mostConnections) {
            pollfd listener = {m_address.listener.get(), POLLIN, 0};
            if (::poll(&listener, 1, 0) <= 0) {
                return; // nobody needs a place
            }
            m_isFull = !makePlace();
        }
        m_isFull = m_isFull || (!m_isClosed && m_endedBytes >= mostEndedBytes);
        if (m_isFull) {
            return;
        }
        Fd connection(::accept4(m_address.listener.get(), nullptr, nullptr, SOCK_CLOEXEC));
        if (connection) {
            ++accepted;
            if (isSameUser(connection.get())) {
                m_incoming.emplace_back(std::move(connection));
                readFrom(std::prev(m_incoming.end()));
            }
        } else if (errno == EAGAIN || errno == EINVAL) { // the latter after shutdown()
            return;
        } else if (errno != EINTR && errno != ECONNABORTED && !makePlace()) {
            m_isFull = true; // out of descriptors or memory
            return;
        }
    }
}

bool Mailbox::makePlace()
{
    const auto isIdle = [](const Incoming& connection) {
        return connection.waiting()->bytes == 0 && !connection.isInsideMessage();
    };
    const auto isSlow = [this](const Incoming& connection) {
        return connection.waiting()->bytes == 0 && connection.isSlow(m_spent);
    };
    // On a closed mailbox nothing more comes in: any connection can go once it is read.
    auto found = m_isClosed ? m_incoming.begin() : std::find_if(m_incoming.begin(), m_incoming.end(), isIdle);
    if (found == m_incoming.end()) {
        found = std::find_if(m_incoming.begin(), m_incoming.end(), isSlow);
    }
    if (found == m_incoming.end()) {
        return false;
    }
    end(found);
    return true;
}

void Mailbox::end(std::list<Incoming>::iterator connection)
{
    connection->end(m_arrived, m_spent);
    remove(connection);
}

void Mailbox::remove(std::list<Incoming>::iterator connection)
{
    Waiting& waiting = *connection->waiting();
    waiting.hasEnded = true;
    m_endedBytes += waiting.bytes;
    m_incoming.erase(connection);
}

void Mailbox::readFrom(std::list<Incoming>::iterator connection)
{
    if (connection->read(m_arrived, m_spent)) {
        m_incoming.splice(m_incoming.end(), m_incoming, connection);
    } else {
        remove(connection);
    }
}

void Mailbox::giveRoom()
{
    std::size_t left = mostRoom;
    for (const Incoming& connection : m_incoming) {
        left -= connection.room();
    }
    m_isShort = false;
    for (Incoming& connection : m_incoming) {
        if (!connection.needsRoom() || !hasPlace(connection)) {
            continue;
        }
        if (connection.neededRoom() > left) {
            m_isShort = true;
            break;
        }
        connection.giveRoom(m_spent);
        left -= connection.room();
    }
}

void Mailbox::endSlow()
{
    const auto slow = std::find_if(m_incoming.begin(), m_incoming.end(), [this](const Incoming& connection) {
        return connection.room() > 0 && connection.isSlow(m_spent);
    });
    if (slow != m_incoming.end()) {
        end(slow);
    }
}

void Mailbox::send(Message message, std::uint32_t to)
{
    if (to == id()) {
        if (!m_isClosed) { // through its own socket it would wait for itself
            setSender(message.get(), to);
            m_arrived.push_back({std::move(message), nullptr});
        }
        return;
    }
    // A receiver that needs the place, or the memory, ends a connection even inside a message. It drops what it had of
    // it, and takes it whole on the next connection.
    for (int attempt = 0; to != m_gone; ++attempt) {
        if (attempt >= mostAttemptsAtOnce) {
            ::poll(nullptr, 0, retryMs);
        }
        auto known = m_outgoing.find(to);
        if (known == m_outgoing.end()) {
            bool isGone = false;
            Fd connection = m_meetingPoint.connectTo(to, isGone);
            m_gone = isGone ? to : m_gone;
            if (!connection) {
                attempt = mostAttemptsAtOnce;
                continue; // unless it is gone, there will be descriptors or memory again
            }
            forgetTheGone();
            known = m_outgoing.emplace(to, std::move(connection)).first;
        }
        if (sendOn(known->second.get(), message.get())) {
            return;
        }
        m_outgoing.erase(known);
    }
}

void Mailbox::forgetTheGone()
{
    for (auto next = m_outgoing.begin(); next != m_outgoing.end();) {
        const auto connection = next++;
        pollfd state = {connection->second.get(), 0, 0};
        if (::poll(&state, 1, 0) > 0) { // POLLHUP and POLLERR are not asked for, and always told
            m_outgoing.erase(connection);
        }
    }
}

bool Mailbox::sendOn(int connection, zel_msg* message) const
{
    FrameHeader header = {frameMark, static_cast<std::uint32_t>(sizeOf(message)), id()};
    std::array<iovec, 2> parts = {{{&header, sizeof header}, {bytesOf(message), sizeOf(message)}}};
    msghdr frame = {};
    frame.msg_iov = parts.data();
    frame.msg_iovlen = parts.size();
    while (frame.msg_iovlen > 0) {
        const ssize_t result = ::sendmsg(connection, &frame, MSG_NOSIGNAL);
        if (result < 0 && errno != EINTR) {
            return false;
        }
        auto sent = static_cast<std::size_t>(std::max<ssize_t>(result, 0));
        while (frame.msg_iovlen > 0 && sent >= frame.msg_iov->iov_len) {
            sent -= frame.msg_iov->iov_len;
            ++frame.msg_iov;
            --frame.msg_iovlen;
        }
        if (frame.msg_iovlen > 0) {
            frame.msg_iov->iov_base = static_cast<unsigned char*>(frame.msg_iov->iov_base) + sent;
            frame.msg_iov->iov_len -= sent;
        }
    }
    return true;
}

} // namespace Zel
