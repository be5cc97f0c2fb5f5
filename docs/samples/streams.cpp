/// Where the output of the two kinds of handlers goes.
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include <command/cmdTableHelperIf.h>

using Corvane::CmdTableHelper::CmdDefinitionCpp;
using Corvane::CmdTableHelper::CommandDefinitions;
using Corvane::CmdTableHelper::V2::CmdTableHelperIf;

namespace {

int oldVersion(int, const char* const*)
{
    std::cout << "version 1\n";
    return 0;
}

int newVersion(const std::vector<std::string>&, std::ostream& out)
{
    out << "version 2\n";
    return 0;
}

} // namespace

int main()
{
    const std::vector<CommandDefinitions> oldTable = {{"old version", oldVersion, nullptr}};
    const std::vector<CmdDefinitionCpp> newTable = {{"new version", newVersion, nullptr}};
    CmdTableHelperIf& service = CmdTableHelperIf::getInstance();
    service.registerCmdTable("old", oldTable);
    service.registerCmdTable("new", newTable);

    std::ostringstream connection;
    service.executeCmd({"old", "version"}, connection);
    service.executeCmd({"new", "version"}, connection);
    std::cout << "in the stream: " << connection.str();
}
