/// The tables that the shell has registered: the service keeps no texts for help, so the shell keeps the tables.
#ifndef UNITSHELL_COMMANDTABLES_H
#define UNITSHELL_COMMANDTABLES_H

#include <ostream>
#include <string>
#include <variant>
#include <vector>

#include <command/cmdTableHelperIf.h>

namespace UnitShell {

class CommandTables
{
public:
    /// Registers a table. A command may have several.
    template <typename Record>
    void add(const std::string& command, const std::vector<Record>& table)
    {
        Corvane::CmdTableHelper::V2::CmdTableHelperIf::getInstance().registerCmdTable(command, table);
        m_tables.push_back({command, table});
    }

    /// Writes the help of one command, or of all if `command` is null. Returns false if there is no such command.
    bool help(const std::string* command, bool withDescriptions, std::ostream& out) const;

private:
    struct Entry
    {
        std::string command;
        std::variant<std::vector<Corvane::CmdTableHelper::CommandDefinitions>,
                     std::vector<Corvane::CmdTableHelper::CmdDefinition>,
                     std::vector<Corvane::CmdTableHelper::CmdDefinitionCpp>>
            table;
    };
    std::vector<Entry> m_tables;
};

} // namespace UnitShell

#endif
