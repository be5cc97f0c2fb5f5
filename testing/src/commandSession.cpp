// SPDX-License-Identifier: MIT
/// Runs typed lines. A hook tells whether a handler ran: hooks run on the thread of their command, after every handler
/// that returns, and never after a usage.
#include <testing/commandSession.h>

#include <sstream>
#include <utility>

#include <command/cmdTableHelperIf.h>
#include <console/words.h>

namespace Corvane::Testing {

namespace {

using CmdTableHelper::V2::CmdTableHelperIf;

thread_local unsigned long t_commandsRun = 0; // only grows: a handler or a hook may run lines, too

} // namespace

CommandSession::CommandSession()
    : m_hook(CmdTableHelperIf::getInstance().registerPostExecutionHook(
          [](int, int, const char* const*) { ++t_commandsRun; }))
{
}

CommandSession::~CommandSession()
{
    CmdTableHelperIf::getInstance().deregisterPostExecutionHook(m_hook);
}

CommandResult CommandSession::run(const std::string& line)
{
    const std::vector<std::string> words = Console::splitLine(line);
    std::ostringstream out;
    const unsigned long commandsBefore = t_commandsRun;
    CommandResult result;
    result.result = CmdTableHelperIf::getInstance().executeCmd(words, out);
    result.isUsage = t_commandsRun == commandsBefore;
    result.output = out.str();
    return result;
}

} // namespace Corvane::Testing
