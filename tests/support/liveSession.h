/// A live recording of the provider com_brimlow_kelpsys_corvane by the distribution's LTTng, for tests.
///
///     LiveSession session;
///     if (!session.whyNot().empty()) {
///         GTEST_SKIP() << session.whyNot();
///     }
///     session.run({EMIT_PROGRAM, "argument"});
///     const Recording recording = session.finish();
///
/// A session daemon that is running is used and left alone. Otherwise the object starts one and ends it in its
/// destructor. root has one daemon per machine; the daemon of another user gets a folder of its own here. Only one
/// recording of a user runs at a time: the object holds a lock on ${TMPDIR:-/tmp}/corvane-lttng-<uid>.lock. Other
/// programs that use the library meanwhile are traced too, but are not in the recording. The destructor removes the
/// LTTng session, the daemon, the folder and the lock.
///
/// Threads  one thread at a time.
#ifndef CORVANE_TESTS_SUPPORT_LIVESESSION_H
#define CORVANE_TESTS_SUPPORT_LIVESESSION_H

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/childProcess.h"
#include "tests/support/recording.h"

namespace Corvane::Testing {

class LiveSession
{
public:
    /// Waits for the lock, starts a daemon if needed, and starts to record all events of the provider.
    ///
    /// Errors  std::exception if the tools are installed and don't record: the test must then fail, not be skipped.
    LiveSession();

    ~LiveSession();

    /// Returns  which tool is not installed on this machine, for GTEST_SKIP; empty if it records.
    const std::string& whyNot() const { return m_whyNot; }

    /// Returns  variables, "NAME=value", that a traced program needs. With them its main() begins only when the daemon
    ///          knows the program, however slow the machine is.
    std::vector<std::string> environment() const;

    /// Runs a program to its end and records its events, without those of programs that it starts.
    ///
    /// Requires  whyNot() is empty; finish() was not called.
    /// Errors    those of Corvane::Testing::runProgram().
    ProgramResult run(const std::vector<std::string>& command, const std::vector<std::string>& environment = {});

    /// Records the events of a process that was started in another way, with the variables of environment().
    void follow(int pid);

    /// Stops recording and reads back what was recorded.
    ///
    /// Requires  as run(); followed processes have ended, or have emitted all events that the test looks for.
    /// Errors    std::runtime_error if LTTng or babeltrace2 fails, if the tracer lost an event, or if the recording
    ///           has an unknown form.
    Recording finish();

    LiveSession(const LiveSession&) = delete;
    LiveSession& operator=(const LiveSession&) = delete;

private:
    class Lock;

    void startDaemon();
    void startSession();
    void cleanUp();
    ProgramResult lttng(const std::vector<std::string>& arguments) const;
    void needLttng(const std::vector<std::string>& arguments) const;

    // Destroyed in the reverse order: the daemon ends before its folder is removed, and the lock is released last.
    std::unique_ptr<Lock> m_lock;
    std::filesystem::path m_folder;
    std::unique_ptr<Companion> m_daemon;
    std::string m_sessionName;
    std::vector<int> m_followed;
    std::string m_whyNot;
};

} // namespace Corvane::Testing

#endif
