/// The command-table service: its records, its facade, registration and execution.
#include <command/cmdTableHelperIf.h>

#include <algorithm>
#include <functional>
#include <iostream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "command/src/cmdTableHelperImplV2.h"
#include "tests/command/serviceSupport.h"

namespace Corvane::CmdTableHelper::V2 {

struct CmdTableHelperTestAccess
{
    /// Returns  the members in the order in which they are expected to lie.
    static std::vector<const void*> members(const CmdTableHelperImpl& service)
    {
        return {&service.m_syntaxGraph, &service.m_hookCounter, &service.m_hooks, &service.m_hookMutex};
    }

    static void setHookCounter(CmdTableHelperImpl& service, unsigned int last)
    {
        const ExclusiveLock lock(service.m_hookMutex);
        service.m_hookCounter = last;
    }
};

} // namespace Corvane::CmdTableHelper::V2

namespace {

using namespace Corvane::CmdTableHelper;
using namespace Corvane::CmdTableHelper::Testing;
using testing::ElementsAre;
using V2::CmdTableHelperIf;
using V2::CmdTableHelperImpl;

TEST(CommandTables, AreAggregatesOfSynopsisHandlerDescription)
{
    const CommandDefinitions plain{"a", [](int, const char* const*) { return 0; }, "text"};
    const CmdDefinition stream{"b", [](int, const char* const*, std::ostream&) { return 0; }, nullptr};
    const CmdDefinitionCpp words{"c", [](const Words&, std::ostream&) { return 0; }, ""};
    EXPECT_EQ(plain.synopsis, "a");
    EXPECT_STREQ(plain.description, "text");
    EXPECT_EQ(plain.reserved, nullptr);
    EXPECT_EQ(stream.reserved, nullptr);
    EXPECT_EQ(words.reserved, nullptr);
}

template <typename Record>
void expectMembersInOrder()
{
    const Record record{"a", {}, nullptr};
    const auto address = [](const auto& member) { return reinterpret_cast<const char*>(&member); };
    EXPECT_EQ(address(record), address(record.synopsis));
    EXPECT_LT(address(record.synopsis), address(record.handler));
    EXPECT_LT(address(record.handler), address(record.description));
    EXPECT_LT(address(record.description), address(record.reserved));
}

TEST(CommandTables, KeepTheirMembersInOrder)
{
    expectMembersInOrder<CommandDefinitions>();
    expectMembersInOrder<CmdDefinition>();
    expectMembersInOrder<CmdDefinitionCpp>();
}

TEST(CommandService, IsOneObjectThatHoldsAPointer)
{
    static_assert(sizeof(CmdTableHelperIf) == sizeof(void*));
    static_assert(!std::is_polymorphic_v<CmdTableHelperIf>);
    static_assert(!std::is_copy_constructible_v<CmdTableHelperIf>);
    static_assert(std::is_same_v<decltype(CmdTableHelperIf::getInstance()), CmdTableHelperIf&>);
    EXPECT_EQ(&CmdTableHelperIf::getInstance(), &CmdTableHelperIf::getInstance());
}

TEST(CommandService, HoldsGraphCounterHooksAndMutexInThisOrder)
{
    const CmdTableHelperImpl service;
    const auto members = V2::CmdTableHelperTestAccess::members(service);
    EXPECT_EQ(members.front(), &service);
    EXPECT_TRUE(std::is_sorted(members.begin(), members.end()));
}

TEST(CommandService, SkipsTheIdsOfLiveHooksWhenTheirCounterComesRound)
{
    CmdTableHelperImpl service;
    service.registerCmdTable("x", tableOf("x", 0));
    std::vector<int> calls;
    const auto add = [&](int mark) {
        return service.registerPostExecutionHook(
            [&calls, mark](int, int, const char* const*) { calls.push_back(mark); });
    };
    add(1);
    add(2);
    V2::CmdTableHelperTestAccess::setHookCounter(service, 0);
    EXPECT_EQ(add(3), 3U);
    std::ostringstream out;
    service.executeCmd({"x"}, out);
    EXPECT_THAT(calls, ElementsAre(1, 2, 3));
}

TEST(CommandService, IsReachedThroughItsFacade)
{
    CmdTableHelperIf& service = CmdTableHelperIf::getInstance();
    service.registerCmdTable("one",
                             table<CommandDefinitions>("one <a>", [](int argc, const char* const*) { return argc; }));
    service.registerCmdTable("two",
                             table<CmdDefinition>("two <a>", [](int, const char* const* argv, std::ostream& out) {
                                 out << argv[1];
                                 return 2;
                             }));
    service.registerCmdTable("three", table<CmdDefinitionCpp>("three <a>", [](const Words& words, std::ostream& out) {
                                 out << words.at(1);
                                 return 3;
                             }));
    std::ostringstream out;
    EXPECT_EQ(service.executeCmd({"one", "x"}, out), 2);
    EXPECT_EQ(service.executeCmd({"two", "y"}, out), 2);
    EXPECT_EQ(service.executeCmd({"three", "z"}, out), 3);
    EXPECT_EQ(out.str(), "yz");
    {
        const CapturedCout captured;
        EXPECT_EQ(service.executeCmd({"two", "y"}), 2);
        EXPECT_EQ(captured.text(), "y");
    }
    int calls = 0;
    const unsigned int id = service.registerPostExecutionHook([&](int, int, const char* const*) { ++calls; });
    service.executeCmd({"one", "x"}, out);
    service.deregisterPostExecutionHook(id);
    service.executeCmd({"one", "x"}, out);
    EXPECT_EQ(calls, 1);
    const CapturedCout captured;
    EXPECT_EQ(service.cmdHelp({"help"}, std::vector<CommandDefinitions>{{"a", {}, nullptr}}, true, false), 1);
    EXPECT_EQ(service.cmdHelp({"help"}, std::cout, std::vector<CmdDefinition>{{"b", {}, nullptr}}, true, false), 1);
    EXPECT_EQ(service.cmdHelp({"help"}, std::cout, std::vector<CmdDefinitionCpp>{{"c", {}, nullptr}}, true, false), 1);
    EXPECT_EQ(captured.text(), "Command syntax:\n  a\nCommand syntax:\n  b\nCommand syntax:\n  c\n");
}

TEST(Execution, GivesTwentyAndTheUsageForALineThatLeadsToNoHandler)
{
    CmdTableHelperImpl service;
    service.registerCmdTable("x", tableOf("x <a>", 7));
    int hookCalls = 0;
    service.registerPostExecutionHook([&](int, int, const char* const*) { ++hookCalls; });
    std::ostringstream out;
    EXPECT_EQ(service.executeCmd({"x"}, out), 20);
    EXPECT_EQ(service.executeCmd({}, out), 20);
    EXPECT_EQ(out.str(), "Usage: x <a> \n\nUsage: x <a> \n\n");
    EXPECT_EQ(hookCalls, 0);
}

TEST(Execution, OfNoWordsRunsAHandlerOfTheRoot)
{
    CmdTableHelperImpl service;
    const char* const* seenArgv = reinterpret_cast<const char* const*>(&service);
    service.registerCmdTable("x", table<CommandDefinitions>("", [&](int argc, const char* const* argv) {
                                 seenArgv = argv;
                                 return argc;
                             }));
    std::ostringstream out;
    EXPECT_EQ(service.executeCmd({}, out), 0);
    EXPECT_EQ(seenArgv, nullptr);
    EXPECT_EQ(out.str(), "");
}

TEST(Execution, OfANameWithoutASynopsisFollowsAnotherCommandsPlaceholder)
{
    CmdTableHelperImpl service;
    std::ostringstream out;
    service.registerCmdTable("list", tableOf("show all", 1));
    EXPECT_EQ(service.executeCmd({"list", "x"}, out), 20);
    service.registerCmdTable("run", tableOf("<program> <argument>", 2));
    EXPECT_EQ(service.executeCmd({"list", "x"}, out), 2);
    service.registerCmdTable("walk", tableOf("<way>", 3));
    EXPECT_EQ(service.executeCmd({"list", "x"}, out), 2) << "bound to the first";
    service.registerCmdTable("fly", tableOf("fly all", 4));
    service.registerCmdTable("swim", std::vector<CmdDefinition>());
    EXPECT_EQ(service.executeCmd({"swim", "x"}, out), 2) << "chosen among both";
    service.registerCmdTable("", tableOf("list x", 5));
    EXPECT_EQ(service.executeCmd({"list", "x"}, out), 5) << "taken over";
}

TEST(Execution, OfAnyUnknownCommandRunsASynopsisOfWhichNothingMustBeTyped)
{
    CmdTableHelperImpl service;
    service.registerCmdTable("status", tableOf("[status]", 4));
    std::ostringstream out;
    EXPECT_EQ(service.executeCmd({"reboot", "now"}, out), 4);
    EXPECT_EQ(service.executeCmd({}, out), 4);
    EXPECT_EQ(out.str(), "");
}

TEST(Execution, OfANameThatIsAPlaceholderStaysWithTheFirstPlaceholder)
{
    CmdTableHelperImpl service;
    service.registerCmdTable("<b>", tableOf("<a> x", 1));
    service.registerCmdTable("<b>", tableOf("<b> y", 2));
    std::ostringstream out;
    EXPECT_EQ(service.executeCmd({"<b>", "y"}, out), 20);
    EXPECT_EQ(out.str(), "Usage: <b> x \n\n");
}

TEST(Execution, GivesTheHandlerTheWholeLine)
{
    CmdTableHelperImpl service;
    Words seen;
    service.registerCmdTable("x", table<CmdDefinitionCpp>("x <a>", [&](const Words& words, std::ostream&) {
                                 seen = words;
                                 return 0;
                             }));
    std::ostringstream out;
    EXPECT_EQ(service.executeCmd({"x", "two words", "extra", ""}, out), 0);
    EXPECT_THAT(seen, ElementsAre("x", "two words", "extra", ""));
}

TEST(Execution, EndsAWordAtItsFirstNul)
{
    CmdTableHelperImpl service;
    Words seen;
    service.registerCmdTable("x", table<CmdDefinitionCpp>("x on", [&](const Words& words, std::ostream&) {
                                 seen = words;
                                 return 0;
                             }));
    std::ostringstream out;
    EXPECT_EQ(service.executeCmd({"x", std::string("on\0off", 6)}, out), 0);
    EXPECT_THAT(seen, ElementsAre("x", "on"));
}

TEST(Execution, PassesOnWhatAHandlerThrowsAndRunsNoHook)
{
    CmdTableHelperImpl service;
    service.registerCmdTable(
        "x", std::vector<CommandDefinitions>{
                 {"x throw", [](int, const char* const*) -> int { throw std::runtime_error("broken"); }, nullptr},
                 {"x empty", {}, nullptr},
                 {"x fine", [](int, const char* const*) { return 3; }, nullptr}});
    int hookCalls = 0;
    service.registerPostExecutionHook([&](int, int, const char* const*) { ++hookCalls; });
    std::ostringstream out;
    EXPECT_THROW(service.executeCmd({"x", "throw"}, out), std::runtime_error);
    EXPECT_THROW(service.executeCmd({"x", "empty"}, out), std::bad_function_call);
    EXPECT_EQ(hookCalls, 0);
    EXPECT_EQ(service.executeCmd({"x", "fine"}, out), 3);
    EXPECT_EQ(hookCalls, 1);
}

TEST(Execution, StaysUsableAfterAHookHasThrown)
{
    CmdTableHelperImpl service;
    service.registerCmdTable("x", tableOf("x", 7));
    const unsigned int throwing =
        service.registerPostExecutionHook([](int, int, const char* const*) { throw std::runtime_error("broken"); });
    int calls = 0;
    service.registerPostExecutionHook([&](int, int, const char* const*) { ++calls; });
    std::ostringstream out;
    EXPECT_THROW(service.executeCmd({"x"}, out), std::runtime_error);
    EXPECT_EQ(calls, 0);
    service.deregisterPostExecutionHook(throwing);
    EXPECT_EQ(service.executeCmd({"x"}, out), 7);
    EXPECT_EQ(calls, 1);
}

TEST(Execution, LetsAHandlerRegisterExecuteAndDeregister)
{
    CmdTableHelperImpl service;
    unsigned int hook = 0;
    int hookCalls = 0;
    service.registerCmdTable("x", table<CmdDefinition>("x", [&](int, const char* const*, std::ostream& out) {
                                 service.registerCmdTable("y", tableOf("y", 5));
                                 hook = service.registerPostExecutionHook(
                                     [&](int, int, const char* const*) { ++hookCalls; });
                                 const int inner = service.executeCmd({"y"}, out);
                                 service.deregisterPostExecutionHook(hook);
                                 return inner + 1;
                             }));
    std::ostringstream out;
    EXPECT_EQ(service.executeCmd({"x"}, out), 6);
    EXPECT_EQ(hookCalls, 1) << "the inner command only";
}

TEST(Execution, LetsAHandlerReplaceItself)
{
    CmdTableHelperImpl service;
    const auto token = std::make_shared<int>(11);
    service.registerCmdTable("x", table<CommandDefinitions>("x", [&service, token](int, const char* const*) {
                                 service.registerCmdTable("x", tableOf("x", 12));
                                 return *token;
                             }));
    std::ostringstream out;
    EXPECT_EQ(service.executeCmd({"x"}, out), 11);
    EXPECT_EQ(token.use_count(), 1) << "the replaced handler is destroyed after its last call";
    EXPECT_EQ(service.executeCmd({"x"}, out), 12);
}

/// A handler whose destructor uses the service, as that of a plug-in may when it is unloaded.
struct HandlerThatLeavesAMark
{
    int operator()(int, const char* const*) const { return 1; }
    std::shared_ptr<void> onDestruction;
};

TEST(Execution, ReleasesAReplacedHandlerOutsideTheLock)
{
    CmdTableHelperImpl service;
    std::ostringstream out;
    int result = 0;
    {
        const std::shared_ptr<void> mark(nullptr, [&](void*) { result = service.executeCmd({"x"}, out); });
        service.registerCmdTable("x", table<CommandDefinitions>("x", HandlerThatLeavesAMark{mark}));
    }
    service.registerCmdTable("x", tableOf("x", 9));
    EXPECT_EQ(result, 9);
}

/// Something that a handler or a hook owns. Its destructor uses the service in every way.
std::shared_ptr<void> userOf(CmdTableHelperImpl& service, std::ostream& out)
{
    const unsigned int hook = service.registerPostExecutionHook([](int, int, const char* const*) {});
    return {nullptr, [&service, &out, hook](void*) {
                service.deregisterPostExecutionHook(hook);
                service.registerPostExecutionHook([](int, int, const char* const*) {});
                out << service.executeCmd({"pending", "x"}, out) << "\n";
                service.registerCmdTable("late", tableOf("late", 5));
                out << service.executeCmd({"late"}, out) << "\n";
            }};
}

TEST(CommandService, MayBeUsedByTheDestructorsOfItsHandlersAndHooks)
{
    std::ostringstream out;
    {
        CmdTableHelperImpl service;
        service.registerCmdTable("pending", tableOf("other <a>", 1));
        service.registerCmdTable("x", table<CommandDefinitions>("x", HandlerThatLeavesAMark{userOf(service, out)}));
        service.registerPostExecutionHook([mark = userOf(service, out)](int, int, const char* const*) {});
    }
    EXPECT_EQ(out.str(), "Usage: \n\n20\nUsage: \n\n20\nUsage: \n\n20\nUsage: \n\n20\n") << "nothing is found any more";
}

TEST(CommandService, ReleasesWhatTheDestructorOfAHandlerRegistersAndWhatThatRegisters)
{
    const auto hookToken = std::make_shared<int>();
    {
        CmdTableHelperImpl service;
        const auto atEnd = [](auto action) { return std::shared_ptr<void>(nullptr, [action](void*) { action(); }); };
        const auto addHook = [&] { service.registerPostExecutionHook([hookToken](int, int, const char* const*) {}); };
        const auto addCommand = [&] {
            service.registerCmdTable("y", table<CommandDefinitions>("y", HandlerThatLeavesAMark{atEnd(addHook)}));
        };
        service.registerCmdTable("x", table<CommandDefinitions>("x", HandlerThatLeavesAMark{atEnd(addCommand)}));
    }
    EXPECT_EQ(hookToken.use_count(), 1);
}

} // namespace
