// SPDX-License-Identifier: MIT
/// Runs lines: splits each into words, lets the service execute them, and keeps the shell's exit status.
///
/// The commands' answers go to std::cout, the shell's own messages to std::cerr.
#ifndef UNITSHELL_SHELL_H
#define UNITSHELL_SHELL_H

#include <string>

#include "lineSource.h"
#include "statistics.h"

namespace UnitShell {

class Shell
{
public:
    static constexpr int highestStatus = 255;

    /// Shows each line before its answer if `echo` is set.
    Shell(Statistics& statistics, bool echo) : m_statistics(statistics), m_echo(echo) {}

    /// Runs lines until there are no more, a command ends the shell, or a signal arrives.
    ///
    /// Returns  the shell's exit status.
    int run(LineSource& lines);

    /// Runs one line.
    ///
    /// Returns  its status.
    int runLine(const std::string& line);

    /// Returns  the status of the last line that was not empty.
    int status() const { return m_status; }

    /// Ends the shell after the line that is running, with that line's status.
    void end() { m_ended = true; }

private:
    int execute(const std::string& line);

    Statistics& m_statistics;
    bool m_echo;
    int m_status = 0;
    bool m_ended = false;
};

} // namespace UnitShell

#endif
