// SPDX-License-Identifier: MIT
/// The commands about the shell itself: "help", "show statistics" and "exit".
#include <iostream>

#include "arguments.h"
#include "commandTables.h"
#include "commands.h"
#include "shell.h"

namespace UnitShell {

namespace {

void help(const Words& words, const CommandTables& tables, std::ostream& out)
{
    const bool withDescriptions = words.size() > 1 && words.back() == "-l";
    const std::size_t most = withDescriptions ? 3 : 2;
    refuseMoreWords(words.size(), most);
    const bool isForOne = words.size() == most;
    // The service looks for "-l" from the third word on, where it is in "help show -l".
    Words request = {"help", isForOne ? words[1] : ""};
    request.insert(request.end(), withDescriptions ? 1 : 0, "-l");
    bool isFound = false;
    for (const CommandTables::Entry& table : tables.entries()) {
        if (!isForOne || table.command == words[1]) {
            table.writeHelp(request, !isFound, out); // one header: all tables are to look like one
            isFound = true;
        }
    }
    if (!isFound) {
        throw Refusal("there is no command '" + words[1] + "'");
    }
    out << (withDescriptions ? "" : "\n");
}

int exitShell(int argc, const char* const* argv, Shell& shell)
{
    return answer(std::cout, [&] { // this kind of handler gets no stream
        refuseMoreWords(static_cast<std::size_t>(argc), 2);
        const int status = argc > 1 ? readNumber<int>(argv[1], "the status", 0, Shell::highestStatus) : shell.status();
        shell.end();
        return status;
    });
}

} // namespace

std::vector<Corvane::CmdTableHelper::CmdDefinitionCpp> helpTable(const CommandTables& tables)
{
    return {
        {"help [-l]", handler(3, help, tables), "Shows the syntax of all commands.\n-l  with descriptions"},
        {"help <command> [-l]", handler(3, help, tables), "Shows the syntax of one command."},
    };
}

std::vector<Corvane::CmdTableHelper::CmdDefinitionCpp> statisticsTable(const Statistics& statistics)
{
    const auto show = [&statistics](const Words&, std::ostream& out) { statistics.write(out); };
    return {{"show statistics", handler(2, show),
             "Shows how often each command ran and failed, and the time its runs took."}};
}

std::vector<Corvane::CmdTableHelper::CommandDefinitions> exitTable(Shell& shell)
{
    return {{"exit [<status>]", [&shell](int argc, const char* const* argv) { return exitShell(argc, argv, shell); },
             "Ends the shell. Without <status> it ends with the status of the line before."}};
}

} // namespace UnitShell
