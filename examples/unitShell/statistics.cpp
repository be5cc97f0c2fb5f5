/// Counts and times the commands that run.
#include "statistics.h"

#include <iomanip>
#include <ostream>
#include <sstream>

#include <command/cmdTableHelperIf.h>

#include "arguments.h"

namespace UnitShell {

using Corvane::CmdTableHelper::V2::CmdTableHelperIf;

Statistics::Statistics()
    : m_hook(
          CmdTableHelperIf::getInstance().registerPostExecutionHook([this](int result, int, const char* const* argv) {
              Count& count = m_counts[argv[0]];
              ++count.runs;
              count.failures += result == done ? 0 : 1;
              count.time += Clock::now() - m_begin;
          }))
{
}

Statistics::~Statistics()
{
    CmdTableHelperIf::getInstance().deregisterPostExecutionHook(m_hook);
}

void Statistics::commandBegins()
{
    m_begin = Clock::now();
}

void Statistics::write(std::ostream& out) const
{
    Count all;
    for (const auto& [name, count] : m_counts) {
        writeCount(name, count, out);
        all.runs += count.runs;
        all.failures += count.failures;
        all.time += count.time;
    }
    writeCount("total", all, out);
}

void Statistics::writeCount(const std::string& name, const Count& count, std::ostream& out)
{
    const std::chrono::duration<double, std::milli> time = count.time;
    std::ostringstream line; // the caller's stream keeps its format
    line << std::left << std::setw(8) << name << std::right << ' ' << std::setw(4) << count.runs << " run, "
         << std::setw(3) << count.failures << " failed, " << std::fixed << std::setprecision(3) << time.count()
         << " ms\n";
    out << line.str();
}

std::vector<Corvane::CmdTableHelper::CmdDefinitionCpp> statisticsTable(const Statistics& statistics)
{
    const auto show = [&statistics](const std::vector<std::string>& words, std::ostream& out) {
        if (goesOn(words.size(), 2, out)) {
            return failed;
        }
        statistics.write(out);
        return done;
    };
    return {{"show statistics", show, "Shows how often each command ran and failed, and the time its runs took."}};
}

} // namespace UnitShell
