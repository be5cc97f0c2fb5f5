// SPDX-License-Identifier: MIT
// A command "help" that knows all tables: it lists the commands, and shows the synopses and the help of each.
#include <iostream>
#include <map>
#include <string>
#include <vector>

#include <command/cmdTableHelperIf.h>

namespace {

using Corvane::CmdTableHelper::CmdDefinitionCpp;
using Corvane::CmdTableHelper::V2::CmdTableHelperIf;
using Table = std::vector<CmdDefinitionCpp>;
using Words = std::vector<std::string>;

/// The service doesn't give tables back, so the application keeps them.
std::map<std::string, Table>& tables()
{
    static std::map<std::string, Table> kept;
    return kept;
}

void addTable(const std::string& command, const Table& table)
{
    CmdTableHelperIf::getInstance().registerCmdTable(command, table);
    tables()[command] = table;
}

int help(const Words& words, std::ostream& out)
{
    if (words.size() < 2) {
        for (const auto& entry : tables()) {
            out << entry.first << "\n";
        }
        return 0;
    }
    const auto found = tables().find(words[1]);
    if (found == tables().end()) {
        out << "there is no command '" << words[1] << "'\n";
        return 1;
    }
    CmdTableHelperIf::getInstance().cmdHelp(words, out, found->second, true, true); // with texts if words[2] is "-l"
    return 0;
}

} // namespace

int main()
{
    const auto done = [](const Words&, std::ostream&) { return 0; };
    addTable("help", {{"help [<command> [-l]]", help, "Lists the commands, or explains one.\n-l  in full"}});
    addTable("show", {{"show carriers", done, "Shows all carriers."}, {"show alarms", done, "Shows all alarms."}});
    addTable("reset", {{"reset { <carrier> | all }", done, "Starts one carrier anew, or all."}});

    CmdTableHelperIf& service = CmdTableHelperIf::getInstance();
    for (const Words& line : {Words{"help"}, {"help", "show"}, {"help", "reset", "-l"}, {"help", "rest"}}) {
        service.executeCmd(line, std::cout);
    }
}
