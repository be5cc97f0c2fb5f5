/// The counted operations of the command tables.
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include <command/cmdTableHelperIf.h>

#include "bench/instructions/operations.h"

using Corvane::CmdTableHelper::CmdDefinitionCpp;
using Corvane::CmdTableHelper::V2::CmdTableHelperIf;

namespace {

int answer(const std::vector<std::string>&, std::ostream&)
{
    return 0;
}

} // namespace

void Corvane::Bench::countCommand()
{
    CmdTableHelperIf& commands = CmdTableHelperIf::getInstance();
    commands.registerCmdTable("show", std::vector<CmdDefinitionCpp>{{"show [-l] <file> { on | off }", answer, ""}});
    std::ostringstream out;
    const std::vector<std::string> line = {"show", "-l", "interfaces.txt", "on"};
    count("executeCmd", [&] { commands.executeCmd(line, out); });
}
