// SPDX-License-Identifier: MIT
/// What pindle/activeObjectIf.h promises.
#include <csignal>
#include <set>
#include <stdexcept>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "suite.h"

namespace {

using namespace Conformance;

TEST(ActiveObject, RunsTheInitialJobFirstAndThenTheOthersOfEachThreadInOrderOnOneThreadOfItsOwn)
{
    constexpr int count = 5000;
    std::vector<int> next(8);
    int outOfOrder = 0;
    bool isInitialised = false;
    std::set<std::thread::id> runners;
    const auto held = std::make_shared<int>(0);
    std::promise<void> go;
    const auto object = start([&] {
        go.get_future().wait();
        runners.insert(std::this_thread::get_id());
        isInitialised = true;
    });
    const auto postAll = [&](int& expected) {
        for (int number = 0; number < count; ++number) {
            object->post([&, number, held] {
                outOfOrder += isInitialised && expected++ == number ? 0 : 1;
                runners.insert(std::this_thread::get_id());
            });
        }
    };
    postAll(next[0]); // returns while another job runs, or this test hangs
    go.set_value();
    std::vector<std::thread> threads;
    for (std::size_t index = 1; index < next.size(); ++index) {
        threads.emplace_back([&, index] { postAll(next[index]); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    waitForJobs(*object);
    EXPECT_EQ(outOfOrder, 0);
    EXPECT_THAT(next, testing::Each(count));
    EXPECT_THAT(runners, testing::ElementsAre(testing::Ne(std::this_thread::get_id()))); // one, and another
    EXPECT_EQ(held.use_count(), 1); // each job is destroyed when it has run
}

TEST(ActiveObject, RunsTheQueuedJobsBeforeTheReleaseOfTheLastOwnerReturns)
{
    int jobs = 0;
    auto object = start([] {});
    waitForJobs(*object); // a blocked initial job would drop the others
    for (int count = 0; count < 1000; ++count) {
        object->post([&] { ++jobs; });
    }
    auto otherOwner = object;
    object.reset();
    otherOwner.reset();
    EXPECT_EQ(jobs, 1000);
}

TEST(ActiveObject, TakesAJobFromItsOwnJobAndIsReleasedByIt)
{
    std::promise<void> done;
    auto object = start([] {});
    auto* const raw = object.get();
    raw->post([owner = std::move(object), &done]() mutable {
        owner->post([&done] { done.set_value(); });
        owner.reset();
    });
    done.get_future().wait();
}

TEST(ActiveObject, EndsTheProcessByAJobThatThrows)
{
    Peer peer([](const Peer& test) {
        const auto object = start([] {});
        object->post([] { throw std::runtime_error("thrown by a job"); });
        test.hear(); // never
    });
    EXPECT_EQ(peer.finish(), -SIGABRT);
}

TEST(ActiveObject, DoesNotHoldUpTheEndOfAProcessWhileItsInitialJobIsBlocked)
{
    Peer peer([](const Peer&) {
        static std::shared_ptr<ActiveObjectIf> ownedToTheEnd;
        ownedToTheEnd = start([] {
            for (create("blocked");;) {
                receive(1);
            }
        });
        ownedToTheEnd->post([] { std::abort(); });
    });
    EXPECT_EQ(peer.finish(), 0);
}

} // namespace
