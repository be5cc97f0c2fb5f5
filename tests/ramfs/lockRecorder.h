/// Records which read-write locks this thread takes, and how, and makes some fail: it replaces the calls behind
/// std::shared_mutex. It also records how many locks are held when memory of a chosen size is freed: it replaces
/// operator new and operator delete.
///
///     LockRecorder recorder;
///     manager.exists("a");
///     EXPECT_THAT(recorder.take(), ElementsAre(TakenLock{&lock, LockMode::Shared}));
///
/// Threads  one recorder at a time, on the thread that made it; other threads' locks are not recorded.
#ifndef CORVANE_TESTS_RAMFS_LOCKRECORDER_H
#define CORVANE_TESTS_RAMFS_LOCKRECORDER_H

#include <cstddef>
#include <utility>
#include <vector>

namespace Corvane::Testing {

enum class LockMode
{
    Shared,
    Exclusive
};

struct TakenLock
{
    const void* lock; ///< the address of the std::shared_mutex
    LockMode mode;
    bool inside; ///< while another one was held
};

class LockRecorder
{
public:
    LockRecorder();
    ~LockRecorder();
    LockRecorder(const LockRecorder&) = delete;
    LockRecorder& operator=(const LockRecorder&) = delete;

    /// Returns  the locks that were taken since the last call, in their order.
    std::vector<TakenLock> take();

    /// Returns  how many locks are held now.
    int held() const { return m_held; }

    /// The next calls that take a lock fail with these errors. 0 stands for a call that succeeds.
    void failNext(std::vector<int> errors) { m_errors = std::move(errors); }

    /// Returns  for each block of `watchedSize` that was freed since the last call, how many locks were held then.
    std::vector<int> heldWhenFreed() { return std::exchange(m_heldWhenFreed, {}); }

    /// Blocks of this size are watched.
    static constexpr std::size_t watchedSize = 54321;

    /// For the replaced calls.
    void addFreed() { m_heldWhenFreed.push_back(m_held); }
    int nextError();
    void add(const void* lock, LockMode mode);
    void release() { --m_held; }

private:
    std::vector<TakenLock> m_taken;
    std::vector<int> m_errors;
    std::vector<int> m_heldWhenFreed;
    int m_held = 0;
};

} // namespace Corvane::Testing

#endif
