/// What pindle/activeObjectIf.h promises.
#include <algorithm>
#include <csignal>
#include <future>
#include <memory>
#include <set>
#include <stdexcept>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pindle/activeObjectIf.h>

#include "suite.h"

namespace {

using Conformance::Peer;
using Pindle::ActiveObject::V1::ActiveObjectIf;

std::shared_ptr<ActiveObjectIf> start(const std::function<void()>& init)
{
    return ActiveObjectIf::create(init, Pindle::ActiveObject::V1::SchedulingPolicy{0});
}

/// Waits until every job that was posted before has run.
void waitForJobs(ActiveObjectIf& object)
{
    std::promise<void> done;
    object.post([&] { done.set_value(); });
    done.get_future().wait();
}

TEST(ActiveObject, RunsTheInitialJobFirstAndThenTheOthersInOrderOnOneThreadOfItsOwn)
{
    constexpr int count = 10000;
    std::vector<int> order;
    std::set<std::thread::id> threads;
    const auto note = [&](int job) {
        order.push_back(job);
        threads.insert(std::this_thread::get_id());
    };
    std::promise<void> go;
    const auto object = start([&] {
        go.get_future().wait();
        note(0);
    });
    for (int job = 1; job <= count; ++job) {
        object->post([&, job] { note(job); }); // returns while another job runs, or this test hangs
    }
    go.set_value();
    waitForJobs(*object);
    EXPECT_EQ(order.size(), count + 1U);
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
    EXPECT_EQ(threads.size(), 1U);
    EXPECT_EQ(threads.count(std::this_thread::get_id()), 0U);
}

TEST(ActiveObject, RunsTheJobsOfEachThreadInTheirOrder)
{
    constexpr int count = 5000;
    std::vector<int> next(8);
    int outOfOrder = 0;
    const auto object = start([] {});
    std::vector<std::thread> threads;
    for (int& expected : next) {
        threads.emplace_back([&] {
            for (int number = 0; number < count; ++number) {
                object->post([&, number] { outOfOrder += expected++ == number ? 0 : 1; });
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    waitForJobs(*object);
    EXPECT_EQ(outOfOrder, 0);
    EXPECT_THAT(next, testing::Each(count));
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

TEST(ActiveObject, DestroysAJobWhenItHasRun)
{
    const auto held = std::make_shared<int>(0);
    const auto object = start([] {});
    object->post([held] {});
    waitForJobs(*object);
    EXPECT_EQ(held.use_count(), 1);
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
            for (Conformance::create("blocked");;) {
                Conformance::receive(1);
            }
        });
        ownedToTheEnd->post([] { std::abort(); });
    });
    EXPECT_EQ(peer.finish(), 0);
}

} // namespace
