/// The command "exit". Its handler gets no stream: what it writes goes to std::cout.
#include <iostream>

#include "arguments.h"
#include "commands.h"
#include "shell.h"

namespace UnitShell {

namespace {

int exitShell(int argc, const char* const* argv, Shell& shell)
{
    const auto status = argc > 1 ? readWhole(argv[1], "the status", 0, Shell::highestStatus, std::cout)
                                 : std::optional(static_cast<unsigned int>(shell.status()));
    if (!status || goesOn(static_cast<std::size_t>(argc), 2, std::cout)) {
        return failed;
    }
    shell.end();
    return static_cast<int>(*status);
}

} // namespace

std::vector<Corvane::CmdTableHelper::CommandDefinitions> exitTable(Shell& shell)
{
    return {{"exit [<status>]", [&shell](int argc, const char* const* argv) { return exitShell(argc, argv, shell); },
             "Ends the shell, with the status of the line before if none is given."}};
}

} // namespace UnitShell
