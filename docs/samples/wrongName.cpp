/// A table that is registered under a name with which none of its synopses begins.
#include <iostream>
#include <string>
#include <vector>

#include <command/cmdTableHelperIf.h>

using Corvane::CmdTableHelper::CmdDefinitionCpp;
using Corvane::CmdTableHelper::V2::CmdTableHelperIf;

static int show(const std::vector<std::string>& words, std::ostream& out)
{
    out << words.back() << "\n";
    return 0;
}

int main()
{
    const std::vector<CmdDefinitionCpp> table = {{"show <file>", show, nullptr}};
    CmdTableHelperIf& service = CmdTableHelperIf::getInstance();
    service.registerCmdTable("shows", table);
    std::cout << service.executeCmd({"show", "a.txt"}) << "\n";
    std::cout << service.executeCmd({"shows", "a.txt"}) << "\n";
}
