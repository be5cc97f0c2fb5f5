/// Stand-in for the unit's framework library, libpindle.so.0. Its contract is in pindle/activeObjectIf.h.
#include <pindle/activeObjectIf.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <fstream>
#include <mutex>
#include <string>
#include <thread>
#include <utility>

#include <pthread.h>
#include <sys/types.h>
#include <unistd.h>

namespace Pindle::ActiveObject::V1 {

namespace {

using Job = std::function<void()>;

constexpr std::chrono::milliseconds lookInterval{1};
constexpr int looksThatFindItBlocked = 10;
constexpr std::chrono::seconds longestJobAtTheEnd{5};

/// What an active object and its thread share. The thread keeps it alive for itself, so that it may be left alone.
struct Shared
{
    std::mutex mutex;
    std::condition_variable changed; // any of the members below
    Job initialJob;                  // the thread's own once it runs
    std::deque<Job> jobs;
    std::uint64_t endedJobs = 0; // the initial one is the first
    pid_t threadId = 0;          // 0 until the thread runs
    bool isReleased = false;     // no job comes any more
    bool isLeftAlone = false;    // nobody waits any more
    bool isOver = false;         // the thread has run its last job
    std::thread thread;          // the owner's
};

/// Returns  whether the kernel says that the thread sleeps. What can't be seen isn't waited for.
bool isAsleep(pid_t threadId)
{
    std::ifstream file("/proc/self/task/" + std::to_string(threadId) + "/stat");
    std::string line;
    std::getline(file, line);
    const std::size_t name = line.rfind(')'); // a thread's name may have some of its own
    return name == std::string::npos || line.compare(name, 3, ") S") == 0;
}

void runJobs(const std::shared_ptr<Shared>& shared)
{
    std::unique_lock<std::mutex> lock(shared->mutex);
    shared->threadId = ::gettid();
    Job job = std::exchange(shared->initialJob, nullptr);
    for (;;) {
        lock.unlock();
        job();
        job = nullptr; // what it holds may be the last owner of this very object
        lock.lock();
        ++shared->endedJobs;
        shared->changed.notify_all();
        shared->changed.wait(lock, [&] { return !shared->jobs.empty() || shared->isReleased; });
        if (shared->jobs.empty() || shared->isLeftAlone) {
            break;
        }
        job = std::move(shared->jobs.front());
        shared->jobs.pop_front();
    }
    shared->isOver = true;
    shared->changed.notify_all();
}

class ActiveObject final : public ActiveObjectIf
{
public:
    explicit ActiveObject(const Job& init) : m_shared(std::make_shared<Shared>())
    {
        static std::atomic<unsigned int> count{0};
        const std::string name = ("pindle-" + std::to_string(++count)).substr(0, 15);
        m_shared->initialJob = init;
        m_shared->thread = std::thread(runJobs, m_shared);
        ::pthread_setname_np(m_shared->thread.native_handle(), name.c_str()); // nothing may fail from here on
    }

    ActiveObject(const ActiveObject&) = delete;
    ActiveObject& operator=(const ActiveObject&) = delete;

    ~ActiveObject() override
    {
        if (isInherited()) {
            return; // what is shared stays, with the number of a thread that can't be joined or detached
        }
        std::unique_lock<std::mutex> lock(m_shared->mutex);
        m_shared->isReleased = true;
        m_shared->changed.notify_all();
        if (m_shared->thread.get_id() == std::this_thread::get_id()) {
            m_shared->thread.detach();
            return;
        }
        if (waitForInitialJob(lock) && waitForJobs(lock)) {
            lock.unlock();
            m_shared->thread.join();
            return;
        }
        m_shared->isLeftAlone = true;
        const std::deque<Job> dropped = std::exchange(m_shared->jobs, {});
        lock.unlock();
        m_shared->thread.detach();
    }

    void post(Job job) override
    {
        if (isInherited()) {
            return;
        }
        const std::lock_guard<std::mutex> lock(m_shared->mutex);
        m_shared->jobs.push_back(std::move(job));
        m_shared->changed.notify_all();
    }

private:
    /// Returns  whether this process is a child made by fork(). It doesn't have the thread, which may have held the
    ///          lock, and so would hold it for ever.
    bool isInherited() const { return ::getpid() != m_process; }

    /// Returns  false if the initial job is blocked, or doesn't come to an end.
    bool waitForInitialJob(std::unique_lock<std::mutex>& lock)
    {
        const auto deadline = std::chrono::steady_clock::now() + longestJobAtTheEnd;
        int looks = 0;
        while (m_shared->endedJobs == 0 && looks < looksThatFindItBlocked &&
               std::chrono::steady_clock::now() < deadline) {
            looks = m_shared->threadId != 0 && isAsleep(m_shared->threadId) ? looks + 1 : 0;
            m_shared->changed.wait_for(lock, lookInterval);
        }
        return m_shared->endedJobs > 0;
    }

    /// Returns  false if the jobs have stopped ending.
    bool waitForJobs(std::unique_lock<std::mutex>& lock)
    {
        for (;;) {
            const std::uint64_t before = m_shared->endedJobs;
            const bool moved = m_shared->changed.wait_for(
                lock, longestJobAtTheEnd, [&] { return m_shared->isOver || m_shared->endedJobs != before; });
            if (m_shared->isOver || !moved) {
                return m_shared->isOver;
            }
        }
    }

    const pid_t m_process = ::getpid();
    const std::shared_ptr<Shared> m_shared;
};

} // namespace

ActiveObjectIf::~ActiveObjectIf() = default;

std::shared_ptr<ActiveObjectIf> ActiveObjectIf::create(const std::function<void()>& init,
                                                       const SchedulingPolicy& /*policy*/)
{
    return std::make_shared<ActiveObject>(init);
}

} // namespace Pindle::ActiveObject::V1
