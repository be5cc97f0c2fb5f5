/// The counted operations of the command tables.
#include <ostream>
#include <streambuf>
#include <string>
#include <vector>

#include <command/cmdTableHelperIf.h>

#include "bench/instructions/operations.h"

using Corvane::CmdTableHelper::CmdDefinitionCpp;
using Corvane::CmdTableHelper::CommandDefinitions;
using Corvane::CmdTableHelper::V2::CmdTableHelperIf;

namespace {

using Words = std::vector<std::string>;

/// Takes what is written and keeps nothing, so that each call writes as the first.
class NullBuffer : public std::streambuf
{
    std::streamsize xsputn(const char*, std::streamsize size) override { return size; }
    int overflow(int c) override { return c; }
};

int answer(int, const char* const*)
{
    return 0;
}

int answerWords(const Words&, std::ostream&)
{
    return 0;
}

/// Lines that run a handler, and lines that are answered with a usage.
void countLines(CmdTableHelperIf& commands, std::ostream& out)
{
    const auto countLine = [&](const char* name, const Words& line) {
        Corvane::Bench::count(name, [&] { commands.executeCmd(line, out); });
    };
    countLine("executeCmd", {"show", "-l", "interfaces.txt", "on"});
    countLine("executeCmd-strings", {"showWords", "-l", "interfaces.txt", "on"});
    countLine("executeCmd-short-line", {"show", "-l", "interfaces.txt"});
    countLine("executeCmd-wrong-word", {"show", "-l", "interfaces.txt", "maybe"});
    countLine("executeCmd-unknown", {"list"});
    countLine("executeCmd-choice", {"choose", "a", "b", "c"});
    const unsigned int hook = commands.registerPostExecutionHook([](int, int, const char* const*) {});
    countLine("executeCmd-hook", {"show", "-l", "interfaces.txt", "on"});
    commands.deregisterPostExecutionHook(hook);
}

} // namespace

void Corvane::Bench::countCommand()
{
    CmdTableHelperIf& commands = CmdTableHelperIf::getInstance();
    NullBuffer buffer;
    std::ostream out(&buffer);
    const std::vector<CommandDefinitions> table = {
        {"show [-l] <file> { on | off }", answer, "shows a file\nwith -l in the long format"}};
    commands.registerCmdTable("show", table);
    commands.registerCmdTable("showWords",
                              std::vector<CmdDefinitionCpp>{{"showWords [-l] <file> { on | off }", answerWords, ""}});
    commands.registerCmdTable("choose",
                              std::vector<CmdDefinitionCpp>{{"choose <x> <y> <z>", answerWords, ""},
                                                            {"choose { <p> q | <r> <s> t }", answerWords, ""}});
    countLines(commands, out);

    count("registerCmdTable-again", [&] { commands.registerCmdTable("show", table); });
    int number = 0;
    count("registerCmdTable-new", [&] {
        const std::string name = "cmd" + std::to_string(number++);
        commands.registerCmdTable(name,
                                  std::vector<CommandDefinitions>{{name + " [-l] <file> { on | off }", answer, ""}});
    });
    const std::vector<CmdDefinitionCpp> helpTable = {
        {"show [-l] <file> { on | off }", answerWords, "shows a file\nwith -l in the long format"}};
    count("cmdHelp", [&] { commands.cmdHelp({"help", "show"}, out, helpTable, true, true); });
    count("cmdHelp-long", [&] { commands.cmdHelp({"help", "show", "-l"}, out, helpTable, true, true); });
}
