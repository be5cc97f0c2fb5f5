/// Typed lines in a test of an application.
#include <testing/commandSession.h>

#include <stdexcept>

#include <command/cmdTableHelperIf.h>
#include <console/words.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using Corvane::CmdTableHelper::CmdDefinitionCpp;
using Corvane::CmdTableHelper::V2::CmdTableHelperIf;
using Corvane::Testing::CommandResult;
using Corvane::Testing::CommandSession;
using Words = std::vector<std::string>;

void add(const std::string& synopsis, const std::function<int(const Words&, std::ostream&)>& handler)
{
    CmdTableHelperIf::getInstance().registerCmdTable(synopsis.substr(0, synopsis.find(' ')),
                                                     std::vector<CmdDefinitionCpp>{{synopsis, handler, nullptr}});
}

TEST(CommandSession, GivesTheResultAndTheOutputOfAHandler)
{
    add("say <what>", [](const Words& words, std::ostream& out) {
        out << words.at(1) << "\n";
        return 7;
    });
    const CommandResult result = CommandSession().run("  say 'two words' # comment");
    EXPECT_EQ(result.result, 7);
    EXPECT_EQ(result.output, "two words\n");
    EXPECT_FALSE(result.isUsage);
}

TEST(CommandSession, TellsTheUsageFromAHandlerThatReturnsTheSame)
{
    add("twenty [now]", [](const Words&, std::ostream&) { return 20; });
    add("say <what>", [](const Words&, std::ostream&) { return 7; });
    CommandSession session;
    EXPECT_FALSE(session.run("twenty").isUsage);
    const CommandResult usage = session.run("say");
    EXPECT_TRUE(usage.isUsage);
    EXPECT_EQ(usage.result, 20);
    EXPECT_EQ(usage.output, "Usage: say <what> \n\n");
    EXPECT_FALSE(session.run("twenty now").isUsage);
}

TEST(CommandSession, IsNotConfusedByLinesThatAHandlerOrAHookRuns)
{
    CommandSession session;
    add("outer", [&](const Words&, std::ostream&) { return session.run("no such line").isUsage ? 1 : 2; });
    unsigned int usages = 0;
    const unsigned int hook = CmdTableHelperIf::getInstance().registerPostExecutionHook(
        [&](int, int, const char* const*) { usages += session.run("nor this").isUsage ? 1U : 0U; });
    const CommandResult result = session.run("outer");
    CmdTableHelperIf::getInstance().deregisterPostExecutionHook(hook);
    EXPECT_FALSE(result.isUsage);
    EXPECT_EQ(result.result, 1);
    EXPECT_EQ(usages, 1U);
}

TEST(CommandSession, HandsOnWhatAHandlerThrowsAndStaysUsable)
{
    add("fail", [](const Words&, std::ostream&) -> int { throw std::runtime_error("no carrier"); });
    CommandSession session;
    EXPECT_THROW(session.run("fail"), std::runtime_error);
    EXPECT_TRUE(session.run("failed").isUsage);
}

TEST(CommandSession, SaysWhatIsWrongWithALineThatCannotBeSplit)
{
    try {
        CommandSession().run("say 'two words");
        FAIL();
    } catch (const Corvane::Console::BadLine& error) {
        EXPECT_STREQ(error.what(), "the quote ' in column 5 is never closed");
    }
}

TEST(CommandSession, LeavesNoHookBehind)
{
    const auto hooks = [] {
        const unsigned int id =
            CmdTableHelperIf::getInstance().registerPostExecutionHook([](int, int, const char* const*) {});
        CmdTableHelperIf::getInstance().deregisterPostExecutionHook(id);
        return id;
    };
    const unsigned int before = hooks();
    CommandSession().run("blank");
    EXPECT_EQ(hooks(), before + 2); // ids go on; the session took one
}

TEST(CommandSession, RunsABlankLineAsALineWithoutWords)
{
    EXPECT_TRUE(CommandSession().run(" # only a comment").isUsage);
}

} // namespace
