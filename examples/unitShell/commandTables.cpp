/// The tables that the shell has registered, and the command "help" that shows them.
#include "commandTables.h"

#include <type_traits>

#include "arguments.h"
#include "commands.h"

namespace UnitShell {

namespace {

int help(const std::vector<std::string>& words, const CommandTables& tables, std::ostream& out)
{
    const bool withDescriptions = words.size() > 1 && words.back() == "-l";
    const std::size_t most = withDescriptions ? 3 : 2;
    if (goesOn(words.size(), most, out)) {
        return failed;
    }
    const bool named = words.size() == most;
    if (!tables.help(named ? &words[1] : nullptr, withDescriptions, out)) {
        out << "there is no command '" << words[1] << "'\n";
        return failed;
    }
    return done;
}

} // namespace

bool CommandTables::help(const std::string* command, bool withDescriptions, std::ostream& out) const
{
    using Corvane::CmdTableHelper::CommandDefinitions;
    auto& service = Corvane::CmdTableHelper::V2::CmdTableHelperIf::getInstance();
    // The service looks for "-l" from the third word on, where it stands in "help show -l".
    std::vector<std::string> words{"help", command != nullptr ? *command : ""};
    if (withDescriptions) {
        words.emplace_back("-l");
    }
    bool found = false;
    for (const Entry& entry : m_tables) {
        if (command != nullptr && entry.command != *command) {
            continue;
        }
        const bool header = !found; // several tables are to look like one
        found = true;
        std::visit(
            [&](const auto& table) {
                if constexpr (std::is_same_v<decltype(table), const std::vector<CommandDefinitions>&>) {
                    service.cmdHelp(words, table, header, false); // always to std::cout: this kind knows no streams
                } else {
                    service.cmdHelp(words, out, table, header, false);
                }
            },
            entry.table);
    }
    if (found && !withDescriptions) {
        out << "\n";
    }
    return found;
}

std::vector<Corvane::CmdTableHelper::CmdDefinitionCpp> helpTable(const CommandTables& tables)
{
    const auto handler = [&tables](const std::vector<std::string>& words, std::ostream& out) {
        return help(words, tables, out);
    };
    return {
        {"help [-l]", handler, "Shows the syntax of all commands.\n-l  with descriptions"},
        {"help <command> [-l]", handler, "Shows the syntax of one command."},
    };
}

} // namespace UnitShell
