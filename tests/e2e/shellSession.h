/// A run of the example shell: a test types, waits for answers, sends signals and gets the exit status.
///
/// Errors  a wait throws std::runtime_error if the shell is silent for a minute. The destructor kills the shell.
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

    /// Types `text` to a shell on pipes and waits until its output pipe is full.
    void typeUntilOutputIsFull(const std::string& text);

    /// Waits until `text` appears on standard output, behind the text that the last wait has found.
    void waitFor(const std::string& text);

    void signal(int number);

    /// Ends the standard input of a shell on a pipe.
    void endInput();

    /// Waits for the shell's end.
    ///
    /// Returns  its exit status, or minus the number of the signal that killed it.
    int waitForEnd();

    /// Returns  the id of the shell's process.
    pid_t pid() const { return m_pid; }

    /// Return  everything that was read from the shell so far.
    const std::string& out() const { return m_out; }
    const std::string& err() const { return m_err; }

    /// Returns  whether the terminal echoes keys and passes whole lines on, as it did before the shell started.
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
    std::size_t m_found = 0; // where the text that the last wait has found ends in m_out
};

/// How a shell ended, and what it wrote.
struct ShellResult
{
    int status;
    std::string out;
    std::string err;
};

/// Runs the shell with `input` on standard input.
///
/// Requires  `input` fits into a pipe.
ShellResult runShell(const std::vector<std::string>& arguments, const std::string& input = "");

} // namespace Corvane::Testing

#endif
