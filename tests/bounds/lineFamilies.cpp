/// Lines, graphs, hooks and tables that grow, and the execution of lines and the help.
#include <sstream>

#include "command/src/cmdTableHelperImplV2.h"
#include "tests/bounds/commandInputs.h"
#include "tests/bounds/family.h"

namespace {

using Corvane::CmdTableHelper::CmdDefinition;
using Corvane::CmdTableHelper::V2::CmdTableHelperImpl;
using Corvane::Testing::answer;
using Corvane::Testing::Cost;
using Corvane::Testing::costOf;
using Corvane::Testing::repeated;
using Words = std::vector<std::string>;

/// Takes what is written and keeps nothing.
class NullBuffer : public std::streambuf
{
    std::streamsize xsputn(const char* /*text*/, std::streamsize size) override { return size; }
    int overflow(int c) override { return c; }
};

Cost execution(CmdTableHelperImpl& commands, const Words& line)
{
    NullBuffer buffer;
    std::ostream out(&buffer);
    return costOf([&] { commands.executeCmd(line, out); });
}

/// Executes a line after one synopsis was registered.
Cost execution(const std::string& synopsis, const Words& line)
{
    CmdTableHelperImpl commands;
    commands.registerCmdTable("x", std::vector<CmdDefinition>{{synopsis, answer, nullptr}});
    return execution(commands, line);
}

Words lineOf(std::size_t n, const std::string& word)
{
    Words line(n + 1, word);
    line.front() = "x";
    return line;
}

Cost executionAmongCommands(std::size_t n)
{
    CmdTableHelperImpl commands;
    std::string name;
    for (std::size_t i = 0; i < n; ++i) {
        name = "c" + std::to_string(i);
        commands.registerCmdTable(name, std::vector<CmdDefinition>{{name + " <file>", answer, nullptr}});
    }
    return execution(commands, {name, "a"});
}

Cost executionWithHooks(std::size_t n)
{
    CmdTableHelperImpl commands;
    commands.registerCmdTable("x", std::vector<CmdDefinition>{{"x", answer, nullptr}});
    for (std::size_t i = 0; i < n; ++i) {
        commands.registerPostExecutionHook([](int, int, const char* const*) {});
    }
    return execution(commands, {"x"});
}

Cost hookRegistrations(std::size_t n)
{
    CmdTableHelperImpl commands;
    return costOf([&] {
        for (std::size_t i = 0; i < n; ++i) {
            commands.registerPostExecutionHook([](int, int, const char* const*) {});
        }
    });
}

Cost help(std::size_t records, std::size_t length)
{
    CmdTableHelperImpl commands;
    const std::string description(length, 'd');
    const std::vector<CmdDefinition> table(records, {"x <file>", answer, description.c_str()});
    const Words words = {"help", "x", "-l"};
    NullBuffer buffer;
    std::ostream out(&buffer);
    return costOf([&] { commands.cmdHelp(words, out, table, true, true); });
}

} // namespace

std::vector<Corvane::Testing::Family> Corvane::Testing::lineFamilies()
{
    return {
        {"line of the last command", "execute a line of the last of n commands", 1000, Law::constant, Law::constant,
         executionAmongCommands},
        {"line of the last alternative", "execute `x aN` of `x { a0 | a1 | ... }`, n words", 1000, Law::constant,
         Law::constant,
         [](std::size_t n) {
             return execution(repeated(n, "x { b", " | a", "", " }"), {"x", "a" + std::to_string(n - 1)});
         }},
        {"long line", "execute a line of n words on `x w w ...`", 1000, Law::linear, Law::linear,
         [](std::size_t n) {
             const Words line = lineOf(n, "w");
             std::string synopsis;
             for (const std::string& word : line) {
                 synopsis += word + " ";
             }
             return execution(synopsis, line);
         }},
        {"line on cyclic placeholders", "execute a line of n words on `x [<p> <q>] <p>`", 1000, Law::linear,
         Law::linear, [](std::size_t n) { return execution("x [<p> <q>] <p>", lineOf(n, "w")); }},
        {"line with choices", "execute a line of n words on n of `{ <a> | <b> }`, the last one wrong", 250, Law::linear,
         Law::linear,
         [](std::size_t n) {
             std::string synopsis = "x";
             for (std::size_t i = 0; i < n; ++i) {
                 const std::string number = std::to_string(i);
                 synopsis += " { <a" + number + "> | <b" + number + "> }";
             }
             Words line = lineOf(n, "w");
             line.push_back("wrong");
             return execution(synopsis + " end", line);
         }},
        {"line on optional placeholders", "execute n/2 words and a wrong one on `x [<p0>] [<p1>] ... end`, n groups",
         16, Law::cubic, Law::quadratic,
         [](std::size_t n) {
             Words line = lineOf(n / 2, "w");
             line.push_back("wrong");
             return execution(repeated(n, "x", " [<p", ">]", " end fin"), line);
         }},
        {"usage of a choice", "execute a line that stops before `{ a0 | a1 | ... }`, n words", 1000, Law::linear,
         Law::linear, [](std::size_t n) { return execution(repeated(n, "x { b", " | a", "", " }"), {"x"}); }},
        {"usage of words", "execute a line that stops before `w0 w1 ...`, n words", 1000, Law::linearithmic,
         Law::linear, [](std::size_t n) { return execution(repeated(n, "x", " w", ""), {"x"}); }},
        {"usage of nested groups", "execute a line that stops before `[<a0> [<a1> ...`, n groups, of \"pelm\"", 1000,
         Law::linearithmic, Law::linear,
         [](std::size_t n) {
             CmdTableHelperImpl commands;
             const std::string synopsis = repeated(n, "pelm b", " [<a", ">");
             commands.registerCmdTable("pelm", std::vector<CmdDefinition>{{synopsis, answer, nullptr}});
             return execution(commands, {"pelm"});
         }},
        {"hooks", "register n hooks", 1000, Law::linearithmic, Law::linear, hookRegistrations},
        {"line with hooks", "execute a line with n hooks", 1000, Law::linearithmic, Law::linear, executionWithHooks},
        {"help of synopses", "write the help of n synopses", 1000, Law::linear, Law::constant,
         [](std::size_t n) { return help(n, 10); }},
        {"help of a description", "write a description of n characters", 4000, Law::linear, Law::constant,
         [](std::size_t n) { return help(1, n); }},
    };
}
