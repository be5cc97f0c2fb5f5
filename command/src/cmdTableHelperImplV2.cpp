// SPDX-License-Identifier: MIT
/// Registers commands, executes lines, writes help and calls hooks.
#include "command/src/cmdTableHelperImplV2.h"

#include <algorithm>
#include <iostream>

#include "trace/emit.h"

namespace Corvane::CmdTableHelper::V2 {

namespace {

/// The line that the event carries. Readers filter on it, so it doesn't follow the code.
namespace TraceLine {
constexpr unsigned int executeCmd = 150;
} // namespace TraceLine

/// What executeCmd() returns for a line that leads to no handler.
constexpr int noSuchCommand = 20;

/// The first blank of a description after this column becomes a line break.
constexpr unsigned int helpColumns = 70;
constexpr const char* helpLineBreak = "\n     ";

template <typename Record>
SyntaxGraph::Synopses synopsesOf(const std::vector<Record>& table)
{
    SyntaxGraph::Synopses synopses;
    synopses.reserve(table.size());
    for (const Record& record : table) {
        synopses.emplace_back(record.synopsis, ShellCommandFunction(record.handler));
    }
    return synopses;
}

void writeDescription(const char* description, std::ostream& out)
{
    if (description != nullptr && *description != '\0') {
        out << helpLineBreak;
        unsigned int column = 0;
        for (const char* cursor = description; *cursor != '\0'; ++cursor) {
            if (*cursor == '\n' || (*cursor == ' ' && column > helpColumns)) {
                out << helpLineBreak;
                column = 0;
            } else {
                out << *cursor;
                ++column;
            }
        }
        out << "\n";
    }
    out << "\n";
}

template <typename Record>
int writeHelp(const std::vector<std::string>& words, std::ostream& out, const std::vector<Record>& table,
              bool printHeader, bool finalNewline)
{
    const bool longMode = words.size() > 2 && std::find(words.begin() + 2, words.end(), "-l") != words.end();
    if (printHeader) {
        out << "Command syntax:" << (longMode ? "\n\n" : "\n");
    }
    for (const Record& record : table) {
        out << "  " << record.synopsis << "\n";
        if (longMode) {
            writeDescription(record.description, out);
        }
    }
    if (finalNewline && !longMode) {
        out << "\n";
    }
    return 1;
}

} // namespace

void CmdTableHelperImpl::end(bool isForkedChild)
{
    // Handlers and hooks may own objects whose destructors call the service, to deregister a hook for example. So they
    // are released while all members still exist, and without a lock.
    std::map<unsigned int, Hook> doomed;
    if (lockAtEnd(m_hookMutex, isForkedChild)) {
        m_hasEnded = true;
        doomed.swap(m_hooks);
        m_hookMutex.unlock();
    }
    m_syntaxGraph.end(isForkedChild);
}

void CmdTableHelperImpl::registerCmdTable(const std::string& commandName, const std::vector<CommandDefinitions>& table)
{
    m_syntaxGraph.addCommand(commandName, synopsesOf(table));
}

void CmdTableHelperImpl::registerCmdTable(const std::string& commandName, const std::vector<CmdDefinition>& table)
{
    m_syntaxGraph.addCommand(commandName, synopsesOf(table));
}

void CmdTableHelperImpl::registerCmdTable(const std::string& commandName, const std::vector<CmdDefinitionCpp>& table)
{
    m_syntaxGraph.addCommand(commandName, synopsesOf(table));
}

int CmdTableHelperImpl::executeCmd(const std::vector<std::string>& words, std::ostream& out)
{
    std::vector<const char*> argv(words.size());
    std::transform(words.begin(), words.end(), argv.begin(), [](const std::string& word) { return word.c_str(); });
    SyntaxGraph::Command command = m_syntaxGraph.findCommand(argv.size(), argv.data(), out);
    if (!command.node) {
        return noSuchCommand;
    }
    Trace::trace1(__FILE__, TraceLine::executeCmd, [&](std::ostream& msg) {
        std::string line; // one insertion into a stream costs as much as many words do here
        const char* separator = "";
        for (const std::string& word : words) {
            line.append(separator).append(word);
            separator = " ";
        }
        msg << "Execute VELK command: " << line;
    });
    const int argc = static_cast<int>(argv.size());
    const int result = command.call(argc, argv.data(), out);
    invokePostExecutionHooks(result, argc, argv.data());
    return result;
}

int CmdTableHelperImpl::executeCmd(const std::vector<std::string>& words)
{
    return executeCmd(words, std::cout);
}

int CmdTableHelperImpl::cmdHelp(const std::vector<std::string>& words, const std::vector<CommandDefinitions>& table,
                                bool printHeader, bool finalNewline)
{
    return writeHelp(words, std::cout, table, printHeader, finalNewline);
}

int CmdTableHelperImpl::cmdHelp(const std::vector<std::string>& words, std::ostream& out,
                                const std::vector<CmdDefinition>& table, bool printHeader, bool finalNewline)
{
    return writeHelp(words, out, table, printHeader, finalNewline);
}

int CmdTableHelperImpl::cmdHelp(const std::vector<std::string>& words, std::ostream& out,
                                const std::vector<CmdDefinitionCpp>& table, bool printHeader, bool finalNewline)
{
    return writeHelp(words, out, table, printHeader, finalNewline);
}

unsigned int CmdTableHelperImpl::registerPostExecutionHook(const Hook& hook)
{
    const ExclusiveLock lock(m_hookMutex);
    // The counter may come round. A hook that is still registered then keeps its id.
    do {
        ++m_hookCounter;
    } while (m_hooks.count(m_hookCounter) != 0);
    if (!m_hasEnded) {
        m_hooks.emplace(m_hookCounter, hook);
    }
    return m_hookCounter;
}

void CmdTableHelperImpl::deregisterPostExecutionHook(unsigned int id)
{
    decltype(m_hooks)::node_type removed; // released after the mutex: the destructor of a hook may use the service
    const ExclusiveLock lock(m_hookMutex);
    removed = m_hooks.extract(id);
}

void CmdTableHelperImpl::invokePostExecutionHooks(int result, int argc, const char* const* argv)
{
    const auto hooks = [this] {
        const ExclusiveLock lock(m_hookMutex);
        return m_hooks;
    }();
    const auto isRegistered = [this](unsigned int id) {
        const ExclusiveLock lock(m_hookMutex);
        return m_hooks.count(id) != 0;
    };
    for (const auto& [id, hook] : hooks) {
        if (isRegistered(id)) {
            hook(result, argc, argv);
        }
    }
}

} // namespace Corvane::CmdTableHelper::V2
