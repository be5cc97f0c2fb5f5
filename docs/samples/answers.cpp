/// Shows what lines do. Registers the synopses before the first "--" in their order, and executes the lines after it.
/// Between two lines there is another "--".
///
///     answers 'show [-l] <file>' 'show dump' -- show -l a.txt -- show dump
#include <algorithm>
#include <iostream>
#include <string>
#include <vector>

#include <command/cmdTableHelperIf.h>

using Corvane::CmdTableHelper::CmdDefinitionCpp;
using Corvane::CmdTableHelper::V2::CmdTableHelperIf;

int main(int argc, char** argv)
{
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    const auto end = std::find(arguments.begin(), arguments.end(), "--");
    if (end == arguments.end()) {
        std::cerr << "Usage: answers SYNOPSIS... -- WORD... [-- WORD...]...\n";
        return 2;
    }

    CmdTableHelperIf& service = CmdTableHelperIf::getInstance();
    for (auto synopsis = arguments.begin(); synopsis != end; ++synopsis) {
        const auto handler = [text = *synopsis](const std::vector<std::string>&, std::ostream& out) {
            out << "runs " << text << "\n";
            return 0;
        };
        // A command has the name that its synopsis begins with.
        const std::string name = synopsis->substr(0, synopsis->find_first_of(" [{|"));
        service.registerCmdTable(name, std::vector<CmdDefinitionCpp>{{*synopsis, handler, nullptr}});
    }
    for (auto next = end; next != arguments.end();) {
        const auto first = next + 1;
        next = std::find(first, arguments.end(), "--");
        service.executeCmd({first, next}, std::cout);
    }
}
