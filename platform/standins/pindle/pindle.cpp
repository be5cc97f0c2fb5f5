// SPDX-License-Identifier: MIT
/// Stand-in for the unit's framework library, libpindle.so.0. Its contract is in pindle/activeObjectIf.h.
#include <pindle/activeObjectIf.h>

#include <atomic>
#include <chrono>
#include <ctime>
#include <deque>
#include <fstream>
#include <mutex>
#include <new>
#include <string>
#include <thread>
#include <utility>

#include <linux/futex.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace Pindle::ActiveObject::V1 {

namespace {

using Clock = std::chrono::steady_clock;
using Job = std::function<void()>;

constexpr int looksThatFindItBlocked = 10;
constexpr timespec lookInterval = {0, 1000000};
constexpr std::chrono::seconds longestJobAtTheEnd{5};

/// Another number in a child made by fork(): tells without a system call that an object was inherited.
std::atomic<unsigned int> forkCount{0};

// A thread sleeps while a word is 0. Who wakes it doesn't touch the word, as a condition variable's would be: the
// object may have ended by then, and an address is all that the kernel wants.

void sleepOn(std::atomic<int>& word, const timespec* longest)
{
    ::syscall(SYS_futex, &word, FUTEX_WAIT_PRIVATE, 0, longest, nullptr, 0);
}

void wakeSleeper(std::atomic<int>* word)
{
    ::syscall(SYS_futex, word, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
}

/// Returns  true if the kernel says that the thread sleeps, or says nothing.
bool isAsleep(pid_t threadId)
{
    std::ifstream file("/proc/self/task/" + std::to_string(threadId) + "/stat");
    std::string line;
    std::getline(file, line);
    const std::size_t name = line.rfind(')'); // the thread's name may contain others
    return name == std::string::npos || line.compare(name, 3, ") S") == 0;
}

/// Its users and its thread own it: the users can leave the thread alone.
class ActiveObject final : public ActiveObjectIf
{
public:
    /// Returns  the users' ownership. Its end is the release.
    static std::shared_ptr<ActiveObjectIf> start(const Job& init)
    {
        const auto object = std::make_shared<ActiveObject>();
        object->m_thread = std::thread([object, init = init]() mutable { object->run(std::move(init)); });
        return {object.get(), [object](ActiveObjectIf* /*object*/) { object->release(); }};
    }

    void post(Job job) override
    {
        if (isInherited()) {
            return;
        }
        std::unique_lock<std::mutex> lock(m_mutex);
        if (m_isReleased) {
            return;
        }
        m_jobs.push_back(std::move(job));
        if (m_isBusy == 0) {
            m_isBusy = 1;
            lock.unlock(); // before the woken thread wants to lock; from here on the job may release the last owner
            wakeSleeper(&m_isBusy);
        }
    }

private:
    /// Returns  whether this is a child made by fork(): without the thread, and perhaps with the mutex locked for ever.
    bool isInherited() const { return m_forkCount != forkCount.load(std::memory_order_relaxed); }

    void run(Job job)
    {
        static std::atomic<unsigned int> count{0};
        ::pthread_setname_np(::pthread_self(), ("pindle-" + std::to_string(++count)).substr(0, 15).c_str());
        std::unique_lock<std::mutex> lock(m_mutex);
        m_initialising = ::gettid();
        while (job) {
            lock.unlock();
            job();
            job = nullptr; // it may hold the last owner of this very object
            lock.lock();
            m_initialising = 0;
            m_lastProgress = m_isReleased ? Clock::now() : m_lastProgress;
            while (m_jobs.empty() && !m_isReleased) {
                m_isBusy = 0;
                lock.unlock();
                sleepOn(m_isBusy, nullptr);
                lock.lock();
            }
            if (!m_jobs.empty()) {
                job = std::move(m_jobs.front());
                m_jobs.pop_front();
            }
        }
        m_isOver = 1;
        wakeSleeper(&m_isOver);
    }

    void release()
    {
        if (isInherited()) {
            return; // the thread's part in the ownership stays for ever
        }
        std::unique_lock<std::mutex> lock(m_mutex);
        m_isReleased = true;
        m_lastProgress = Clock::now();
        m_isBusy = 1;
        wakeSleeper(&m_isBusy);
        const bool isOwnThread = m_thread.get_id() == std::this_thread::get_id();
        for (int looks = 0; !isOwnThread && m_isOver == 0 && looks < looksThatFindItBlocked &&
                            Clock::now() < m_lastProgress + longestJobAtTheEnd;) {
            looks = m_initialising != 0 && isAsleep(m_initialising) ? looks + 1 : 0;
            lock.unlock();
            sleepOn(m_isOver, &lookInterval);
            lock.lock();
        }
        std::deque<Job> dropped;
        if (!isOwnThread) { // a thread that is left alone finds no job after the one that it runs
            dropped.swap(m_jobs);
        }
        const bool isOver = m_isOver != 0;
        lock.unlock(); // before the dropped jobs are destroyed: what they own may post
        isOver ? m_thread.join() : m_thread.detach();
    }

    std::thread m_thread; // the users'
    const unsigned int m_forkCount = forkCount;
    std::mutex m_mutex;               // guards what follows
    std::atomic<int> m_isBusy{1};     // 0: the thread waits for a job, and nobody has woken it yet
    std::atomic<int> m_isOver{0};     // 1: the thread has run its last job
    bool m_isReleased = false;        // no job is queued any more
    pid_t m_initialising = 0;         // the thread, while it runs the initial job
    Clock::time_point m_lastProgress; // when the release began, or a job ended after that
    std::deque<Job> m_jobs;
};

} // namespace

ActiveObjectIf::~ActiveObjectIf() = default;

std::shared_ptr<ActiveObjectIf> ActiveObjectIf::create(const std::function<void()>& init,
                                                       const SchedulingPolicy& /*policy*/)
{
    [[maybe_unused]] static const bool isCounting =
        ::pthread_atfork(nullptr, nullptr, [] { ++forkCount; }) == 0 ? true : throw std::bad_alloc();
    return ActiveObject::start(init);
}

} // namespace Pindle::ActiveObject::V1
