// SPDX-License-Identifier: MIT
/// What tests of the platform libraries share: other processes, numbered messages, and short forms of the calls.
///
/// Each test runs in a process of its own. It makes its peers before it uses the libraries: what these do in a child
/// made by fork() after their first use is up to them.
#ifndef CONFORMANCE_SUITE_H
#define CONFORMANCE_SUITE_H

#include <array>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <future>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <pindle/activeObjectIf.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#include <zel.h>

namespace Conformance {

constexpr std::uint32_t patienceMs = 60000; // a test fails rather than hangs
constexpr unsigned int mostSeconds = 120;   // of a peer
constexpr std::size_t mebibyte = std::size_t{1} << 20U;

/// Another process, which runs a function and ends. Test and peer tell each other numbers.
class Peer
{
public:
    explicit Peer(const std::function<void(const Peer& test)>& run)
    {
        std::array<int, 2> ends = {};
        ::socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data());
        m_pid = ::fork();
        m_socket = ends[m_pid == 0 ? 1 : 0];
        ::close(ends[m_pid == 0 ? 0 : 1]);
        if (m_pid == 0) {
            ::alarm(mostSeconds);
            run(*this);
            std::exit(0);
        }
    }
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;
    ~Peer() { m_pid < 0 ? 0 : (kill(), finish()); }

    void tell(std::uint32_t number) const { ::send(m_socket, &number, sizeof number, MSG_NOSIGNAL); }
    /// Returns  what the other side tells; 0 if it has ended.
    std::uint32_t hear() const
    {
        std::uint32_t number = 0;
        return ::recv(m_socket, &number, sizeof number, MSG_WAITALL) == sizeof number ? number : 0;
    }
    void kill() const { ::kill(m_pid, SIGKILL); }
    /// Returns  its exit status, or minus the signal that ended it.
    int finish()
    {
        int status = 0;
        ::waitpid(std::exchange(m_pid, -1), &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

private:
    pid_t m_pid = -1;
    int m_socket = -1;
};

inline std::uint32_t create(const std::string& name)
{
    return __zel_create_mailbox(name.c_str(), 0, "", 0);
}

/// Makes a function for a peer that owns a mailbox from one number that it hears to the next.
inline auto holdName(const std::string& name)
{
    return [name](const Peer& test) {
        test.hear();
        test.tell(create(name));
        test.hear();
    };
}

inline zel_msg* receive(std::uint32_t number, std::uint32_t timeoutMs = patienceMs, std::uint32_t from = ZEL_ANY_SENDER)
{
    const std::array<std::uint32_t, 2> filter = {1, number};
    return __zel_receive(filter.data(), timeoutMs, from, "", 0);
}

/// Asks for a mailbox; the reply is message `number`. located() returns the mailbox that the reply names,
/// ZEL_NO_MAILBOX if it doesn't come in time.
inline void ask(const std::string& name, std::uint32_t number)
{
    zel_msg* reply = __zel_alloc(sizeof number, number, "", 0);
    __zel_locate_async(name.c_str(), &reply, ZEL_OWN_MAILBOX, "", 0);
}
inline std::uint32_t located(std::uint32_t number, std::uint32_t timeoutMs = patienceMs)
{
    zel_msg* reply = receive(number, timeoutMs);
    const std::uint32_t id = reply == nullptr ? ZEL_NO_MAILBOX : __zel_sender(reply, "", 0);
    __zel_free(&reply, "", 0);
    return id;
}

/// A message each byte of which follows from its index and size: 12 bytes at least.
struct Numbered
{
    static constexpr std::uint32_t number = 0x2001;
    std::uint32_t index;
    std::size_t size;

    std::vector<unsigned char> bytes() const
    {
        const std::uint32_t words[] = {number, index, static_cast<std::uint32_t>(size)};
        std::vector<unsigned char> result(size);
        for (std::size_t offset = 0; offset < size; ++offset) {
            result[offset] = static_cast<unsigned char>(index * 131 + offset + (offset >> 8U));
        }
        std::memcpy(result.data(), words, sizeof words);
        return result;
    }

    void sendTo(std::uint32_t mailbox) const
    {
        zel_msg* message = __zel_alloc(size, number, "", 0);
        std::memcpy(static_cast<void*>(message), bytes().data(), size);
        __zel_send(&message, mailbox, ZEL_OWN_MAILBOX, "", 0);
    }

    /// Returns  whether a received message is this one, whole. Frees it.
    bool is(zel_msg* message) const
    {
        const auto equals = [&](std::size_t count) { return std::memcmp(message, bytes().data(), count) == 0; };
        const bool isThis = message != nullptr && equals(12) && equals(size); // else it may be shorter
        __zel_free(&message, "", 0);
        return isThis;
    }

    bool isNext(std::uint32_t timeoutMs = patienceMs) const { return is(receive(number, timeoutMs)); }
};

using Pindle::ActiveObject::V1::ActiveObjectIf;

inline std::shared_ptr<ActiveObjectIf> start(const std::function<void()>& init)
{
    return ActiveObjectIf::create(init, Pindle::ActiveObject::V1::SchedulingPolicy{0});
}

/// Waits until every job that was posted before has run.
inline void waitForJobs(ActiveObjectIf& object)
{
    std::promise<void> done;
    object.post([&] { done.set_value(); });
    done.get_future().wait();
}

} // namespace Conformance

#endif
