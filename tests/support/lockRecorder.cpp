/// Replaces the calls of POSIX locks that std::shared_mutex and std::mutex make, and the calls that take and free
/// memory.
#include "tests/support/lockRecorder.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <new>
#include <utility>

#include <dlfcn.h>
#include <pthread.h>

namespace {

using Corvane::Testing::LockMode;
using Corvane::Testing::LockRecorder;

thread_local LockRecorder* current = nullptr;
thread_local std::array<void*, 8> watchedBlocks{};

template <typename... Arguments>
using Call = int (*)(Arguments...);

template <typename... Arguments>
Call<Arguments...> originalOf(const char* name)
{
    void* const function = dlsym(RTLD_NEXT, name);
    if (function == nullptr) {
        std::abort();
    }
    return reinterpret_cast<Call<Arguments...>>(function);
}

template <typename Lock, typename... Limit>
int take(LockMode mode, Call<Lock*, Limit...> original, Lock* lock, Limit... limit)
{
    LockRecorder* const recorder = std::exchange(current, nullptr); // what it does is not to be recorded
    const int error = recorder != nullptr ? recorder->nextError() : 0;
    const int result = error != 0 ? error : original(lock, limit...);
    if (recorder != nullptr && result == 0) {
        recorder->add(lock, mode);
    }
    current = recorder;
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

int LockRecorder::nextError()
{
    if (m_errors.empty()) {
        return 0;
    }
    const int error = m_errors.front();
    m_errors.erase(m_errors.begin());
    return error;
}

void LockRecorder::add(const void* lock, LockMode mode)
{
    m_taken.push_back({lock, mode, m_held > 0});
    ++m_held;
}

} // namespace Corvane::Testing

extern "C" [[gnu::visibility("default")]] int pthread_rwlock_rdlock(pthread_rwlock_t* lock) noexcept
{
    static const auto original = originalOf<pthread_rwlock_t*>("pthread_rwlock_rdlock");
    return take(LockMode::Shared, original, lock);
}

extern "C" [[gnu::visibility("default")]] int pthread_rwlock_wrlock(pthread_rwlock_t* lock) noexcept
{
    static const auto original = originalOf<pthread_rwlock_t*>("pthread_rwlock_wrlock");
    return take(LockMode::Exclusive, original, lock);
}

extern "C" [[gnu::visibility("default")]] int pthread_rwlock_timedwrlock(pthread_rwlock_t* lock,
                                                                         const timespec* latest) noexcept
{
    static const auto original = originalOf<pthread_rwlock_t*, const timespec*>("pthread_rwlock_timedwrlock");
    return take(LockMode::Exclusive, original, lock, latest);
}

extern "C" [[gnu::visibility("default")]] int pthread_rwlock_unlock(pthread_rwlock_t* lock) noexcept
{
    static const auto original = originalOf<pthread_rwlock_t*>("pthread_rwlock_unlock");
    if (current != nullptr) {
        current->release();
    }
    return original(lock);
}

extern "C" [[gnu::visibility("default")]] int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept
{
    static const auto original = originalOf<pthread_mutex_t*>("pthread_mutex_lock");
    return current != nullptr && current->isWatched(mutex) ? take(LockMode::Exclusive, original, mutex)
                                                           : original(mutex);
}

extern "C" [[gnu::visibility("default")]] int pthread_mutex_timedlock(pthread_mutex_t* mutex,
                                                                      const timespec* latest) noexcept
{
    static const auto original = originalOf<pthread_mutex_t*, const timespec*>("pthread_mutex_timedlock");
    return current != nullptr && current->isWatched(mutex) ? take(LockMode::Exclusive, original, mutex, latest)
                                                           : original(mutex, latest);
}

extern "C" [[gnu::visibility("default")]] int pthread_mutex_unlock(pthread_mutex_t* mutex) noexcept
{
    static const auto original = originalOf<pthread_mutex_t*>("pthread_mutex_unlock");
    if (current != nullptr && current->isWatched(mutex)) {
        current->release();
    }
    return original(mutex);
}

void* operator new(std::size_t size)
{
    void* const memory = std::malloc(size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    if (current != nullptr && size == LockRecorder::watchedSize) {
        *std::find(watchedBlocks.begin(), watchedBlocks.end() - 1, nullptr) = memory;
    }
    return memory;
}

void operator delete(void* memory) noexcept
{
    const auto watched = std::find(watchedBlocks.begin(), watchedBlocks.end(), memory);
    if (memory != nullptr && watched != watchedBlocks.end()) {
        *watched = nullptr;
        if (current != nullptr) {
            current->addFreed();
        }
    }
    std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept
{
    operator delete(memory);
}
