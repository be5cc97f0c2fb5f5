/// The locks that are taken while a process ends.
#include <chrono>
#include <future>

#include <gtest/gtest.h>

#include "sync/mutex.h"

namespace {

using Corvane::ExclusiveLock;

/// Returns  whether lockAtEnd() takes the lock, which is free again then.
template <typename AnyMutex>
bool isTaken(AnyMutex& mutex, bool isForkedChild) CORVANE_THREAD_SAFETY(no_thread_safety_analysis)
{
    const bool taken = Corvane::lockAtEnd(mutex, isForkedChild);
    if (taken) {
        mutex.unlock();
    }
    return taken;
}

template <typename AnyMutex>
class LockAtEnd : public testing::Test
{
protected:
    AnyMutex m_mutex;
};

using Mutexes = testing::Types<Corvane::Mutex, Corvane::SharedMutex>;
TYPED_TEST_SUITE(LockAtEnd, Mutexes, ); // clang misses the last argument otherwise

TYPED_TEST(LockAtEnd, TakesAFreeLockAlsoInAForkedChild)
{
    EXPECT_TRUE(isTaken(this->m_mutex, false));
    EXPECT_TRUE(isTaken(this->m_mutex, true));
}

TYPED_TEST(LockAtEnd, DoesNotWaitInAForkedChildForALockThatIsHeld)
{
    const ExclusiveLock<TypeParam> lock(this->m_mutex);
    EXPECT_FALSE(std::async(std::launch::async, [this] { return isTaken(this->m_mutex, true); }).get());
}

TEST(TimeAfter, CountsFromNow)
{
    const auto now = [] { return std::chrono::system_clock::to_time_t(std::chrono::system_clock::now()); };
    const auto earliest = now();
    const auto latest = Corvane::Detail::timeAfter(std::chrono::seconds(100)).tv_sec - 100;
    EXPECT_LE(earliest, latest);
    EXPECT_LE(latest, now());
}

} // namespace
