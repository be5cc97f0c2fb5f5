/// A folder of the test's own for mailboxes.
#ifndef CORVANE_TESTS_PLATFORM_ZELSTANDINFIXTURE_H
#define CORVANE_TESTS_PLATFORM_ZELSTANDINFIXTURE_H

#include <filesystem>
#include <future>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <zelStandin.h>

#include "platform/conformance/suite.h"
#include "tests/support/runtimeFolder.h"

namespace Corvane::Testing {

/// Runs on a thread of its own, whose mailbox ends with it.
template <typename Action>
auto onThread(const Action& action)
{
    return std::async(std::launch::async, action).get();
}

class ZelStandin : public testing::Test
{
protected:
    std::filesystem::path meetingFolder() const { return m_folder.path() / ("zel-" + std::to_string(::geteuid())); }

    std::vector<std::filesystem::path> sockets() const
    {
        const std::filesystem::directory_iterator all(meetingFolder());
        return {begin(all), end(all)};
    }

    static std::uint32_t locate(const std::string& name, std::uint32_t timeoutMs = 0)
    {
        return Conformance::ask(name, 0x2300), Conformance::located(0x2300, timeoutMs);
    }

    /// Sends a message from a thread of its own and expects it here.
    static void expectToBeReached(std::uint32_t own, std::size_t size = 5000)
    {
        const Conformance::Numbered message{7, size};
        auto sent = std::async(std::launch::async, [&] {
            Conformance::create("sender");
            message.sendTo(own);
        });
        EXPECT_TRUE(message.isNext());
        sent.get();
    }

    const RuntimeFolder m_folder;
};

} // namespace Corvane::Testing

#endif
