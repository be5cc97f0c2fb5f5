/// Replaces the calls of POSIX read-write locks that std::shared_mutex makes.
#include "tests/ramfs/lockRecorder.h"

#include <cstdlib>
#include <utility>

#include <dlfcn.h>
#include <pthread.h>

namespace {

using Corvane::Testing::LockMode;
using Corvane::Testing::LockRecorder;

thread_local LockRecorder* current = nullptr;

using Call = int (*)(pthread_rwlock_t*);

Call originalOf(const char* name)
{
    void* const function = dlsym(RTLD_NEXT, name);
    if (function == nullptr) {
        std::abort();
    }
    return reinterpret_cast<Call>(function);
}

int recorded(pthread_rwlock_t* lock, LockMode mode, int result)
{
    if (current != nullptr && result == 0) {
        LockRecorder* const recorder = std::exchange(current, nullptr); // what it does is not to be recorded
        recorder->add(lock, mode);
        current = recorder;
    }
    return result;
}

} // namespace

namespace Corvane::Testing {

LockRecorder::LockRecorder()
{
    current = this;
}

LockRecorder::~LockRecorder()
{
    current = nullptr;
}

std::vector<TakenLock> LockRecorder::take()
{
    return std::exchange(m_taken, {});
}

void LockRecorder::add(const void* lock, LockMode mode)
{
    m_taken.push_back({lock, mode, m_held > 0});
    ++m_held;
}

} // namespace Corvane::Testing

extern "C" [[gnu::visibility("default")]] int pthread_rwlock_rdlock(pthread_rwlock_t* lock) noexcept
{
    static const Call original = originalOf("pthread_rwlock_rdlock");
    return recorded(lock, LockMode::Shared, original(lock));
}

extern "C" [[gnu::visibility("default")]] int pthread_rwlock_wrlock(pthread_rwlock_t* lock) noexcept
{
    static const Call original = originalOf("pthread_rwlock_wrlock");
    return recorded(lock, LockMode::Exclusive, original(lock));
}

extern "C" [[gnu::visibility("default")]] int pthread_rwlock_unlock(pthread_rwlock_t* lock) noexcept
{
    static const Call original = originalOf("pthread_rwlock_unlock");
    if (current != nullptr) {
        current->release();
    }
    return original(lock);
}
