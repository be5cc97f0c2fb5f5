/// Counts and times the commands that run, in a hook that the service calls after each of them.
#ifndef UNITSHELL_STATISTICS_H
#define UNITSHELL_STATISTICS_H

#include <chrono>
#include <iosfwd>
#include <map>
#include <string>
#include <vector>

#include <command/cmdDefinitions.h>

namespace UnitShell {

class Statistics
{
public:
    /// Registers the hook; the destructor takes it away again.
    Statistics();
    ~Statistics();
    Statistics(const Statistics&) = delete;
    Statistics& operator=(const Statistics&) = delete;

    /// Starts the clock; the next command's time ends when its handler has returned.
    void commandBegins();

    /// Writes a line for each command and one for all. A command that is not over yet is not in it.
    void write(std::ostream& out) const;

private:
    using Clock = std::chrono::steady_clock;

    struct Count
    {
        unsigned int runs = 0;
        unsigned int failures = 0; // results other than 0
        Clock::duration time = {};
    };

    static void writeCount(const std::string& name, const Count& count, std::ostream& out);

    Clock::time_point m_begin;
    std::map<std::string, Count> m_counts; // by the command's name
    unsigned int m_hook;
};

/// A second table for the command "show".
std::vector<Corvane::CmdTableHelper::CmdDefinitionCpp> statisticsTable(const Statistics& statistics);

} // namespace UnitShell

#endif
