/// An application that uses the command service so that the library emits its own TRACE1, TRACE2 and ERROR. It checks
/// what the service does, and exits with 0 only if that is right.
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include <command/cmdTableHelperIf.h>

namespace {

using Corvane::CmdTableHelper::CmdDefinitionCpp;
using Corvane::CmdTableHelper::V2::CmdTableHelperIf;

int answer(const std::vector<std::string>& words, std::ostream& out)
{
    out << words.size() << " words";
    return 7;
}

bool executes(const std::vector<std::string>& words, int expectedResult, const std::string& expectedText)
{
    std::ostringstream out;
    const int result = CmdTableHelperIf::getInstance().executeCmd(words, out);
    if (result == expectedResult && out.str() == expectedText) {
        return true;
    }
    std::cerr << "executeCmd: " << result << ", \"" << out.str() << "\"; expected " << expectedResult << ", \""
              << expectedText << "\"\n";
    return false;
}

} // namespace

int main()
{
    const std::vector<CmdDefinitionCpp> table = {
        {"show [-l] <file> { on | off }", answer, "Shows a file."},
        {"show2 ]{>", answer, nullptr},
    };
    CmdTableHelperIf::getInstance().registerCmdTable("show", table);
    bool good = executes({"show", "-l", "a.txt", "on"}, 7, "4 words");
    good = executes({"show", "a.txt"}, 20, "Usage: show <file> { on | off } \n\n") && good;
    good = executes({"show", "", "off", "say \"x\""}, 7, "4 words") && good;
    return good ? 0 : 1;
}
