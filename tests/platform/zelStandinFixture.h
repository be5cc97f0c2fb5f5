/// A mailbox folder of the test's own, and a foreign program's way into it.
#ifndef CORVANE_TESTS_PLATFORM_ZELSTANDINFIXTURE_H
#define CORVANE_TESTS_PLATFORM_ZELSTANDINFIXTURE_H

#include <array>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <future>
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <zelStandin.h>

#include "platform/standins/conformance/numberedMessages.h"
#include "tests/support/runtimeFolder.h"

namespace Corvane::Testing {

constexpr std::size_t mebibyte = std::size_t{1} << 20U;

inline std::uint32_t create(const std::string& name)
{
    return __zel_create_mailbox(name.c_str(), 0, "", 0);
}

/// Returns  the mailbox of that name, or noMailbox if there is none at the moment.
inline std::uint32_t find(const std::string& name)
{
    zel_msg* reply = __zel_alloc(4, 0x2300, "", 0);
    __zel_locate_async(name.c_str(), &reply, Conformance::ownMailbox, "", 0);
    reply = Conformance::receive(0x2300, 0);
    const std::uint32_t id = __zel_sender(reply, "", 0);
    __zel_free(&reply, "", 0);
    return id;
}

/// Runs on a thread of its own, whose mailbox ends with it.
template <typename Action>
auto onThread(const Action& action)
{
    return std::async(std::launch::async, action).get();
}

class ZelStandin : public testing::Test
{
protected:
    std::filesystem::path meetingPoint() const { return m_folder.path() / ("zel-" + std::to_string(::geteuid())); }

    /// A program of no good intentions: it writes to a mailbox's socket by itself.
    int connectTo(std::uint32_t id) const { return connectTo(addressOf(id)); }

    sockaddr_un addressOf(std::uint32_t id) const
    {
        std::array<char, 16> file = {};
        std::snprintf(file.data(), file.size(), "id-%x", id);
        const std::string path = meetingPoint() / file.data();
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        return address;
    }

    static int connectTo(const sockaddr_un& address)
    {
        const int connection = ::socket(AF_UNIX, SOCK_STREAM, 0);
        const auto* const generic = static_cast<const sockaddr*>(static_cast<const void*>(&address));
        return ::connect(connection, generic, sizeof address) == 0 ? connection : -1;
    }

    static bool write(int connection, const void* bytes, std::size_t size)
    {
        return ::send(connection, bytes, size, MSG_NOSIGNAL) == static_cast<ssize_t>(size);
    }

    /// A frame's header, as the mailbox expects it.
    static std::array<std::uint32_t, 3> header(std::uint32_t size) { return {0x5A454C31, size, 1}; }

    /// Sends a numbered message from another thread and expects it here.
    static void expectToBeReached(std::uint32_t own)
    {
        std::thread sender([own] {
            create(Conformance::uniqueName("sender"));
            Conformance::sendNumbered(own, 7, 5000);
        });
        zel_msg* message = Conformance::receive(Conformance::numberedNo);
        EXPECT_EQ(Conformance::flawOf(message, 7, 5000), "");
        __zel_free(&message, "", 0);
        sender.join();
    }

    const RuntimeFolder m_folder;
};

} // namespace Corvane::Testing

#endif
