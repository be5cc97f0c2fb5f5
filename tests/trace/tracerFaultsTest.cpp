/// Applications whose tracing daemon is killed, stopped or too slow: they never wait for it, and each result is the
/// same.
#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include "tests/support/emulation.h"
#include "tests/support/liveSession.h"

namespace {

using namespace Corvane::Testing;

#ifdef CORVANE_TEST_SANITIZED
constexpr bool isSanitized = true;
#else
constexpr bool isSanitized = false;
#endif

/// Gives this process and its children a /run and a /dev/shm of their own. root has only one daemon on a machine, and
/// this test harms the one that it finds there.
///
/// Returns  why it can't; empty if it could.
std::string leaveTheMachinesDaemon()
{
    static const std::string reason = []() -> std::string {
        if (::geteuid() != 0) {
            return ""; // each LTTNG_HOME has a daemon of its own
        }
        if (::unshare(CLONE_NEWNS) != 0 || ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            ::mount("none", "/run", "tmpfs", 0, nullptr) != 0 ||
            ::mount("none", "/dev/shm", "tmpfs", 0, nullptr) != 0) {
            return std::string("root's daemon can't be kept apart from the machine's: ") + std::strerror(errno);
        }
        return "";
    }();
    return reason;
}

std::vector<int> childrenOf(int process)
{
    std::vector<int> children;
    for (const auto& thread : std::filesystem::directory_iterator("/proc/" + std::to_string(process) + "/task")) {
        std::ifstream file(thread.path() / "children");
        for (int child = 0; file >> child;) {
            children.push_back(child);
        }
    }
    return children;
}

class TracerFaults : public testing::Test
{
protected:
    void SetUp() override
    {
        if (isSanitized) {
            GTEST_SKIP() << "a live recording is not made under a sanitizer";
        }
        if (const std::string reason = leaveTheMachinesDaemon(); !reason.empty()) {
            GTEST_SKIP() << reason;
        }
        m_session = std::make_unique<LiveSession>();
        if (!m_session->whyNot().empty()) {
            GTEST_SKIP() << m_session->whyNot();
        }
        m_daemon = daemon();
        if (m_daemon == 0) {
            GTEST_SKIP() << "the machine's daemon records, and must not be harmed";
        }
        m_consumers = childrenOf(m_daemon);
        ASSERT_FALSE(m_consumers.empty());
    }

    void TearDown() override
    {
        for (const int process : m_stopped) {
            ::kill(process, SIGCONT); // or the session's end would wait for it
        }
    }

    /// Starts the application, and works until its events are recorded.
    std::unique_ptr<Companion> startTraced()
    {
        auto application =
            std::make_unique<Companion>(std::vector<std::string>{CORVANE_WORK_ON_DEMAND}, m_session->environment());
        m_session->follow(application->pid());
        expectRightResults(*application, 10);
        return application;
    }

    /// Expects  an answer at all, which means that nothing holds the application up, and right results.
    static void expectRightResults(Companion& application, unsigned int rounds)
    {
        application.writeLine("work " + std::to_string(rounds));
        EXPECT_EQ(application.readLine(), "right");
    }

    void stop(int process)
    {
        m_stopped.push_back(process);
        ASSERT_EQ(::kill(process, SIGSTOP), 0);
    }

    /// More events than all buffers hold.
    static constexpr unsigned int muchWork = 20'000;

    std::unique_ptr<LiveSession> m_session;
    int m_daemon = 0;
    std::vector<int> m_consumers;

private:
    /// Returns  the process of the session's daemon; 0 if the session didn't start it.
    int daemon() const
    {
        const std::string home = m_session->environment().at(0).substr(std::strlen("LTTNG_HOME="));
        int process = 0;
        std::ifstream((::geteuid() == 0 ? "/var/run/lttng" : home + "/.lttng") + "/lttng-sessiond.pid") >> process;
        return process;
    }

    std::vector<int> m_stopped;
};

TEST_F(TracerFaults, OfADaemonThatIsKilledHoldUpNobody)
{
    const auto application = startTraced();
    ASSERT_EQ(::kill(m_daemon, SIGKILL), 0);
    expectRightResults(*application, muchWork);
    for (const int consumer : m_consumers) {
        ::kill(consumer, SIGKILL); // it may have ended with its daemon
    }
    expectRightResults(*application, muchWork);
    EXPECT_EQ(application->finish(), 0);
}

TEST_F(TracerFaults, OfBuffersThatAreFullLoseEventsAndHoldUpNobody)
{
    if (isEmulated()) {
        GTEST_SKIP() << "an emulated program's events beyond the first buffer are lost, and nobody counts them";
    }
    const auto application = startTraced();
    for (const int consumer : m_consumers) {
        stop(consumer); // now nobody empties the buffers
    }
    expectRightResults(*application, muchWork);
    for (const int consumer : m_consumers) {
        ::kill(consumer, SIGCONT);
    }
    EXPECT_EQ(application->finish(), 0);
    try {
        m_session->finish();
        ADD_FAILURE() << "no event was lost: the buffers weren't full";
    } catch (const std::runtime_error& error) {
        EXPECT_THAT(error.what(), testing::HasSubstr("discarded"));
    }
}

TEST_F(TracerFaults, OfADaemonThatIsStoppedHoldUpNeitherWorkNorEndNorStart)
{
    const auto application = startTraced();
    stop(m_daemon);
    for (const int consumer : m_consumers) {
        stop(consumer);
    }
    expectRightResults(*application, muchWork);
    EXPECT_EQ(application->finish(), 0);
    // A program that starts waits 3 seconds to be registered, unless LTTNG_UST_REGISTER_TIMEOUT says otherwise.
    Companion late({CORVANE_WORK_ON_DEMAND}, {m_session->environment().at(0)});
    expectRightResults(late, 10);
    EXPECT_EQ(late.finish(), 0);
}

} // namespace
