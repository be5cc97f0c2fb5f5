/// The command-table service: registration, execution, help and hooks.
#include <command/cmdTableHelperIf.h>

#include <functional>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "command/src/cmdTableHelperImplV2.h"

namespace {

using namespace Corvane::CmdTableHelper;
using testing::ElementsAre;
using testing::IsEmpty;
using V2::CmdTableHelperIf;
using V2::CmdTableHelperImpl;
using Words = std::vector<std::string>;

/// Gives what is written to std::cout while it lives.
class CapturedCout
{
public:
    CapturedCout() : m_before(std::cout.rdbuf(m_text.rdbuf())) {}
    ~CapturedCout() { std::cout.rdbuf(m_before); }
    CapturedCout(const CapturedCout&) = delete;
    CapturedCout& operator=(const CapturedCout&) = delete;
    std::string text() const { return m_text.str(); }

private:
    std::ostringstream m_text;
    std::streambuf* m_before;
};

std::vector<CmdDefinition> tableOf(const std::string& synopsis, int result)
{
    return {{synopsis, [result](int, const char* const*, std::ostream&) { return result; }, nullptr}};
}

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

TEST(CommandService, IsReachedThroughItsFacade)
{
    CmdTableHelperIf& service = CmdTableHelperIf::getInstance();
    service.registerCmdTable("one", std::vector<CommandDefinitions>{
                                        {"one <a>", [](int argc, const char* const*) { return argc; }, "First."}});
    service.registerCmdTable("two", std::vector<CmdDefinition>{{"two <a>",
                                                                [](int, const char* const* argv, std::ostream& out) {
                                                                    out << argv[1];
                                                                    return 2;
                                                                },
                                                                "Second."}});
    service.registerCmdTable("three", std::vector<CmdDefinitionCpp>{{"three <a>",
                                                                     [](const Words& words, std::ostream& out) {
                                                                         out << words.at(1);
                                                                         return 3;
                                                                     },
                                                                     "Third."}});
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
    EXPECT_EQ(service.cmdHelp({"help"}, std::vector<CommandDefinitions>{{"a", {}, nullptr}}, false, false), 1);
    EXPECT_EQ(service.cmdHelp({"help"}, std::cout, std::vector<CmdDefinition>{{"b", {}, nullptr}}, false, false), 1);
    EXPECT_EQ(service.cmdHelp({"help"}, std::cout, std::vector<CmdDefinitionCpp>{{"c", {}, nullptr}}, false, false), 1);
    EXPECT_EQ(captured.text(), "  a\n  b\n  c\n");
}

TEST(Execution, GivesTwentyAndTheUsageForALineThatLeadsNowhere)
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
    service.registerCmdTable("x", std::vector<CommandDefinitions>{{"",
                                                                   [&](int argc, const char* const* argv) {
                                                                       seenArgv = argv;
                                                                       return argc;
                                                                   },
                                                                   nullptr}});
    std::ostringstream out;
    EXPECT_EQ(service.executeCmd({}, out), 0);
    EXPECT_EQ(seenArgv, nullptr);
    EXPECT_EQ(out.str(), "");
}

TEST(Execution, GivesTheHandlerTheWholeLine)
{
    CmdTableHelperImpl service;
    Words seen;
    service.registerCmdTable("x", std::vector<CmdDefinitionCpp>{{"x <a>",
                                                                 [&](const Words& words, std::ostream&) {
                                                                     seen = words;
                                                                     return 0;
                                                                 },
                                                                 nullptr}});
    std::ostringstream out;
    EXPECT_EQ(service.executeCmd({"x", "two words", "extra", ""}, out), 0);
    EXPECT_THAT(seen, ElementsAre("x", "two words", "extra", ""));
}

TEST(Execution, EndsAWordAtItsFirstNul)
{
    CmdTableHelperImpl service;
    Words seen;
    service.registerCmdTable("x", std::vector<CmdDefinitionCpp>{{"x on",
                                                                 [&](const Words& words, std::ostream&) {
                                                                     seen = words;
                                                                     return 0;
                                                                 },
                                                                 nullptr}});
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
    service.registerCmdTable("x",
                             std::vector<CmdDefinition>{{"x",
                                                         [&](int, const char* const*, std::ostream& out) {
                                                             service.registerCmdTable("y", tableOf("y", 5));
                                                             hook = service.registerPostExecutionHook(
                                                                 [&](int, int, const char* const*) { ++hookCalls; });
                                                             const int inner = service.executeCmd({"y"}, out);
                                                             service.deregisterPostExecutionHook(hook);
                                                             return inner + 1;
                                                         },
                                                         nullptr}});
    std::ostringstream out;
    EXPECT_EQ(service.executeCmd({"x"}, out), 6);
    EXPECT_EQ(hookCalls, 1) << "the inner command only";
}

TEST(Execution, LetsAHandlerReplaceItself)
{
    CmdTableHelperImpl service;
    const auto token = std::make_shared<int>(11);
    service.registerCmdTable("x", std::vector<CommandDefinitions>{{"x",
                                                                   [&service, token](int, const char* const*) {
                                                                       service.registerCmdTable("x", tableOf("x", 12));
                                                                       return *token;
                                                                   },
                                                                   nullptr}});
    std::ostringstream out;
    EXPECT_EQ(service.executeCmd({"x"}, out), 11);
    EXPECT_EQ(token.use_count(), 1) << "the replaced handler is gone after its last call";
    EXPECT_EQ(service.executeCmd({"x"}, out), 12);
}

/// A handler whose end uses the service, as that of a plug-in that is unloaded may.
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
        service.registerCmdTable("x", std::vector<CommandDefinitions>{{"x", HandlerThatLeavesAMark{mark}, nullptr}});
    }
    service.registerCmdTable("x", tableOf("x", 9));
    EXPECT_EQ(result, 9);
}

TEST(Hooks, GetTheResultTheCountAndTheHandlersArgv)
{
    CmdTableHelperImpl service;
    const char* const* handlerArgv = nullptr;
    service.registerCmdTable("x", std::vector<CommandDefinitions>{{"x <a>",
                                                                   [&](int, const char* const* argv) {
                                                                       handlerArgv = argv;
                                                                       return -3;
                                                                   },
                                                                   nullptr}});
    int calls = 0;
    service.registerPostExecutionHook([&](int result, int argc, const char* const* argv) {
        ++calls;
        EXPECT_EQ(result, -3);
        EXPECT_EQ(argc, 2);
        EXPECT_EQ(argv, handlerArgv);
        EXPECT_STREQ(argv[1], "v");
    });
    std::ostringstream out;
    EXPECT_EQ(service.executeCmd({"x", "v"}, out), -3);
    EXPECT_EQ(calls, 1);
}

class HookRuns : public testing::Test
{
protected:
    HookRuns() { service.registerCmdTable("x", tableOf("x", 0)); }

    std::vector<int> run()
    {
        calls.clear();
        std::ostringstream out;
        service.executeCmd({"x"}, out);
        return calls;
    }

    unsigned int add(int mark, const std::function<void()>& action = {})
    {
        return service.registerPostExecutionHook([this, mark, action](int, int, const char* const*) {
            calls.push_back(mark);
            if (action) {
                action();
            }
        });
    }

    CmdTableHelperImpl service;
    std::vector<int> calls;
};

TEST_F(HookRuns, NumberTheHooksFromOneAndUseNoNumberAgain)
{
    EXPECT_EQ(add(1), 1U);
    EXPECT_EQ(add(2), 2U);
    EXPECT_EQ(add(3), 3U);
    service.deregisterPostExecutionHook(2);
    EXPECT_EQ(add(4), 4U);
    EXPECT_THAT(run(), ElementsAre(1, 3, 4));
}

TEST_F(HookRuns, UseTheNumberOfTheLastHookNoMoreEither)
{
    add(1);
    service.deregisterPostExecutionHook(1);
    EXPECT_EQ(add(2), 2U);
}

TEST_F(HookRuns, ReleaseADeregisteredHookOutsideTheLock)
{
    unsigned int fromItsEnd = 0;
    {
        const std::shared_ptr<void> mark(nullptr, [&](void*) { fromItsEnd = add(2); });
        service.registerPostExecutionHook([mark](int, int, const char* const*) {});
    }
    service.deregisterPostExecutionHook(1);
    EXPECT_EQ(fromItsEnd, 2U);
}

TEST_F(HookRuns, IgnoreAnUnknownId)
{
    add(1);
    service.deregisterPostExecutionHook(0);
    service.deregisterPostExecutionHook(99);
    EXPECT_THAT(run(), ElementsAre(1));
}

TEST_F(HookRuns, LeaveOutAHookThatIsDeregisteredBeforeItsTurn)
{
    add(1, [this] { service.deregisterPostExecutionHook(2); });
    add(2);
    add(3);
    EXPECT_THAT(run(), ElementsAre(1, 3));
}

TEST_F(HookRuns, LetAHookDeregisterItself)
{
    add(1, [this] { service.deregisterPostExecutionHook(1); });
    add(2);
    EXPECT_THAT(run(), ElementsAre(1, 2));
    EXPECT_THAT(run(), ElementsAre(2));
}

TEST_F(HookRuns, CallAHookThatARunRegistersFromTheNextOn)
{
    add(1, [this] {
        if (calls.size() == 1) {
            add(2);
        }
    });
    EXPECT_THAT(run(), ElementsAre(1));
    EXPECT_THAT(run(), ElementsAre(1, 2));
}

TEST_F(HookRuns, ReportAnEmptyHook)
{
    service.registerPostExecutionHook({});
    std::ostringstream out;
    EXPECT_THROW(service.executeCmd({"x"}, out), std::bad_function_call);
}

class Help : public testing::Test
{
protected:
    std::string help(const Words& words, const std::vector<CmdDefinition>& table, bool printHeader, bool finalNewline)
    {
        std::ostringstream out;
        EXPECT_EQ(service.cmdHelp(words, out, table, printHeader, finalNewline), 1);
        return out.str();
    }

    std::string described(const std::string& description)
    {
        return help({"help", "x", "-l"}, {{"x", {}, description.c_str()}}, false, false);
    }

    CmdTableHelperImpl service;
    const std::vector<CmdDefinition> m_table = {{"x [-l]", {}, "Does x."}, {"y", {}, nullptr}, {"z", {}, ""}};
};

TEST_F(Help, InShortFormListsTheSynopses)
{
    EXPECT_EQ(help({"help"}, m_table, true, true), "Command syntax:\n  x [-l]\n  y\n  z\n\n");
    EXPECT_EQ(help({"help"}, m_table, false, true), "  x [-l]\n  y\n  z\n\n");
    EXPECT_EQ(help({"help"}, m_table, true, false), "Command syntax:\n  x [-l]\n  y\n  z\n");
    EXPECT_EQ(help({}, m_table, false, false), "  x [-l]\n  y\n  z\n");
}

TEST_F(Help, InLongFormAddsTheDescriptionsAndNoFinalNewline)
{
    const std::string body = "  x [-l]\n\n     Does x.\n\n  y\n\n  z\n\n";
    EXPECT_EQ(help({"help", "x", "-l"}, m_table, true, true), "Command syntax:\n\n" + body);
    EXPECT_EQ(help({"help", "x", "y", "-l"}, m_table, false, true), body);
    EXPECT_EQ(help({"help", "x", "-l"}, m_table, false, false), body);
}

TEST_F(Help, LooksForTheOptionFromTheThirdWordOn)
{
    EXPECT_EQ(help({"help", "-l"}, m_table, true, false), "Command syntax:\n  x [-l]\n  y\n  z\n");
    EXPECT_EQ(help({"-l", "-l", "x"}, m_table, true, false), "Command syntax:\n  x [-l]\n  y\n  z\n");
    EXPECT_EQ(help({"help", "x", "-L"}, m_table, true, false), "Command syntax:\n  x [-l]\n  y\n  z\n");
}

TEST_F(Help, OfAnEmptyTableIsTheHeader)
{
    EXPECT_EQ(help({"help", "x", "-l"}, {}, true, true), "Command syntax:\n\n");
    EXPECT_EQ(help({"help", "x", "-l"}, {}, false, true), "");
    EXPECT_EQ(help({"help"}, {}, true, true), "Command syntax:\n\n");
    EXPECT_EQ(help({"help"}, {}, false, true), "\n");
}

TEST_F(Help, WrapsADescriptionAtABlankBehindColumnSeventy)
{
    const std::string hundred(100, 'd');
    EXPECT_EQ(described(hundred), "  x\n\n     " + hundred + "\n\n");
    const std::string seventyOne(71, 'd');
    EXPECT_EQ(described(seventyOne + " next words"), "  x\n\n     " + seventyOne + "\n     next words\n\n");
    const std::string seventy(70, 'd');
    EXPECT_EQ(described(seventy + " next words"), "  x\n\n     " + seventy + " next\n     words\n\n");
}

TEST_F(Help, BreaksADescriptionAtALineFeed)
{
    EXPECT_EQ(described("one\ntwo\n"), "  x\n\n     one\n     two\n     \n\n");
    const std::string sixty(60, 'd');
    EXPECT_EQ(described(sixty + "\n" + sixty + " e"), "  x\n\n     " + sixty + "\n     " + sixty + " e\n\n");
}

TEST_F(Help, OfEachKindOfRecordIsTheSame)
{
    const std::vector<CmdDefinitionCpp> cppTable = {{"x", {}, "Does x."}};
    const std::vector<CommandDefinitions> plainTable = {{"x", {}, "Does x."}};
    std::ostringstream out;
    EXPECT_EQ(service.cmdHelp({"help", "x", "-l"}, out, cppTable, true, true), 1);
    EXPECT_EQ(out.str(), "Command syntax:\n\n  x\n\n     Does x.\n\n");
    const CapturedCout captured;
    EXPECT_EQ(service.cmdHelp({"help", "x", "-l"}, plainTable, true, true), 1);
    EXPECT_EQ(captured.text(), out.str());
}

} // namespace
