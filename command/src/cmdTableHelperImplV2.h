// SPDX-License-Identifier: MIT
/// What the command-table service does: registration, execution, help and hooks on the process's one syntax graph.
#ifndef CORVANE_COMMAND_CMDTABLEHELPERIMPLV2_H
#define CORVANE_COMMAND_CMDTABLEHELPERIMPLV2_H

#include <functional>
#include <iosfwd>
#include <map>
#include <string>
#include <vector>

#include <command/cmdDefinitions.h>

#include "command/src/cmdSyntax.h"
#include "sync/mutex.h"

namespace Corvane::CmdTableHelper::V2 {

/// The operations are those of CmdTableHelperIf, with the same contracts.
class CmdTableHelperImpl
{
public:
    using Hook = std::function<void(int, int, const char* const*)>;

    CmdTableHelperImpl() = default;
    ~CmdTableHelperImpl() { end(false); }
    CmdTableHelperImpl(const CmdTableHelperImpl&) = delete;
    CmdTableHelperImpl& operator=(const CmdTableHelperImpl&) = delete;

    /// Ends the service: handlers and hooks are released, it is empty from now on, and what is registered is dropped.
    ///
    /// Threads  any; what handlers and hooks own may use the service while it is destroyed.
    void end(bool isForkedChild);

    void registerCmdTable(const std::string& commandName, const std::vector<CommandDefinitions>& table);
    void registerCmdTable(const std::string& commandName, const std::vector<CmdDefinition>& table);
    void registerCmdTable(const std::string& commandName, const std::vector<CmdDefinitionCpp>& table);

    int executeCmd(const std::vector<std::string>& words, std::ostream& out);
    int executeCmd(const std::vector<std::string>& words);

    int cmdHelp(const std::vector<std::string>& words, const std::vector<CommandDefinitions>& table, bool printHeader,
                bool finalNewline);
    int cmdHelp(const std::vector<std::string>& words, std::ostream& out, const std::vector<CmdDefinition>& table,
                bool printHeader, bool finalNewline);
    int cmdHelp(const std::vector<std::string>& words, std::ostream& out, const std::vector<CmdDefinitionCpp>& table,
                bool printHeader, bool finalNewline);

    unsigned int registerPostExecutionHook(const Hook& hook);
    void deregisterPostExecutionHook(unsigned int id);

    /// Calls the hooks that are registered now, in the order of their ids and without a lock, except those that are
    /// deregistered before their turn.
    void invokePostExecutionHooks(int result, int argc, const char* const* argv);

private:
    friend struct CmdTableHelperTestAccess;

    // A test pins the order of the members.
    SyntaxGraph m_syntaxGraph;

    unsigned int m_hookCounter CORVANE_GUARDED_BY(m_hookMutex) = 0; // the id given last
    bool m_hasEnded CORVANE_GUARDED_BY(m_hookMutex) = false;
    std::map<unsigned int, Hook> m_hooks CORVANE_GUARDED_BY(m_hookMutex);
    Mutex m_hookMutex;
};

} // namespace Corvane::CmdTableHelper::V2

#endif
