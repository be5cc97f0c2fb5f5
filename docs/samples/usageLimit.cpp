/// A usage ends after 65,536 words.
#include <iostream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include <command/cmdTableHelperIf.h>

using Corvane::CmdTableHelper::CmdDefinitionCpp;
using Corvane::CmdTableHelper::V2::CmdTableHelperIf;

int main()
{
    std::string synopsis = "say";
    for (int i = 0; i < 70000; ++i) {
        synopsis += " w" + std::to_string(i);
    }
    CmdTableHelperIf& service = CmdTableHelperIf::getInstance();
    service.registerCmdTable("say", std::vector<CmdDefinitionCpp>{{synopsis, {}, nullptr}});

    std::stringstream usage;
    service.executeCmd({"say"}, usage);
    const std::istream_iterator<std::string> begin(usage);
    const std::istream_iterator<std::string> end;
    // "Usage:" and "say" are not among the words that may follow.
    std::cout << std::distance(begin, end) - 2 << " of 70000 words\n";
}
