/// Records which locks this thread takes, and how, and makes some fail. For this it replaces the calls behind
/// std::shared_mutex, and the calls behind std::mutex for the mutexes of a chosen object. It also records how many
/// locks are held when memory of a chosen size is freed. For this it replaces operator new and operator delete.
///
///     LockRecorder recorder;
///     manager.exists("a");
///     EXPECT_THAT(recorder.take(), ElementsAre(TakenLock{&lock, LockMode::Shared}));
///
/// Threads  one recorder at a time, on the thread that made it; other threads' locks are not recorded.
#ifndef CORVANE_TESTS_SUPPORT_LOCKRECORDER_H
#define CORVANE_TESTS_SUPPORT_LOCKRECORDER_H

#include <cerrno>
#include <cstddef>
#include <system_error>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace Corvane::Testing {

enum class LockMode
{
    Shared,
    Exclusive
};

struct TakenLock
{
    const void* lock; ///< the address of the std::shared_mutex or std::mutex
    LockMode mode;
    bool inside; ///< while another one was held
};

class LockRecorder
{
public:
    LockRecorder();

    /// Records the mutexes that are members of `object` too. Others, such as those of the standard library, are not.
    template <typename Object>
    explicit LockRecorder(const Object& object) : LockRecorder()
    {
        m_object = reinterpret_cast<const char*>(&object);
        m_objectSize = sizeof object;
    }
    ~LockRecorder();
    LockRecorder(const LockRecorder&) = delete;
    LockRecorder& operator=(const LockRecorder&) = delete;

    /// Returns  the locks that were taken since the last call, in their order.
    std::vector<TakenLock> take();

    /// Returns  how many locks are held now.
    int held() const { return m_held; }

    /// The next calls that take a lock fail with these errors. 0 stands for a call that succeeds.
    ///
    /// Returns  those that were still to come.
    std::vector<int> failNext(std::vector<int> errors) { return std::exchange(m_errors, std::move(errors)); }

    /// Returns  for each block of `watchedSize` that was freed since the last call, how many locks were held then.
    std::vector<int> heldWhenFreed() { return std::exchange(m_heldWhenFreed, {}); }

    /// Blocks of this size are watched.
    static constexpr std::size_t watchedSize = 54321;

    /// For the replaced calls.
    bool isWatched(const void* mutex) const { return mutex >= m_object && mutex < m_object + m_objectSize; }
    void addFreed() { m_heldWhenFreed.push_back(m_held); }
    int nextError();
    void add(const void* lock, LockMode mode);
    void release() { --m_held; }

private:
    std::vector<TakenLock> m_taken;
    std::vector<int> m_errors;
    std::vector<int> m_heldWhenFreed;
    int m_held = 0;
    const char* m_object = nullptr;
    std::size_t m_objectSize = 0;
};

/// Tries `operation` with its first lock failing, then its second, and so on until none fails.
///
/// `check` runs after each failed attempt. Returns how many locks the operation takes. std::system_error must reach the
/// caller each time, and no lock may be held then.
template <typename Operation, typename Check>
std::size_t failEachLock(LockRecorder& recorder, const Operation& operation, const Check& check)
{
    for (std::size_t count = 0;; ++count) {
        std::vector<int> errors(count, 0);
        errors.push_back(EDEADLK);
        recorder.failNext(errors);
        recorder.take();
        bool thrown = false;
        try {
            operation();
        } catch (const std::system_error& error) {
            thrown = error.code() == std::errc::resource_deadlock_would_occur;
        }
        const bool failed = recorder.failNext({}).empty();
        EXPECT_EQ(failed, thrown) << "lock " << count;
        EXPECT_EQ(recorder.held(), 0) << "lock " << count;
        if (!failed) {
            return count;
        }
        check();
    }
}

} // namespace Corvane::Testing

#endif
