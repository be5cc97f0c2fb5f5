/// Makes each allocation of every operation of the command service fail in turn: the service stays usable.
#include <array>
#include <iostream>
#include <memory>
#include <set>
#include <sstream>
#include <streambuf>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <command/cmdTableHelperIf.h>

#include "command/src/cmdTableHelperImplV2.h"
#include "tests/command/graphSupport.h"
#include "tests/command/serviceSupport.h"
#include "tests/support/emulation.h"
#include "tests/support/failingAllocation.h"
#include "tests/support/tracingTexts.h"

namespace {

using namespace Corvane::CmdTableHelper;
using namespace Corvane::CmdTableHelper::Testing;
using Corvane::Testing::deathTestStyle;
using Corvane::Testing::exitInsideLastAllocation;
using Corvane::Testing::failEachAllocation;
using Corvane::Testing::TracingTexts;
using V2::CmdTableHelperImpl;

/// Keeps what is written to it in memory of its own.
class RoomyBuffer : public std::streambuf
{
public:
    RoomyBuffer() { empty(); }
    void empty() { setp(m_room.data(), m_room.data() + m_room.size()); }
    std::string text() const { return {pbase(), pptr()}; }

private:
    std::array<char, 4096> m_room{};
};

TEST(AllocationFailure, WhileSynopsesAreAddedLeavesNoTwoSubnodesOfAName)
{
    SyntaxGraph graph;
    for (int i = 0; i < 100; ++i) {
        const SyntaxGraph::Synopses synopses = {{"x [w" + std::to_string(i) + " <a>]", returning(i)}};
        EXPECT_GT(failEachAllocation([&] { graph.addCommand("x", synopses); }), 0);
    }
    const auto names = subnodesOf(at(rootOf(graph), {"x"}));
    EXPECT_EQ(names.size(), 100U);
    EXPECT_EQ(std::set<std::string>(names.begin(), names.end()).size(), names.size());
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(dispatch(graph, {"x", "w" + std::to_string(i), "v"}).result, i);
    }
}

TEST(AllocationFailure, LeavesTheServiceUsable)
{
    CmdTableHelperImpl service;
    const auto table = tableOf("show { <a> one | <b> two }", 7);
    EXPECT_GT(failEachAllocation([&] { service.registerCmdTable("a command with a long name", table); }), 0);
    EXPECT_GT(failEachAllocation([&] { service.registerCmdTable("show", table); }), 0);

    int hookCalls = 0;
    unsigned int hook = 0;
    EXPECT_GT(failEachAllocation([&] {
                  hook = service.registerPostExecutionHook([&](int, int, const char* const*) { ++hookCalls; });
              }),
              0);

    std::ostringstream out;
    const Words complete = {"show", "v", "two"};
    const Words tooShort = {"show", "a word that doesn't fit into the object of a string"};
    int result = 0;
    EXPECT_GT(failEachAllocation([&] { result = service.executeCmd(complete, out); }), 0);
    EXPECT_EQ(result, 7);
    EXPECT_EQ(hookCalls, 1);
    EXPECT_EQ(out.str(), "");
    EXPECT_EQ(service.executeCmd(tooShort, out), 20);
    EXPECT_EQ(out.str(), "Usage: show a word that doesn't fit into the object of a string one \n\n");
    service.deregisterPostExecutionHook(hook);
    EXPECT_EQ(service.executeCmd(complete, out), 7);
    EXPECT_EQ(hookCalls, 1);
}

template <typename Table>
void expectAllEndsReplacedOrNone(const Table& newer)
{
    CmdTableHelperImpl service;
    service.registerCmdTable("x", tableOf("x [a long word that is kept] [b]", 7));
    std::ostringstream out;
    const auto results = [&] {
        return std::set<int>{service.executeCmd({"x"}, out), service.executeCmd({"x", "b"}, out)};
    };
    EXPECT_GT(failEachAllocation([&] { service.registerCmdTable("x", newer); },
                                 [&] { EXPECT_EQ(results(), std::set<int>{7}); }),
              0);
    EXPECT_EQ(results(), std::set<int>{8});
    EXPECT_EQ(out.str(), "");
}

TEST(AllocationFailure, InARegistrationReplacesTheHandlersOfAllEndsOfASynopsisOrOfNone)
{
    const std::string synopsis = "x [a long word that is kept] [b]";
    for (const bool isTraced : {false, true}) {
        const auto tracing = isTraced ? std::make_unique<TracingTexts>() : nullptr;
        expectAllEndsReplacedOrNone(tableOf(synopsis, 8));
        expectAllEndsReplacedOrNone(table<CommandDefinitions>(synopsis, [](int, const char* const*) { return 8; }));
        expectAllEndsReplacedOrNone(table<CmdDefinitionCpp>(synopsis, [](const Words&, std::ostream&) { return 8; }));
    }
}

TEST(AllocationFailure, OfATracedLineComesBeforeItsHandlerOrBeforeItsHooks)
{
    const TracingTexts tracing;
    CmdTableHelperImpl service;
    int handlerCalls = 0;
    int hookCalls = 0;
    service.registerCmdTable("show", table<CmdDefinition>("show <file>", [&](int, const char* const*, std::ostream&) {
                                 ++handlerCalls;
                                 return 7;
                             }));
    service.registerPostExecutionHook([&](int, int, const char* const*) { ++hookCalls; });
    RoomyBuffer buffer;
    std::ostream out(&buffer);
    const Words line = {"show", "a word that doesn't fit into the object of a string"};
    int result = 0;
    int callsBefore = 0;
    const int allocations = failEachAllocation([&] { result = service.executeCmd(line, out); },
                                               [&] {
                                                   EXPECT_EQ(result, 0);
                                                   EXPECT_EQ(hookCalls, 0);
                                                   EXPECT_LE(handlerCalls, callsBefore + 1);
                                                   callsBefore = handlerCalls;
                                               });
    EXPECT_GT(2 * allocations, handlerCalls) << "most fail before the handler";
    EXPECT_EQ(result, 7);
    EXPECT_EQ(hookCalls, 1);
    EXPECT_EQ(buffer.text(), "");
}

TEST(AllocationFailure, InAUsageLeavesTheServiceUsable)
{
    CmdTableHelperImpl service;
    for (const std::string name : {"show", "pelm"}) {
        service.registerCmdTable(name, tableOf(name + " [-l] <file> { on | off }", 7));
        RoomyBuffer buffer;
        std::ostream out(&buffer);
        const Words line = {name, "a word that doesn't fit into the object of a string"};
        EXPECT_GT(failEachAllocation(
                      [&] {
                          buffer.empty();
                          service.executeCmd(line, out);
                      },
                      [&] {
                          std::ostringstream good;
                          EXPECT_EQ(service.executeCmd({name, "a", "on"}, good), 7);
                      }),
                  0);
        EXPECT_EQ(buffer.text().substr(0, 7), "Usage: ");
        EXPECT_EQ(buffer.text().substr(buffer.text().size() - 2), "\n\n");
    }
}

TEST(AllocationFailure, ConcernsNeitherHelpNorTheDeregistrationOfAHook)
{
    CmdTableHelperImpl service;
    const auto argv = tableOf("show <file>", 7);
    const auto strings = table<CmdDefinitionCpp>("show <file>", [](const Words&, std::ostream&) { return 7; });
    const auto silent = table<CommandDefinitions>("show <file>", [](int, const char* const*) { return 7; });
    const Words words = {"help", "show", "-l"};
    RoomyBuffer buffer;
    std::ostream out(&buffer);
    std::streambuf* const before = std::cout.rdbuf(&buffer);
    const unsigned int id = service.registerPostExecutionHook([](int, int, const char* const*) {});
    EXPECT_EQ(failEachAllocation([&] {
                  service.cmdHelp(words, out, argv, true, true);
                  service.cmdHelp(words, out, strings, true, true);
                  service.cmdHelp(words, silent, true, true);
                  service.deregisterPostExecutionHook(id);
              }),
              0);
    std::cout.rdbuf(before);
    EXPECT_EQ(buffer.text().size(), 3 * std::string("Command syntax:\n\n  show <file>\n\n").size());
}

TEST(AllocationFailure, AtTheFirstUseOfTheServiceLetsTheNextUseMakeIt)
{
    EXPECT_GT(failEachAllocation([] { V2::CmdTableHelperIf::getInstance(); }), 0);
    V2::CmdTableHelperIf::getInstance().registerCmdTable("x", tableOf("x", 7));
    std::ostringstream out;
    EXPECT_EQ(V2::CmdTableHelperIf::getInstance().executeCmd({"x"}, out), 7);
}

TEST(AllocationFailureDeathTest, LetsTheHandlerOfMissingMemoryEndTheProcessThoughTheGraphIsLocked)
{
    testing::FLAGS_gtest_death_test_style = deathTestStyle();
    const auto table = tableOf("a line with words", 7);
    int allocations = 0;
    {
        CmdTableHelperImpl service;
        allocations = failEachAllocation([&] { service.registerCmdTable("a", table); });
    }
    ASSERT_GT(allocations, 0);
    EXPECT_EXIT(exitInsideLastAllocation(allocations,
                                         [&] { V2::CmdTableHelperIf::getInstance().registerCmdTable("a", table); }),
                testing::ExitedWithCode(3), ""); // or it hangs
}

} // namespace
