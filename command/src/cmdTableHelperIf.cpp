// SPDX-License-Identifier: MIT
/// The exported facade of the command-table service: it owns the implementation and forwards every call.
#include <command/cmdTableHelperIf.h>

#include <cstddef>
#include <memory>
#include <new>

#include <unistd.h>

#include "command/src/cmdTableHelperImplV2.h"

namespace Corvane::CmdTableHelper::V2 {

CmdTableHelperIf& CmdTableHelperIf::getInstance()
{
    // Other threads may use the service while static objects are destroyed, and after. So the facade and what it owns
    // are never destroyed; only their state ends. Both lie in the library's own data: where the library is unloaded,
    // nothing stays on the heap.
    alignas(CmdTableHelperImpl) static std::byte impl[sizeof(CmdTableHelperImpl)];
    alignas(CmdTableHelperIf) static std::byte facade[sizeof(CmdTableHelperIf)];
    static CmdTableHelperIf& instance = *new (&facade) CmdTableHelperIf(new (&impl) CmdTableHelperImpl);
    static const pid_t process = ::getpid();
    static const std::unique_ptr<CmdTableHelperImpl, void (*)(CmdTableHelperImpl*)> ending(
        instance.m_impl, [](CmdTableHelperImpl* service) { service->end(::getpid() != process); });
    return instance;
}

// The process's instance uses neither the default constructor nor the destructor. They serve a facade that owns its
// implementation on the heap.

CmdTableHelperIf::CmdTableHelperIf() : CmdTableHelperIf(new CmdTableHelperImpl) {}

CmdTableHelperIf::CmdTableHelperIf(CmdTableHelperImpl* impl) : m_impl(impl) {}

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
