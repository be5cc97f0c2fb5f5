// SPDX-License-Identifier: MIT
/// Counts and times the commands that run, in a hook that the service calls after each of them.
#ifndef UNITSHELL_STATISTICS_H
#define UNITSHELL_STATISTICS_H

#include <chrono>
#include <iosfwd>
#include <map>
#include <string>

namespace UnitShell {

class Statistics
{
public:
    /// Registers the hook; the destructor deregisters it.
    Statistics();
    ~Statistics();
    Statistics(const Statistics&) = delete;
    Statistics& operator=(const Statistics&) = delete;

    /// Starts the clock; the next command's time ends when its handler has returned.
    void commandBegins() { m_begin = std::chrono::steady_clock::now(); }

    /// Writes a line for each command and one for all of them. A command that is still running doesn't count.
    void write(std::ostream& out) const;

private:
    struct Count
    {
        unsigned int runs = 0;
        unsigned int failures = 0; // results other than 0
        std::chrono::duration<double, std::milli> time = {};
    };

    std::chrono::steady_clock::time_point m_begin;
    std::map<std::string, Count> m_counts; // by the command's name
    unsigned int m_hook;
};

} // namespace UnitShell

#endif
