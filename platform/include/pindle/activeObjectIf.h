// SPDX-License-Identifier: MIT
/// Interface of the unit's framework library, libpindle.so.0, as far as libcorvane uses it: the active object.
/// "Stand-in" marks what the stand-in that is built here chose. The unit's library may do it differently.
///
/// An active object is a thread that first runs an initial job and then the jobs that are posted to it, one at a time
/// and in the order of posting. Data that only its jobs use need no lock.
///
/// Stand-in  a child made by fork() has none of its parent's threads: there a posted job is dropped, no job runs, and
///           the release returns at once.
#ifndef PINDLE_ACTIVEOBJECTIF_H
#define PINDLE_ACTIVEOBJECTIF_H

#include <functional>
#include <memory>

namespace Pindle::ActiveObject::V1 {

/// How the thread of an active object is scheduled.
///
/// Stand-in  the type is an enumeration. Its only value means: like the thread that creates the object.
enum class SchedulingPolicy : unsigned int
{
    Inherited = 0
};

/// Threads  any, the active object's own thread included.
// NOLINTNEXTLINE(cppcoreguidelines-special-member-functions): the unit's library has no others
class ActiveObjectIf
{
public:
    /// Queues a job. Returns at once: it waits neither for a running job nor for a long queue. What a job throws ends
    /// the process, as an exception does that leaves any thread. A job that is posted after the release has begun is
    /// dropped.
    ///
    /// Requires  `job` is not empty.
    /// Errors    std::bad_alloc; the job is then not queued.
    /// Owns      the job, until it has run.
    virtual void post(std::function<void()> job) = 0;

    /// Releasing the last owner ends the active object: the jobs that are queued still run, the thread ends, and only
    /// then does the release return. If the initial job is blocked, the queued jobs are dropped and the release returns
    /// at once; the thread stays blocked where it is. A job may release the last owner: the release then returns at
    /// once, and the queued jobs run after that job.
    ///
    /// Stand-in  the initial job counts as blocked when its thread has been found asleep for some 10 ms. The release
    ///           has one time limit: it gives up when no job has ended for 5 s. Otherwise it waits for all queued jobs,
    ///           however many there are and however slow they are. After giving up, it drops the queued jobs and leaves
    ///           the running one alone; if the process ends then, that job ends half done. The thread runs no job after
    ///           it.
    virtual ~ActiveObjectIf();

    /// Starts an active object.
    ///
    /// Stand-in  its thread is named pindle-<n>, n counting from 1 in each process.
    /// Requires  `init` is not empty. It runs on the new thread, before every posted job.
    /// Returns   the first owner; never null.
    /// Errors    std::system_error if no thread can be started; std::bad_alloc.
    /// Owns      copies `init` and keeps the copy until it has run.
    static std::shared_ptr<ActiveObjectIf> create(const std::function<void()>& init, const SchedulingPolicy& policy);
};

} // namespace Pindle::ActiveObject::V1

#endif
