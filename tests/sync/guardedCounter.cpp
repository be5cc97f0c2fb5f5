/// Right and wrong accesses to a guarded member. CORVANE_TEST_ACCESS chooses the wrong one that is compiled; 0 is none.
#include "sync/mutex.h"

namespace {

class Counter
{
public:
    // The test is whether they compile.
    [[maybe_unused]] void addUnderTheLock()
    {
        const Corvane::ExclusiveLock lock(m_mutex);
        ++m_count;
    }
    [[maybe_unused]] int readUnderTheSharedLock()
    {
        const Corvane::SharedLock lock(m_mutex);
        return m_count;
    }
#if CORVANE_TEST_ACCESS == 1
    void addWithoutALock()
    {
        ++m_count;
    }
#elif CORVANE_TEST_ACCESS == 2
    void addUnderTheSharedLock()
    {
        const Corvane::SharedLock lock(m_mutex);
        ++m_count;
    }
#elif CORVANE_TEST_ACCESS == 3
    void callWithoutTheLock()
    {
        add();
    }
#endif

private:
    void add() CORVANE_REQUIRES(m_mutex)
    {
        ++m_count;
    }

    Corvane::SharedMutex m_mutex;
    int m_count CORVANE_GUARDED_BY(m_mutex) = 0;
};

} // namespace

int main()
{
    Counter counter;
    counter.addUnderTheLock();
    return counter.readUnderTheSharedLock() == 1 ? 0 : 1;
}
