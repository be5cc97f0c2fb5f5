// SPDX-License-Identifier: MIT
/// Runs typed lines as a user's shell would, and returns the answers.
///
///     Corvane::Testing::CommandSession session;
///     const Corvane::Testing::CommandResult result = session.run("carrier on 3 # a comment");
///     // result.isUsage is false, result.result is what the handler returned, result.output is what it wrote
///
/// The lines run in the command service of the process, with the tables that the application has registered there.
///
/// Threads  any thread may use a session. Each line runs on the calling thread.
/// Since    0.1.0
#ifndef CORVANE_TESTING_COMMANDSESSION_H
#define CORVANE_TESTING_COMMANDSESSION_H

#include <string>

namespace Corvane::Testing {

/// What a line led to.
struct CommandResult
{
    int result = 0;       ///< what the handler returned; 20 for the usage
    std::string output;   ///< what was written to the line's stream; what a handler writes to std::cout isn't in it
    bool isUsage = false; ///< true: no handler ran, and the output is the usage
};

class CommandSession
{
public:
    /// Registers a hook with the command service. The hook tells the session that a handler ran.
    ///
    /// Errors  std::bad_alloc.
    CommandSession();

    /// Deregisters the hook.
    ~CommandSession();

    /// Splits a line into words and executes it. <console/words.h> says what quotes and comments mean. A blank line is
    /// executed as a line without words.
    ///
    /// `isUsage` doesn't depend on the result: a handler may return 20 as well.
    ///
    /// Returns  what the line led to.
    /// Errors   Corvane::Console::BadLine if the line can't be split: its text says why, for example "the quote ' in
    ///          column 6 is never closed". Passes on what the handler or a hook throws. std::bad_alloc.
    CommandResult run(const std::string& line);

    CommandSession(const CommandSession&) = delete;
    CommandSession& operator=(const CommandSession&) = delete;

private:
    unsigned int m_hook;
};

} // namespace Corvane::Testing

#endif
