/// Runs a program to its end and tells how it ended and what it wrote.
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
    int pid = -1;    ///< the number that its process had
    int status = 0;  ///< its exit status, or minus the number of the signal that ended it
    std::string out; ///< what it wrote to standard output
    std::string err; ///< what it wrote to standard error
};

/// Runs `command` and waits for its end. Standard input is empty.
///
/// `environment` are variables, "NAME=value", that the program gets beside those of this process, or in place of one of
/// the same name. The first word of `command` is looked up in the path.
///
/// Errors  std::system_error if it can't be started (a program that isn't there, say); std::runtime_error if it isn't
///         over after two minutes, and is killed then.
ProgramResult runProgram(const std::vector<std::string>& command, const std::vector<std::string>& environment = {});

/// A program that runs beside the test until its standard input ends, and says on its standard output how it is doing.
class Companion
{
public:
    /// Starts `command` as runProgram() does, with standard input and standard output connected to this object.
    Companion(const std::vector<std::string>& command, const std::vector<std::string>& environment);

    /// Does what finish() does, unless that was called.
    ~Companion();

    /// Returns  the next line that it writes, without the line feed; empty if it ends or is silent for two minutes.
    std::string readLine();

    /// Writes a line, to which the line feed is added, to its standard input.
    ///
    /// Errors  std::system_error if it doesn't read any more.
    void writeLine(const std::string& line);

    /// Ends its standard input and waits for its end. One that doesn't end within two minutes is killed.
    ///
    /// Returns  its exit status, or minus the number of the signal that ended it.
    int finish();

    /// Returns  the number of its process.
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
