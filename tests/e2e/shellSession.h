/// A run of the example shell: a test types, waits for answers, sends signals and gets the exit status.
///
/// Nothing here waits for a time to pass. A shell that is silent for a minute while its test waits is killed, and the
/// wait throws std::runtime_error.
#ifndef CORVANE_TESTS_E2E_SHELLSESSION_H
#define CORVANE_TESTS_E2E_SHELLSESSION_H

#include <string>
#include <vector>

#include <sys/types.h>

namespace Corvane::Testing {

enum class Stdin
{
    pipe,    ///< and standard output and standard error are pipes of their own
    terminal ///< which is standard output and standard error as well
};

class ShellSession
{
public:
    /// Starts the shell. SIGINT is ignored in it from the start if `ignoreInterrupt` is set.
    ShellSession(Stdin kind, const std::vector<std::string>& arguments, bool ignoreInterrupt = false);
    ~ShellSession();
    ShellSession(const ShellSession&) = delete;
    ShellSession& operator=(const ShellSession&) = delete;

    /// Types `text`.
    void type(const std::string& text);

    /// Types `text` to a shell on pipes and waits until it has written as much as it can without being read.
    void typeUntilOutputIsFull(const std::string& text);

    /// Waits until standard output has `text` after what the last wait has found.
    void waitFor(const std::string& text);

    void signal(int number);

    /// Ends the standard input of a shell on a pipe.
    void endInput();

    /// Waits for the shell's end. Returns its exit status, or minus the number of the signal that killed it.
    int waitForEnd();

    /// All that was written so far.
    const std::string& out() const { return m_out; }
    const std::string& err() const { return m_err; }

    /// Returns whether the terminal shows what is typed and hands it over by lines, as it did before the shell began.
    bool terminalIsAsBefore() const;

private:
    void startOnTerminal(std::vector<char*>& argv);
    void startOnPipes(std::vector<char*>& argv, bool ignoreInterrupt);
    bool readSome();

    pid_t m_pid = -1;
    int m_input = -1;
    int m_output = -1; // -1 once it has ended; of a terminal the same as m_input
    int m_error = -1;  // -1 once it has ended, and for a terminal
    std::string m_out;
    std::string m_err;
    std::size_t m_found = 0; // the end in m_out of what the last wait has found
};

/// How a shell ended that nobody typed to.
struct ShellResult
{
    int status;
    std::string out;
    std::string err;
};

/// Runs the shell with `input`, which must fit a pipe, on standard input.
ShellResult runShell(const std::vector<std::string>& arguments, const std::string& input = "");

} // namespace Corvane::Testing

#endif
