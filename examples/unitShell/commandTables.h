// SPDX-License-Identifier: MIT
/// The tables that the shell has registered. The service keeps no help texts, so the shell keeps the tables for "help".
#ifndef UNITSHELL_COMMANDTABLES_H
#define UNITSHELL_COMMANDTABLES_H

#include <functional>
#include <ostream>
#include <string>
#include <type_traits>
#include <vector>

#include <command/cmdTableHelperIf.h>

namespace UnitShell {

class CommandTables
{
public:
    struct Entry
    {
        std::string command;
        std::function<void(const std::vector<std::string>& words, bool withHeader, std::ostream& out)> writeHelp;
    };

    /// Registers a table. A command may have several.
    template <typename Record>
    void add(const std::string& command, const std::vector<Record>& table)
    {
        auto& service = Corvane::CmdTableHelper::V2::CmdTableHelperIf::getInstance();
        service.registerCmdTable(command, table);
        m_entries.push_back({command, [&service, table](const std::vector<std::string>& words, bool withHeader,
                                                        [[maybe_unused]] std::ostream& out) {
                                 if constexpr (std::is_same_v<Record, Corvane::CmdTableHelper::CommandDefinitions>) {
                                     service.cmdHelp(words, table, withHeader, false); // writes to std::cout
                                 } else {
                                     service.cmdHelp(words, out, table, withHeader, false);
                                 }
                             }});
    }

    const std::vector<Entry>& entries() const { return m_entries; }

private:
    std::vector<Entry> m_entries;
};

} // namespace UnitShell

#endif
