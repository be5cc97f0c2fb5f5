#include <iostream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include <command/cmdTableHelperIf.h>

#include "fan.h"

using Corvane::CmdTableHelper::V2::CmdTableHelperIf;

int main()
{
    CmdTableHelperIf& service = CmdTableHelperIf::getInstance();
    service.registerCmdTable("fan", fanTable());

    for (std::string line; std::getline(std::cin, line);) {
        std::istringstream text(line);
        const std::vector<std::string> words{std::istream_iterator<std::string>(text), {}};
        service.executeCmd(words, std::cout);
    }
}
