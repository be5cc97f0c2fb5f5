/// What pindle/activeObjectIf.h promises.
#include <atomic>
#include <csignal>
#include <future>
#include <memory>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pindle/activeObjectIf.h>

#include "tests/support/childProcess.h"

namespace {

using Corvane::Testing::Companion;
using Pindle::ActiveObject::V1::ActiveObjectIf;
using Pindle::ActiveObject::V1::SchedulingPolicy;
using testing::ElementsAre;

std::shared_ptr<ActiveObjectIf> start(const std::function<void()>& init)
{
    return ActiveObjectIf::create(init, SchedulingPolicy{0});
}

TEST(ActiveObject, RunsTheInitialJobFirstAndThenTheOthersInOrder)
{
    std::vector<int> order; // of the active object's thread, until the release
    std::promise<void> go;
    auto object = start([&, ready = go.get_future().share()] {
        ready.wait();
        order.push_back(0);
    });
    for (int job = 1; job < 5; ++job) {
        object->post([&, job] { order.push_back(job); });
    }
    go.set_value();
    object->post([] {});
    std::promise<void> done;
    object->post([&] { done.set_value(); });
    done.get_future().wait();
    object.reset();
    EXPECT_THAT(order, ElementsAre(0, 1, 2, 3, 4));
}

TEST(ActiveObject, RunsEveryJobOnOneThreadOfItsOwn)
{
    std::vector<std::thread::id> threads;
    std::promise<void> done;
    auto object = start([&] { threads.push_back(std::this_thread::get_id()); });
    object->post([&] { threads.push_back(std::this_thread::get_id()); });
    object->post([&] {
        threads.push_back(std::this_thread::get_id());
        done.set_value();
    });
    done.get_future().wait();
    EXPECT_THAT(threads, ElementsAre(threads[0], threads[0], threads[0]));
    EXPECT_NE(threads[0], std::this_thread::get_id());
}

TEST(ActiveObject, QueuesWhileAJobRuns)
{
    std::promise<void> started;
    std::promise<void> go;
    std::promise<int> result;
    auto object = start([] {});
    object->post([&] {
        started.set_value();
        go.get_future().wait();
    });
    started.get_future().wait();
    int jobs = 0;
    for (int count = 0; count < 10000; ++count) {
        object->post([&] { ++jobs; }); // returns, or this test hangs
    }
    object->post([&] { result.set_value(jobs); });
    go.set_value();
    EXPECT_EQ(result.get_future().get(), 10000);
}

TEST(ActiveObject, TakesJobsOfManyThreadsAndOfItsOwn)
{
    constexpr int producers = 8;
    constexpr int count = 2000;
    std::vector<int> next(producers);
    int outOfOrder = 0;
    int ownJobs = 0;
    auto object = start([] {});
    std::atomic<int> ready{0};
    std::vector<std::thread> threads;
    for (int producer = 0; producer < producers; ++producer) {
        threads.emplace_back([&, producer] {
            for (++ready; ready < producers;) {
                std::this_thread::yield();
            }
            for (int number = 0; number < count; ++number) {
                object->post([&, producer, number] {
                    outOfOrder += next[static_cast<std::size_t>(producer)]++ == number ? 0 : 1;
                });
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::promise<void> done;
    object->post([&] {
        object->post([&] {
            ++ownJobs;
            done.set_value();
        });
    });
    done.get_future().wait();
    EXPECT_EQ(outOfOrder, 0);
    EXPECT_THAT(next, testing::Each(count));
    EXPECT_EQ(ownJobs, 1);
}

TEST(ActiveObject, RunsTheQueuedJobsBeforeTheReleaseOfTheLastOwnerReturns)
{
    std::promise<void> initialised;
    int jobs = 0;
    auto object = start([&] { initialised.set_value(); });
    initialised.get_future().wait();
    for (int count = 0; count < 1000; ++count) {
        object->post([&] { ++jobs; });
    }
    auto otherOwner = object;
    object.reset();
    otherOwner.reset();
    EXPECT_EQ(jobs, 1000);
}

TEST(ActiveObject, IsReleasedWhileItsInitialJobIsBlocked)
{
    const auto ran = std::make_shared<std::atomic<bool>>(false);
    const auto go = std::make_shared<std::promise<void>>();
    const auto isOver = std::make_shared<std::promise<void>>();
    {
        std::promise<void> started;
        auto object = start([go, isOver, &started] {
            started.set_value();
            go->get_future().wait();
            isOver->set_value();
        });
        started.get_future().wait();
        object->post([ran] { *ran = true; });
        object.reset(); // returns, or this test hangs
    }
    go->set_value();
    isOver->get_future().wait();
    EXPECT_FALSE(*ran);
}

TEST(ActiveObject, IsReleasedByItsOwnJob)
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

TEST(ActiveObject, LetsGoOfAJobWhenItHasRun)
{
    const auto held = std::make_shared<int>(0);
    std::promise<void> done;
    auto object = start([] {});
    object->post([held] {});
    object->post([&] { done.set_value(); });
    done.get_future().wait();
    EXPECT_EQ(held.use_count(), 1);
}

TEST(ActiveObject, EndsTheProcessByAJobThatThrows)
{
    Companion peer({"/proc/self/exe", "--peer"}, {});
    peer.writeLine("throw-in-a-job");
    EXPECT_EQ(peer.readLine(), "");
    EXPECT_EQ(peer.finish(), -SIGABRT);
}

TEST(ActiveObject, DoesNotHoldUpTheEndOfAProcessWhileItsInitialJobIsBlocked)
{
    Companion peer({"/proc/self/exe", "--peer"}, {});
    peer.writeLine("exit-with-blocked-active-object");
    EXPECT_EQ(peer.finish(), 0);
}

} // namespace
