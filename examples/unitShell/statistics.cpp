// SPDX-License-Identifier: MIT
/// Counts and times the commands that run.
#include "statistics.h"

#include <iomanip>
#include <ostream>
#include <sstream>

#include <command/cmdTableHelperIf.h>

namespace UnitShell {

using Corvane::CmdTableHelper::V2::CmdTableHelperIf;

Statistics::Statistics()
    : m_hook(
          CmdTableHelperIf::getInstance().registerPostExecutionHook([this](int result, int, const char* const* argv) {
              Count& count = m_counts[argv[0]];
              ++count.runs;
              count.failures += result == 0 ? 0 : 1;
              count.time += std::chrono::steady_clock::now() - m_begin;
          }))
{
}

Statistics::~Statistics()
{
    CmdTableHelperIf::getInstance().deregisterPostExecutionHook(m_hook);
}

void Statistics::write(std::ostream& out) const
{
    std::ostringstream lines; // the caller's stream keeps its format
    lines << std::fixed << std::setprecision(3);
    const auto writeLine = [&lines](const std::string& name, const Count& count) {
        lines << std::left << std::setw(8) << name << std::right << ' ' << std::setw(4) << count.runs << " run, "
              << std::setw(3) << count.failures << " failed, " << count.time.count() << " ms\n";
    };
    Count all;
    for (const auto& [name, count] : m_counts) {
        writeLine(name, count);
        all.runs += count.runs;
        all.failures += count.failures;
        all.time += count.time;
    }
    writeLine("total", all);
    out << lines.str();
}

} // namespace UnitShell
