/// What the stand-in for libpindle chose where its contract says "Stand-in".
#include <array>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <future>
#include <iostream>
#include <memory>
#include <string>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pindle/activeObjectIf.h>
#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/timeToEnd.h"

namespace {

using Pindle::ActiveObject::V1::ActiveObjectIf;
using Pindle::ActiveObject::V1::SchedulingPolicy;

TEST(PindleStandin, NamesItsThread)
{
    std::promise<std::string> name;
    const auto object = ActiveObjectIf::create([] {}, SchedulingPolicy::Inherited);
    object->post([&] {
        std::array<char, 16> text = {};
        pthread_getname_np(pthread_self(), text.data(), text.size());
        name.set_value(text.data());
    });
    EXPECT_THAT(name.get_future().get(), testing::MatchesRegex("pindle-[0-9]+"));
}

TEST(PindleStandin, IsReleasedThoughAJobNeverEnds)
{
    const auto go = std::make_shared<std::promise<void>>();
    const auto isOver = std::make_shared<std::promise<void>>();
    const auto laterJob = std::make_shared<int>(0);
    std::promise<void> started;
    auto object = ActiveObjectIf::create([] {}, SchedulingPolicy::Inherited);
    object->post([go, isOver, &started] {
        started.set_value();
        go->get_future().wait();
        isOver->set_value();
    });
    object->post([laterJob] { ++*laterJob; });
    started.get_future().wait();
    object.reset(); // returns, or this test hangs
    EXPECT_EQ(laterJob.use_count(), 1);
    go->set_value();
    isOver->get_future().wait();
    EXPECT_EQ(*laterJob, 0);
}

TEST(PindleStandin, WaitsForAnInitialJobThatIsBusy)
{
    bool initialised = false;
    bool ran = false;
    std::promise<void> started;
    auto object = ActiveObjectIf::create(
        [&] {
            started.set_value();
            const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(200);
            while (std::chrono::steady_clock::now() < until) {
            }
            initialised = true;
        },
        SchedulingPolicy::Inherited);
    started.get_future().wait();
    object->post([&] { ran = true; });
    object.reset();
    EXPECT_TRUE(initialised);
    EXPECT_TRUE(ran);
}

std::shared_ptr<ActiveObjectIf>& ownedToTheEnd()
{
    static std::shared_ptr<ActiveObjectIf> owner;
    return owner;
}

TEST(PindleStandin, DoesNotHoldUpTheEndOfAForkedChildThatHasNoneOfItsThreads)
{
#ifdef CORVANE_TEST_SANITIZED
    GTEST_SKIP() << "a sanitizer may leave locks of its own to a child that another thread holds";
#endif
    std::promise<void> initialised;
    ownedToTheEnd() = ActiveObjectIf::create([&] { initialised.set_value(); }, SchedulingPolicy::Inherited);
    initialised.get_future().wait();
    std::atomic<bool> isOver{false};
    std::thread producer([&] { // so that a child finds the object's lock taken, sooner or later
        while (!isOver) {
            ownedToTheEnd()->post([] {});
        }
    });
    std::cout.flush();
    const unsigned int seconds = Corvane::Testing::timeToEnd();
    for (int round = 0; round < 20; ++round) {
        const pid_t child = ::fork();
        if (child == 0) {
            ::alarm(seconds); // the end waits longer for jobs that don't end
            ownedToTheEnd()->post([] {});
            std::exit(0);
        }
        int status = -1;
        ::waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
    }
    isOver = true;
    producer.join();
    ownedToTheEnd().reset();
}

} // namespace
