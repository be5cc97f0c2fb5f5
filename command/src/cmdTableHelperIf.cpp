/// The exported facade of the command-table service: it owns the implementation and forwards every call.
#include <command/cmdTableHelperIf.h>

#include "command/src/cmdTableHelperImplV2.h"

namespace Corvane::CmdTableHelper::V2 {

CmdTableHelperIf& CmdTableHelperIf::getInstance()
{
    static CmdTableHelperIf instance;
    return instance;
}

CmdTableHelperIf::CmdTableHelperIf() : m_impl(new CmdTableHelperImpl) {}

CmdTableHelperIf::~CmdTableHelperIf()
{
    delete m_impl;
}

void CmdTableHelperIf::registerCmdTable(const std::string& commandName, const std::vector<CommandDefinitions>& table)
{
    m_impl->registerCmdTable(commandName, table);
}

void CmdTableHelperIf::registerCmdTable(const std::string& commandName, const std::vector<CmdDefinition>& table)
{
    m_impl->registerCmdTable(commandName, table);
}

void CmdTableHelperIf::registerCmdTable(const std::string& commandName, const std::vector<CmdDefinitionCpp>& table)
{
    m_impl->registerCmdTable(commandName, table);
}

int CmdTableHelperIf::executeCmd(const std::vector<std::string>& words, std::ostream& out)
{
    return m_impl->executeCmd(words, out);
}

int CmdTableHelperIf::executeCmd(const std::vector<std::string>& words)
{
    return m_impl->executeCmd(words);
}

int CmdTableHelperIf::cmdHelp(const std::vector<std::string>& words, const std::vector<CommandDefinitions>& table,
                              bool printHeader, bool finalNewline)
{
    return m_impl->cmdHelp(words, table, printHeader, finalNewline);
}

int CmdTableHelperIf::cmdHelp(const std::vector<std::string>& words, std::ostream& out,
                              const std::vector<CmdDefinition>& table, bool printHeader, bool finalNewline)
{
    return m_impl->cmdHelp(words, out, table, printHeader, finalNewline);
}

int CmdTableHelperIf::cmdHelp(const std::vector<std::string>& words, std::ostream& out,
                              const std::vector<CmdDefinitionCpp>& table, bool printHeader, bool finalNewline)
{
    return m_impl->cmdHelp(words, out, table, printHeader, finalNewline);
}

unsigned int CmdTableHelperIf::registerPostExecutionHook(const std::function<void(int, int, const char* const*)>& hook)
{
    return m_impl->registerPostExecutionHook(hook);
}

void CmdTableHelperIf::deregisterPostExecutionHook(unsigned int id)
{
    m_impl->deregisterPostExecutionHook(id);
}

} // namespace Corvane::CmdTableHelper::V2
