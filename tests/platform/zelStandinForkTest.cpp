/// How the stand-in for libzel takes a fork() without exec(): the mailboxes stay the parent's.
#include <array>
#include <cstdint>
#include <cstdlib>
#include <iostream>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/platform/zelStandinFixture.h"

namespace {

using namespace Conformance;
using namespace Corvane::Testing;

constexpr unsigned int hangSeconds = 60;

/// Runs `action` in a child made by fork(), which then ends as a program does.
///
/// Returns  the child's exit status, which is what the action returns; -1 if it was killed, as one is that hangs.
template <typename Action>
int inChild(const Action& action)
{
    std::cout.flush();
    const pid_t child = ::fork();
    if (child == 0) {
        ::alarm(hangSeconds);
        std::exit(action());
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

class ZelStandinInAForkedChild : public ZelStandin
{
};

/// Where a child goes on as a program does, and not only with what a signal handler may do.
class ZelStandinInARunningForkedChild : public ZelStandin
{
protected:
    void SetUp() override
    {
#ifdef CORVANE_TEST_SANITIZED
        GTEST_SKIP() << "a sanitizer may leave locks of its own to a child that another thread holds";
#endif
    }
};

TEST_F(ZelStandinInARunningForkedChild, LeavesTheMailboxOfTheParentWhereItIs)
{
    onThread([] {
        const std::uint32_t own = create("own");
        EXPECT_EQ(inChild([] { return 0; }), 0);
        EXPECT_EQ(onThread([] {
                      create("seeker");
                      return find("own");
                  }),
                  own);
        expectToBeReached(own);
        EXPECT_EQ(onThread([] { return create("own"); }), noMailbox);
    });
}

TEST_F(ZelStandinInARunningForkedChild, HasNoMailboxUntilItMakesOne)
{
    onThread([] {
        const std::uint32_t own = create("own");
        onThread([own] {
            create("sender");
            sendNumbered(own, 0, 100);
        });
        EXPECT_EQ(inChild([own] {
                      zel_standin_close_mailbox();
                      if (receive(numberedNo, 0) != nullptr || receive(numberedNo, 0xFFFFFFFF) != nullptr) {
                          return 1; // the parent's message
                      }
                      if (create("own") != noMailbox) {
                          return 2;
                      }
                      if (create("child") == noMailbox) {
                          return 3;
                      }
                      sendNumbered(own, 1, 100);
                      return 0;
                  }),
                  0);
        for (std::uint32_t index = 0; index < 2; ++index) {
            zel_msg* message = receive(numberedNo);
            EXPECT_EQ(flawOf(message, index, 100), "");
            __zel_free(&message, "", 0);
        }
    });
}

TEST_F(ZelStandinInAForkedChild, DoesNotKeepTheNameOfAMailboxThatHasEnded)
{
    std::array<int, 2> end = {};
    ASSERT_EQ(::pipe(end.data()), 0);
    pid_t child = -1;
    std::uint32_t own = noMailbox;
    onThread([&] {
        own = create("own");
        child = ::fork();
        if (child == 0) { // it has all descriptors, and never comes to exec()
            ::alarm(hangSeconds);
            ::close(end[1]);
            char byte = 0;
            _exit(static_cast<int>(::read(end[0], &byte, 1)));
        }
    });
    onThread([own] {
        EXPECT_NE(create("own"), noMailbox);
        for (std::uint32_t index = 0; index < 4; ++index) {
            sendNumbered(own, index, mebibyte); // to nobody: returns, or this test hangs
        }
    });
    ::close(end[0]);
    ::close(end[1]);
    int status = -1;
    ::waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
}

} // namespace
