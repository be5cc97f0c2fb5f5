/// One connection into a mailbox.
#include "incoming.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <string>
#include <utility>

#include <sys/socket.h>

namespace Zel {

namespace {

constexpr std::size_t readSize = std::size_t{64} << 10U;
constexpr std::size_t move = std::size_t{256} << 10U; // what a sender that means it writes in less than a second
constexpr std::chrono::seconds longestForAMove{1};

/// Returns  the process at the other end, and its program's name if it still runs.
Origin originOf(int connection)
{
    ucred peer = {};
    socklen_t length = sizeof peer;
    Origin origin;
    if (::getsockopt(connection, SOL_SOCKET, SO_PEERCRED, &peer, &length) == 0) {
        origin.process = peer.pid;
        std::ifstream("/proc/" + std::to_string(peer.pid) + "/comm").getline(origin.program, sizeof origin.program);
    }
    return origin;
}

} // namespace

Incoming::Incoming(Fd connection) : m_connection(std::move(connection)), m_origin(originOf(m_connection.get())) {}

bool Incoming::read(std::deque<Arrived>& arrived, Time now)
{
    std::array<unsigned char, readSize> buffer; // NOLINT(cppcoreguidelines-pro-type-member-init): read into at once
    const ssize_t result = ::recv(m_connection.get(), buffer.data(), buffer.size(), MSG_DONTWAIT);
    if (result <= 0) {
        return result < 0 && (errno == EAGAIN || errno == EINTR);
    }
    const unsigned char* next = buffer.data();
    auto left = static_cast<std::size_t>(result);
    while (left > 0) {
        if (!m_partial) {
            m_movedAt = m_headerBytes == 0 ? now : m_movedAt;
            const std::size_t taken = takeHeader(next, left);
            next += taken;
            left -= taken;
            if (m_headerBytes < sizeof m_header) {
                return true;
            }
            if (!startMessage()) {
                return false;
            }
            continue;
        }
        const std::size_t taken = std::min(left, m_header.size - m_partialFill);
        if (!growTo(m_partialFill + taken)) {
            return false;
        }
        std::memcpy(bytesOf(m_partial.get()) + m_partialFill, next, taken);
        m_partialFill += taken;
        if (m_partialFill - m_movedTo >= move) {
            m_movedAt = now;
            m_movedTo = m_partialFill;
        }
        next += taken;
        left -= taken;
        if (m_partialFill == m_header.size) {
            finishMessage(arrived);
        }
    }
    return true;
}

void Incoming::refuseMore()
{
    ::shutdown(m_connection.get(), SHUT_RD);
}

void Incoming::end(std::deque<Arrived>& arrived, Time now)
{
    refuseMore(); // from here on the sender knows, so what is read now is all that it believes sent
    while (read(arrived, now)) {
    }
}

bool Incoming::isSlow(Time now) const
{
    return isInsideMessage() && !needsRoom() && now - m_movedAt > longestForAMove;
}

std::size_t Incoming::takeHeader(const unsigned char* bytes, std::size_t count)
{
    const std::size_t taken = std::min(count, sizeof m_header - m_headerBytes);
    std::memcpy(static_cast<unsigned char*>(static_cast<void*>(&m_header)) + m_headerBytes, bytes, taken);
    m_headerBytes += taken;
    return taken;
}

bool Incoming::startMessage()
{
    if (m_header.mark != frameMark || m_header.size < smallestMessage || m_header.size > largestMessage) {
        return false;
    }
    m_partial = allocateMessage(std::min<std::size_t>(m_header.size, readSize));
    m_partialFill = 0;
    m_movedTo = 0;
    return m_partial != nullptr;
}

bool Incoming::growTo(std::size_t size)
{
    const std::size_t room = sizeOf(m_partial.get());
    return size <= room || resizeMessage(m_partial, std::min<std::size_t>(std::max(size, 2 * room), m_header.size));
}

void Incoming::finishMessage(std::deque<Arrived>& arrived)
{
    setSender(m_partial.get(), m_header.sender);
    setOrigin(m_partial.get(), m_origin);
    m_waiting->bytes += memoryOf(m_partial.get());
    arrived.push_back({std::move(m_partial), m_waiting});
    m_headerBytes = 0;
    m_room = 0;
}

} // namespace Zel
