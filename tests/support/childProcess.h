/// Runs programs for tests, and returns how they ended and what they wrote.
///
/// Threads  any.
#ifndef CORVANE_TESTS_SUPPORT_CHILDPROCESS_H
#define CORVANE_TESTS_SUPPORT_CHILDPROCESS_H

#include <string>
#include <vector>

namespace Corvane::Testing {

/// How a program ended.
struct ProgramResult
{
    int pid = -1;    ///< the id of its process
    int status = 0;  ///< its exit status, or minus the number of the signal that ended it
    std::string out; ///< what it wrote to standard output
    std::string err; ///< what it wrote to standard error
};

/// Runs `command` and waits for its end. Standard input is empty.
///
/// `environment` are variables, "NAME=value". They are added to those of this process, or replace the ones of the same
/// name. The first word of `command` is looked up in the path.
///
/// Errors  std::system_error if the program can't be started, because it doesn't exist for example.
///         std::runtime_error if it has not ended after two minutes; it is then killed.
ProgramResult runProgram(const std::vector<std::string>& command, const std::vector<std::string>& environment = {});

/// A program that runs beside the test until its standard input ends. It reports on its standard output.
class Companion
{
public:
    /// Starts `command` as runProgram() does, with standard input and standard output connected to this object.
    Companion(const std::vector<std::string>& command, const std::vector<std::string>& environment);

    /// Calls finish(), if the test hasn't.
    ~Companion();

    /// Returns  its next line of output, without the line feed; empty if it ends or writes nothing for two minutes.
    std::string readLine();

    /// Writes a line to its standard input. Adds the line feed.
    ///
    /// Errors  std::system_error if it has closed its standard input.
    void writeLine(const std::string& line);

    /// Closes its standard input and waits for its end. Kills it after two minutes.
    ///
    /// Returns  its exit status, or minus the number of the signal that ended it.
    int finish();

    /// Returns  the id of its process.
    int pid() const { return m_pid; }

    Companion(const Companion&) = delete;
    Companion& operator=(const Companion&) = delete;

private:
    int m_pid = -1;
    int m_input = -1;
    int m_output = -1;
    bool m_isOver = false;
    int m_status = 0;
};

} // namespace Corvane::Testing

#endif
