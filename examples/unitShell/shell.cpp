// SPDX-License-Identifier: MIT
/// Runs typed lines.
#include "shell.h"

#include <exception>
#include <iostream>

#include <command/cmdTableHelperIf.h>
#include <console/words.h>

#include "interrupts.h"

namespace UnitShell {

namespace {

using Corvane::CmdTableHelper::V2::CmdTableHelperIf;

constexpr int broken = 1;  // a handler threw an exception, or the answer can't be written
constexpr int badLine = 2; // the line can't be split into words
constexpr int signalled = 128;

int complain(const std::string& what, int status)
{
    std::cerr << "unitShell: " << what << "\n";
    return status;
}

} // namespace

int Shell::run(LineSource& lines)
{
    std::string line;
    while (!m_ended && lines.next(line) && Interrupts::received() == 0) {
        runLine(line);
    }
    return !m_ended && Interrupts::received() != 0 ? signalled + Interrupts::received() : m_status;
}

int Shell::runLine(const std::string& line)
{
    if (m_echo) {
        std::cout << (line.empty() ? "" : prompt) << line << "\n";
    }
    m_status = execute(line);
    if (!std::cout.flush()) {
        m_status = complain("can't write to standard output", broken);
        end();
    }
    return m_status;
}

int Shell::execute(const std::string& line)
{
    if (line.size() > maxLineLength) {
        return complain("the line is longer than " + std::to_string(maxLineLength) + " bytes", badLine);
    }
    try {
        const auto words = Corvane::Console::splitLine(line);
        if (words.empty()) {
            return m_status;
        }
        m_statistics.commandBegins();
        const int result = CmdTableHelperIf::getInstance().executeCmd(words, std::cout);
        return result >= 0 && result <= highestStatus ? result : highestStatus;
    } catch (const Corvane::Console::BadLine& error) {
        return complain(error.what(), badLine);
    } catch (const std::exception& error) { // from a handler
        return complain(error.what(), broken);
    }
}

} // namespace UnitShell
