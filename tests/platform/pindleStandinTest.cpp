/// What the stand-in for libpindle chose where its contract says "Stand-in", and what posting a job costs.
#include <array>
#include <atomic>
#include <chrono>
#include <cstdarg>
#include <thread>

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/futex.h>
#include <pthread.h>
#include <sys/syscall.h>

#include "platform/conformance/suite.h"
#include "tests/support/timeToEnd.h"

namespace {

using namespace Conformance;

thread_local int t_processQueries = 0;
thread_local int t_wakes = 0;

} // namespace

#ifndef CORVANE_TEST_SANITIZED // libpindle calls these, unless a sanitizer has put its own in their place
extern "C" [[gnu::visibility("default")]] pid_t getpid() noexcept
{
    ++t_processQueries;
    return static_cast<pid_t>(::syscall(SYS_getpid));
}

extern "C" [[gnu::visibility("default")]] long syscall(long number, ...) noexcept
{
    std::va_list list;
    va_start(list, number);
    std::array<long, 6> values = {};
    for (long& value : values) {
        value = va_arg(list, long);
    }
    va_end(list);
    t_wakes += number == SYS_futex && (values[1] & FUTEX_CMD_MASK) == FUTEX_WAKE ? 1 : 0;
    static const auto original = reinterpret_cast<long (*)(long, ...)>(::dlsym(RTLD_NEXT, "syscall"));
    return original(number, values[0], values[1], values[2], values[3], values[4], values[5]);
}
#endif

namespace {

TEST(PindleStandin, NeitherAsksForTheProcessNorWakesABusyThreadForAJob)
{
#ifdef CORVANE_TEST_SANITIZED
    GTEST_SKIP() << "a sanitizer has functions of its own in place of those that are counted";
#endif
    std::promise<void> go;
    std::promise<int> wakesByItself;
    const auto object = start([&] { go.get_future().wait(); });
    t_processQueries = t_wakes = 0;
    for (int job = 0; job < 100; ++job) {
        object->post([] {});
    }
    object->post([&] { wakesByItself.set_value(t_wakes); });
    EXPECT_EQ(t_wakes, 0);
    go.set_value();
    EXPECT_EQ(wakesByItself.get_future().get(), 0);
    while (t_wakes == 0) { // until the thread is idle
        object->post([] {});
    }
    EXPECT_EQ(t_processQueries, 0);
}

TEST(PindleStandin, NamesItsThread)
{
    std::promise<std::string> name;
    const auto object = start([&] {
        std::array<char, 16> text = {};
        pthread_getname_np(pthread_self(), text.data(), text.size());
        name.set_value(text.data());
    });
    EXPECT_THAT(name.get_future().get(), testing::MatchesRegex("pindle-[0-9]+"));
}

TEST(PindleStandin, DropsWhatIsPostedOnceTheReleaseHasBegun)
{
    auto object = start([] {});
    std::function<void()> postAgain = [&, raw = object.get()] { raw->post(postAgain); };
    object->post(postAgain);
    object.reset(); // returns, or this test hangs
}

TEST(PindleStandin, IsReleasedThoughAJobNeverEndsAndDropsTheLaterOnes)
{
    const auto go = std::make_shared<std::promise<void>>();
    const auto later = std::make_shared<int>(0);
    auto object = start([] {});
    object->post([go] { go->get_future().wait(); });
    object->post([later] { ++*later; });
    object.reset(); // returns, or this test hangs
    EXPECT_EQ(later.use_count(), 1);
    EXPECT_EQ(*later, 0);
    go->set_value();
}

TEST(PindleStandin, WaitsForAnInitialJobThatIsBusy)
{
    bool ran = false;
    auto object = start([] {
        const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(200);
        while (std::chrono::steady_clock::now() < until) {
        }
    });
    object->post([&] { ran = true; });
    object.reset();
    EXPECT_TRUE(ran);
}

TEST(PindleStandin, IsNeitherUsedNorWaitedForInAForkedChild)
{
#ifdef CORVANE_TEST_SANITIZED
    GTEST_SKIP() << "a sanitizer may leave locks of its own to a child that another thread holds";
#endif
    std::atomic<bool> isOver{false};
    auto object = start([] {});
    std::thread producer([&] { // so that a child finds the object's mutex locked, sooner or later
        while (!isOver) {
            object->post([] {});
        }
    });
    for (int round = 0; round < 20; ++round) {
        Peer child([&](const Peer&) {
            ::alarm(Corvane::Testing::timeToEnd()); // a release waits longer for jobs that don't end
            object->post([] {});
            object.reset();
            if (!Corvane::Testing::isEmulated()) { // the emulator starts no thread in a forked child
                waitForJobs(*start([] {}));        // one of its own works
            }
            ::_exit(0);
        });
        EXPECT_EQ(child.finish(), 0);
    }
    isOver = true;
    producer.join();
}

} // namespace
