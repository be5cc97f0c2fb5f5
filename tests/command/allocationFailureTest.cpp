/// Makes each allocation of every operation of the command service fail in turn: the service stays usable.
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "command/src/cmdTableHelperImplV2.h"
#include "tests/command/graphSupport.h"
#include "tests/command/serviceSupport.h"
#include "tests/support/failingAllocation.h"

namespace {

using namespace Corvane::CmdTableHelper;
using namespace Corvane::CmdTableHelper::Testing;
using Corvane::Testing::failEachAllocation;
using V2::CmdTableHelperImpl;

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

} // namespace
