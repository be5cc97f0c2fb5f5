/// Synopses and tables of commands that grow, and their registration.
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

Cost registration(const std::string& synopsis)
{
    CmdTableHelperImpl commands;
    const std::vector<CmdDefinition> table = {{synopsis, answer, nullptr}};
    return costOf([&] { commands.registerCmdTable("x", table); });
}

/// Registers n commands one by one; `commandOf` makes the name and the synopsis of a number.
template <typename CommandOf>
Cost registrations(std::size_t n, const CommandOf& commandOf)
{
    CmdTableHelperImpl commands;
    std::vector<std::pair<std::string, std::vector<CmdDefinition>>> tables;
    for (std::size_t i = 0; i < n; ++i) {
        const auto [name, synopsis] = commandOf(std::to_string(i));
        tables.push_back({name, {{synopsis, answer, nullptr}}});
    }
    return costOf([&] {
        for (const auto& [name, table] : tables) {
            commands.registerCmdTable(name, table);
        }
    });
}

using Command = std::pair<std::string, std::string>;

} // namespace

std::vector<Corvane::Testing::Family> Corvane::Testing::synopsisFamilies()
{
    return {
        {"words", "register `x w0 w1 ...`, n words", 1000, Law::linear, Law::linear,
         [](std::size_t n) { return registration(repeated(n, "x", " w", "")); }},
        {"long word", "register `x www...`, n characters", 4000, Law::linear, Law::linear,
         [](std::size_t n) { return registration("x " + std::string(n, 'w')); }},
        {"nested placeholder", "register `x <<<...`, n characters", 4000, Law::linear, Law::linear,
         [](std::size_t n) { return registration("x " + std::string(n, '<')); }},
        {"placeholders", "register `x <p0> <p1> ...`, n words", 1000, Law::linear, Law::linear,
         [](std::size_t n) { return registration(repeated(n, "x", " <p", ">")); }},
        {"choice", "register `x { a0 | a1 | ... }`, n words", 4000, Law::linear, Law::linear,
         [](std::size_t n) { return registration(repeated(n, "x { b", " | a", "", " }")); }},
        {"nested groups", "register `x [ a0 [ a1 ...`, n groups", 4000, Law::linear, Law::linear,
         [](std::size_t n) { return registration(repeated(n, "x", " [ a", "")); }},
        {"nested choices", "register `x { b | a0 { b | a1 ...`, n choices", 4000, Law::linear, Law::linear,
         [](std::size_t n) { return registration(repeated(n, "x", " { b | a", "")); }},
        {"optional groups", "register `x [a0] [a1] ...`, n groups: n²/2 edges", 100, Law::quadratic, Law::quadratic,
         [](std::size_t n) { return registration(repeated(n, "x", " [a", "]")); }},
        {"optional placeholders", "register `x [<p0>] [<p1>] ...`, n groups: n²/2 edges", 100, Law::quadratic,
         Law::quadratic, [](std::size_t n) { return registration(repeated(n, "x", " [<p", ">]")); }},
        {"doubly optional groups", "register `x [[a0]] [[a1]] ...`, n groups: n²/2 edges", 64, Law::quadratic,
         Law::quadratic, [](std::size_t n) { return registration(repeated(n, "x", " [[a", "]]")); }},
        {"two choices", "register `x { a0 | a1 ... } { b0 | b1 ... }`, n words each: n² edges", 50, Law::quadratic,
         Law::quadratic,
         [](std::size_t n) {
             return registration(repeated(n, "x { c", " | a", "", " }") + repeated(n, " { d", " | b", "", " }"));
         }},
        {"synopses", "register one command with n synopses", 1000, Law::linear, Law::linear,
         [](std::size_t n) {
             CmdTableHelperImpl commands;
             std::vector<CmdDefinition> table;
             for (std::size_t i = 0; i < n; ++i) {
                 table.push_back({"x s" + std::to_string(i), answer, nullptr});
             }
             return costOf([&] { commands.registerCmdTable("x", table); });
         }},
        {"commands", "register n commands", 1000, Law::linear, Law::linear,
         [](std::size_t n) {
             return registrations(n, [](const std::string& i) { return Command("c" + i, "c" + i + " <file>"); });
         }},
        {"commands again", "register one command n times", 1000, Law::linear, Law::linear,
         [](std::size_t n) {
             return registrations(n, [](const std::string& /*i*/) { return Command("c", "c <file>"); });
         }},
        {"names on one placeholder", "register n commands that share their first word, a placeholder", 50,
         Law::quadratic, Law::linear,
         [](std::size_t n) { return registrations(n, [](const std::string& i) { return Command("c" + i, "<p>"); }); }},
        {"pending names", "register n commands that begin with a placeholder of their own each", 50, Law::quadratic,
         Law::linear,
         [](std::size_t n) {
             return registrations(n, [](const std::string& i) { return Command("c" + i, "<p" + i + ">"); });
         }},
    };
}
