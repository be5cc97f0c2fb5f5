// SPDX-License-Identifier: MIT
/// Messages in memory, and how they travel.
///
/// A datagram is a message's head and bytes. The datagram of a long message holds its first bytes, so that the kernel
/// counts it as large and lets its sender wait. The other bytes are in a sealed memory file, whose descriptor goes with
/// it. The kernel drops a descriptor for which the receiver has no room. So a head alone announces a long message, and
/// while one is announced the receiver takes a datagram only after a look has shown that all of it is here.
#ifndef ZEL_STANDIN_MESSAGE_H
#define ZEL_STANDIN_MESSAGE_H

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>
#include <zel.h>

namespace Zel {

/// A file descriptor with one owner, which closes it.
class Fd // NOLINT(cppcoreguidelines-special-member-functions): it moves, so it can't be copied
{
public:
    explicit Fd(int fd = -1) : m_fd(fd) {}
    Fd(Fd&& other) noexcept : m_fd(std::exchange(other.m_fd, -1)) {}
    Fd& operator=(Fd&& other) noexcept
    {
        std::swap(m_fd, other.m_fd);
        return *this;
    }
    ~Fd() { m_fd < 0 ? 0 : ::close(m_fd); }
    int get() const { return m_fd; }
    explicit operator bool() const { return m_fd >= 0; }

private:
    int m_fd;
};

/// Stands in front of a message's bytes, keeps them aligned for any type, and travels with them.
struct alignas(std::max_align_t) Head
{
    std::uint64_t size = 0;
    std::uint32_t sender = ZEL_NO_MAILBOX;
    std::int32_t process = 0; // the receiver enters what the kernel says
    char program[16] = {};    // as the sender calls itself; ends in NUL
};

struct FreeMessage
{
    void operator()(Head* message) const { std::free(message); }
};
using Message = std::unique_ptr<Head, FreeMessage>;

constexpr std::size_t largestDatagram = 200000;
constexpr int seals = F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE;

/// A datagram for sendmsg() and recvmsg(): one block of bytes, who sent it, and a descriptor.
struct Datagram
{
    Datagram(void* bytes, std::size_t size) : part{bytes, size}
    {
        header.msg_iov = &part;
        header.msg_iovlen = 1;
        header.msg_control = ancillary;
    }

    void readAncillary(ucred& from, std::array<int, 2>& descriptors)
    {
        for (auto* found = CMSG_FIRSTHDR(&header); found != nullptr; found = CMSG_NXTHDR(&header, found)) {
            void* const data = found->cmsg_type == SCM_RIGHTS ? static_cast<void*>(descriptors.data()) : &from;
            std::memcpy(data, CMSG_DATA(found), found->cmsg_len - CMSG_LEN(0));
        }
    }

    iovec part;
    msghdr header = {};
    alignas(cmsghdr) char ancillary[CMSG_SPACE(sizeof(ucred)) + CMSG_SPACE(sizeof(int))] = {};
};

/// Sends a block of bytes, and a descriptor if there is one. Returns 0 or an errno.
inline int sendDatagram(int connection, char* bytes, std::size_t size, int file)
{
    Datagram datagram(bytes, size);
    if (file >= 0) {
        datagram.header.msg_controllen = CMSG_SPACE(sizeof file);
        *CMSG_FIRSTHDR(&datagram.header) = {CMSG_LEN(sizeof file), SOL_SOCKET, SCM_RIGHTS};
        std::memcpy(CMSG_DATA(CMSG_FIRSTHDR(&datagram.header)), &file, sizeof file);
    }
    int error = EINTR;
    while (error == EINTR) {
        error = ::sendmsg(connection, &datagram.header, MSG_NOSIGNAL) < 0 ? errno : 0;
    }
    return error;
}

inline bool isMessageSize(std::size_t size)
{
    return size >= 4 && size <= std::size_t{64} << 20U;
}

/// Returns  a message with room for `size` bytes, none of them set; empty for a wrong size or want of memory.
inline Message allocateMessage(std::size_t size)
{
    void* const memory = isMessageSize(size) ? std::malloc(sizeof(Head) + size) : nullptr;
    return Message(memory == nullptr ? nullptr : new (memory) Head{size});
}

/// Returns  whether an errno tells of what passes: there will be descriptors or memory again.
inline bool isShortage(int error)
{
    return error == EMFILE || error == ENFILE || error == ENOMEM || error == ENOBUFS || error == ETOOMANYREFS;
}

/// Reads what the datagram of a long message lacks. A file that isn't sealed may be any file, and reading it may block.
inline bool readRest(const Fd& file, char* bytes, std::size_t size)
{
    return size == 0 || (::fcntl(file.get(), F_GET_SEALS) == seals &&
                         ::pread(file.get(), bytes, size, 0) == static_cast<ssize_t>(size));
}

/// Sends a message, and waits while the receiver has too many. Returns 0 or an errno.
inline int sendMessage(int connection, Head& message)
{
    auto* const bytes = reinterpret_cast<char*>(&message);
    const std::size_t size = sizeof message + message.size;
    if (size <= largestDatagram) {
        return sendDatagram(connection, bytes, size, -1);
    }
    const std::size_t rest = size - largestDatagram;
    const Fd file(::memfd_create("zel", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    if (!file || ::write(file.get(), bytes + largestDatagram, rest) != static_cast<ssize_t>(rest) ||
        ::fcntl(file.get(), F_ADD_SEALS, seals) != 0) {
        return isShortage(errno) ? errno : EFBIG; // it will never go
    }
    const int error = sendDatagram(connection, bytes, sizeof message, -1);
    return error != 0 ? error : sendDatagram(connection, bytes, largestDatagram, file.get());
}

/// Takes the next datagram out of a socket; `message` stays empty if that isn't one from a process of this user. The
/// receiver keeps room for a datagram, and how many long messages are announced, from one call to the next.
///
/// Returns  0, or an errno: EAGAIN if there is none; another if it can't be taken now, and stays in the socket.
inline int receiveMessage(int socket, Message& room, int& announced, Message& message, bool mayWait)
{
    if (room == nullptr && (room = allocateMessage(largestDatagram - sizeof(Head))) == nullptr) {
        return ENOMEM;
    }
    Datagram datagram(room.get(), largestDatagram);
    datagram.header.msg_controllen = sizeof datagram.ancillary;
    const bool isLook = announced > 0;
    const int flags = MSG_CMSG_CLOEXEC | (mayWait ? 0 : MSG_DONTWAIT) | (isLook ? MSG_PEEK : 0);
    const ssize_t length = ::recvmsg(socket, &datagram.header, flags);
    if (length < 0) {
        return errno;
    }
    ucred from = {0, static_cast<uid_t>(-1), 0};
    std::array<int, 2> descriptors = {-1, -1}; // a stranger may send a second one, for which there is room, too
    datagram.readAncillary(from, descriptors);
    const Fd file(descriptors[0]);
    const Fd unwanted(descriptors[1]);
    static const uid_t user = ::geteuid();
    const bool isCut = (datagram.header.msg_flags & MSG_TRUNC) != 0; // longer than any that zel sends
    const bool isHead = !isCut && length >= ssize_t{sizeof(Head)} && from.uid == user && isMessageSize(room->size);
    const std::size_t size = isHead ? sizeof(Head) + room->size : 0;
    const auto arrived = static_cast<std::size_t>(length);
    const bool isLong = arrived == largestDatagram && size > arrived;
    const bool isWhole = isHead && size == arrived;
    Message taken = isLong || isWhole ? allocateMessage(room->size) : Message();
    if (isLong && (taken == nullptr || (datagram.header.msg_flags & MSG_CTRUNC) != 0)) {
        return taken == nullptr ? ENOMEM : EMFILE;
    }
    if (taken != nullptr) {
        std::memcpy(taken.get(), room.get(), arrived);
    } else if (isWhole) {
        taken = std::move(room); // it has more room than it needs, but isn't lost
    }
    if (taken != nullptr && readRest(file, reinterpret_cast<char*>(taken.get()) + arrived, size - arrived)) {
        taken->process = from.pid;
        taken->program[sizeof taken->program - 1] = '\0';
        message = std::move(taken);
    }
    isLook ? ::recv(socket, nullptr, 0, MSG_DONTWAIT) : 0;
    announced += static_cast<int>(isHead && length == sizeof(Head)) - static_cast<int>(isLook && isLong);
    return 0;
}

} // namespace Zel

#endif
