/// A live recording of the provider com_brimlow_kelpsys_corvane by the distribution's LTTng, for tests.
///
///     LiveSession session;
///     if (!session.whyNot().empty()) {
///         GTEST_SKIP() << session.whyNot();
///     }
///     session.run({EMIT_PROGRAM, "argument"});
///     const Recording recording = session.finish();
///
/// A session daemon that runs already is used and left alone; otherwise one runs for as long as the object lives. As
/// root there is one daemon per machine; another user's daemon has a folder of its own here. Recordings on one machine
/// exclude each other by a lock on ${TMPDIR:-/tmp}/corvane-lttng-<uid>.lock, which is held as long as the object lives.
/// Other programs that use the library meanwhile are traced too, but are no part of the recording. The destructor takes
/// everything away: the LTTng session, the daemon, the folder, the lock.
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
    /// Waits for the lock, gets a daemon and starts to record all events of the provider.
    ///
    /// Errors  std::exception if the tools are installed and yet don't record: that is a failure, nothing to be
    /// skipped.
    LiveSession();

    ~LiveSession();

    /// Returns  which tool is not installed on this machine, for GTEST_SKIP; empty if it records.
    const std::string& whyNot() const { return m_whyNot; }

    /// Returns  variables, "NAME=value", with which a traced program must be started. It doesn't begin its main()
    ///          before the daemon knows it, however slow the machine is.
    std::vector<std::string> environment() const;

    /// Runs a program to its end and makes its events, not those of programs that it starts, part of the recording.
    ///
    /// Requires  whyNot() is empty; finish() was not called.
    /// Errors    those of Corvane::Testing::runProgram().
    ProgramResult run(const std::vector<std::string>& command, const std::vector<std::string>& environment = {});

    /// Makes the events of a process that was started in another way, with environment(), part of the recording.
    void follow(int pid);

    /// Stops recording and reads back what was recorded.
    ///
    /// Requires  as run(); processes that are followed are over, or have emitted what they should.
    /// Errors    std::runtime_error if LTTng or babeltrace2 fails, if the tracer lost an event, or if the recording
    ///           can't be understood.
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

    // Released from the last one to the first one: the daemon ends before its folder goes, and the lock goes last.
    std::unique_ptr<Lock> m_lock;
    std::filesystem::path m_folder;
    std::unique_ptr<Companion> m_daemon;
    std::string m_sessionName;
    std::vector<int> m_followed;
    std::string m_whyNot;
};

} // namespace Corvane::Testing

#endif
