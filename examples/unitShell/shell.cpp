/// Runs lines: splits them into words and has them executed.
#include "shell.h"

#include <exception>
#include <iostream>

#include <command/cmdTableHelperIf.h>

#include "interrupts.h"
#include "wordSplitter.h"

namespace UnitShell {

namespace {

using Corvane::CmdTableHelper::V2::CmdTableHelperIf;

constexpr int broken = 1;  // the command broke off, or its answer could not be written
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
    const SplitLine split = splitLine(line);
    if (!split.error.empty()) {
        return complain(split.error, badLine);
    }
    if (split.words.empty()) {
        return m_status;
    }
    try {
        m_statistics.commandBegins();
        const int result = CmdTableHelperIf::getInstance().executeCmd(split.words, std::cout);
        return result >= 0 && result <= highestStatus ? result : highestStatus;
    } catch (const std::exception& error) { // from a handler: the service itself throws nothing of its own
        return complain(error.what(), broken);
    }
}

} // namespace UnitShell
