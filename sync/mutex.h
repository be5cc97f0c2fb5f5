// SPDX-License-Identifier: MIT
/// Mutexes that the compiler checks: clang refuses an access to a guarded member without its lock.
///
/// A member says by which mutex it is guarded (CORVANE_GUARDED_BY), a function says which mutex its caller holds
/// (CORVANE_REQUIRES, or CORVANE_REQUIRES_SHARED for one that only reads). Other compilers see plain standard mutexes.
/// A Mutex has the size of a std::mutex, a SharedMutex that of a std::shared_mutex.
///
/// Errors  std::system_error if a lock can't be taken.
#ifndef CORVANE_SYNC_MUTEX_H
#define CORVANE_SYNC_MUTEX_H

#include <chrono>
#include <ctime>
#include <mutex>
#include <shared_mutex>

#include <pthread.h>

#ifdef __clang__
#define CORVANE_THREAD_SAFETY(attribute) __attribute__((attribute))
#else
#define CORVANE_THREAD_SAFETY(attribute)
#endif
#define CORVANE_GUARDED_BY(mutex) CORVANE_THREAD_SAFETY(guarded_by(mutex))
#define CORVANE_REQUIRES(mutex) CORVANE_THREAD_SAFETY(requires_capability(mutex))
#define CORVANE_REQUIRES_SHARED(mutex) CORVANE_THREAD_SAFETY(requires_shared_capability(mutex))

namespace Corvane {

namespace Detail {

/// Returns  the time of the system's clock after `duration`, as the calls that wait for so long want it.
inline timespec timeAfter(std::chrono::seconds duration)
{
    timespec time{};
    ::clock_gettime(CLOCK_REALTIME, &time);
    time.tv_sec += duration.count();
    return time;
}

} // namespace Detail

/// A std::mutex.
class CORVANE_THREAD_SAFETY(capability("mutex")) Mutex
{
public:
    void lock() CORVANE_THREAD_SAFETY(acquire_capability()) { m_mutex.lock(); }
    bool try_lock() CORVANE_THREAD_SAFETY(try_acquire_capability(true)) { return m_mutex.try_lock(); }
    bool try_lock_for(std::chrono::seconds longest) CORVANE_THREAD_SAFETY(try_acquire_capability(true))
    {
        const timespec latest = Detail::timeAfter(longest);
        return ::pthread_mutex_timedlock(m_mutex.native_handle(), &latest) == 0;
    }
    void unlock() CORVANE_THREAD_SAFETY(release_capability()) { m_mutex.unlock(); }

private:
    std::mutex m_mutex;
};

/// A std::shared_mutex.
class CORVANE_THREAD_SAFETY(capability("mutex")) SharedMutex
{
public:
    void lock() CORVANE_THREAD_SAFETY(acquire_capability()) { m_mutex.lock(); }
    bool try_lock() CORVANE_THREAD_SAFETY(try_acquire_capability(true)) { return m_mutex.try_lock(); }
    bool try_lock_for(std::chrono::seconds longest) CORVANE_THREAD_SAFETY(try_acquire_capability(true))
    {
        const timespec latest = Detail::timeAfter(longest);
        return ::pthread_rwlock_timedwrlock(static_cast<pthread_rwlock_t*>(m_mutex.native_handle()), &latest) == 0;
    }
    void unlock() CORVANE_THREAD_SAFETY(release_capability()) { m_mutex.unlock(); }
    void lock_shared() CORVANE_THREAD_SAFETY(acquire_shared_capability()) { m_mutex.lock_shared(); }
    void unlock_shared() CORVANE_THREAD_SAFETY(release_shared_capability()) { m_mutex.unlock_shared(); }

private:
    std::shared_mutex m_mutex;
};

/// Holds a Mutex, or a SharedMutex exclusively, to the end of its scope.
template <typename AnyMutex>
class CORVANE_THREAD_SAFETY(scoped_lockable) ExclusiveLock
{
public:
    explicit ExclusiveLock(AnyMutex& mutex) CORVANE_THREAD_SAFETY(acquire_capability(mutex)) : m_mutex(mutex)
    {
        m_mutex.lock();
    }
    ~ExclusiveLock() CORVANE_THREAD_SAFETY(release_capability()) { m_mutex.unlock(); }
    ExclusiveLock(const ExclusiveLock&) = delete;
    ExclusiveLock& operator=(const ExclusiveLock&) = delete;

private:
    AnyMutex& m_mutex;
};

/// Holds a SharedMutex shared to the end of its scope.
class CORVANE_THREAD_SAFETY(scoped_lockable) SharedLock
{
public:
    explicit SharedLock(SharedMutex& mutex) CORVANE_THREAD_SAFETY(acquire_shared_capability(mutex)) : m_mutex(mutex)
    {
        m_mutex.lock_shared();
    }
    ~SharedLock() CORVANE_THREAD_SAFETY(release_generic_capability()) { m_mutex.unlock_shared(); }
    SharedLock(const SharedLock&) = delete;
    SharedLock& operator=(const SharedLock&) = delete;

private:
    SharedMutex& m_mutex;
};

/// Takes a lock when a process ends, where waiting for it might never end. A child made by fork() may have locks that
/// threads of its parent held, and a thread that holds the lock may call exit(), in a handler of missing memory say.
///
/// Returns  whether the lock is held now. The caller releases it.
template <typename AnyMutex>
bool lockAtEnd(AnyMutex& mutex, bool isForkedChild) noexcept CORVANE_THREAD_SAFETY(try_acquire_capability(true, mutex))
    CORVANE_THREAD_SAFETY(no_thread_safety_analysis)
{
    constexpr std::chrono::seconds longestWait{2}; // other threads hold a lock for far less
    return isForkedChild ? mutex.try_lock() : mutex.try_lock_for(longestWait);
}

} // namespace Corvane

#endif
