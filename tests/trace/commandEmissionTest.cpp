/// What the command service emits, at each of its three sites, with all arguments. This program replaces libtpx, so the
/// path is the one that the site passes.
#include <memory>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <testing/eventRecorder.h>

#include "command/src/cmdTableHelperImplV2.h"
#include "tests/trace/countedCosts.h"

namespace {

using Corvane::CmdTableHelper::CmdDefinitionCpp;
using Corvane::CmdTableHelper::V2::CmdTableHelperImpl;
using Corvane::Testing::allocatedBytes;
using Corvane::Testing::Event;
using Corvane::Testing::EventName;
using Corvane::Testing::EventRecorder;
using Corvane::Testing::runAtNextEmission;
using Corvane::Testing::shortenedPaths;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* syntaxFile = "command/src/cmdSyntax.cpp";
constexpr const char* serviceFile = "command/src/cmdTableHelperImplV2.cpp";

int succeed(const std::vector<std::string>&, std::ostream&)
{
    return 0;
}

Event registered(const std::string& synopsis)
{
    return {EventName::Trace2, syntaxFile, 209, "-", "Registered VELK syntax: " + synopsis};
}

Event unbalanced(const std::string& synopsis, const std::string& pair)
{
    return {EventName::Error, syntaxFile, 192, "",
            "VELK syntax \"" + synopsis + "\": Unbalanced " + pair + " brackets"};
}

Event executed(const std::string& words)
{
    return {EventName::Trace1, serviceFile, 150, "-", "Execute VELK command: " + words};
}

class CommandEmission : public testing::Test
{
protected:
    void registerSynopses(const std::string& commandName, const std::vector<std::string>& synopses)
    {
        std::vector<CmdDefinitionCpp> table;
        for (const std::string& synopsis : synopses) {
            table.push_back({synopsis, succeed, nullptr});
        }
        m_service.registerCmdTable(commandName, table);
    }

    int execute(const std::vector<std::string>& words)
    {
        std::ostringstream out;
        return m_service.executeCmd(words, out);
    }

    CmdTableHelperImpl m_service;
};

TEST_F(CommandEmission, TracesEveryRegisteredSynopsisInTheOrderOfTheTable)
{
    EventRecorder recorder;
    registerSynopses("show", {"show [-l] <file> { on | off }", "show", ""});
    EXPECT_THAT(recorder.take(),
                ElementsAre(registered("show [-l] <file> { on | off }"), registered("show"), registered("")));
}

TEST_F(CommandEmission, TracesNothingForAnEmptyTable)
{
    EventRecorder recorder;
    registerSynopses("show", {});
    EXPECT_THAT(recorder.take(), IsEmpty());
}

TEST_F(CommandEmission, ReportsAnUnbalancedPairOfEachKind)
{
    EventRecorder recorder;
    registerSynopses("show", {"show [-l", "show { on | off", "show <file"});
    EXPECT_THAT(recorder.take(), ElementsAre(registered("show [-l"), unbalanced("show [-l", "[]"),
                                             registered("show { on | off"), unbalanced("show { on | off", "{}"),
                                             registered("show <file"), unbalanced("show <file", "<>")));
}

TEST_F(CommandEmission, ReportsBothPairsOfAGroupThatAnotherBracketCloses)
{
    EventRecorder recorder({EventName::Error});
    registerSynopses("get", {"get <a b", "[ x }"});
    EXPECT_THAT(recorder.take(),
                ElementsAre(unbalanced("get <a b", "<>"), unbalanced("[ x }", "{}"), unbalanced("[ x }", "[]")));
}

TEST_F(CommandEmission, TracesALineOfTenThousandWords)
{
    registerSynopses("x", {"x <a>"});
    std::vector<std::string> words(10000, "w");
    words.front() = "x";
    std::string joined = "x";
    for (std::size_t i = 1; i < words.size(); ++i) {
        joined += " w";
    }
    EventRecorder recorder;
    std::ostringstream out;
    EXPECT_EQ(m_service.executeCmd(words, out), 0);
    EXPECT_THAT(recorder.take(), ElementsAre(executed(joined)));
}

TEST_F(CommandEmission, ReportsCurlyThenSquareThenAngleBrackets)
{
    EventRecorder recorder;
    registerSynopses("x", {"x <[{", "x >]}"});
    EXPECT_THAT(recorder.take(), ElementsAre(registered("x <[{"), unbalanced("x <[{", "{}"), unbalanced("x <[{", "[]"),
                                             unbalanced("x <[{", "<>"), registered("x >]}"), unbalanced("x >]}", "{}"),
                                             unbalanced("x >]}", "[]"), unbalanced("x >]}", "<>")));
}

TEST_F(CommandEmission, ReportsAnyNumberOfSurplusBrackets)
{
    EventRecorder recorder({EventName::Error});
    for (const std::size_t number : {256U, 65536U}) {
        const std::string synopsis = "x " + std::string(number, '[');
        registerSynopses("x", {synopsis});
        EXPECT_THAT(recorder.take(), ElementsAre(unbalanced(synopsis, "[]")));
    }
}

TEST_F(CommandEmission, ReportsNoPairThatBalancesInAnyOrder)
{
    EventRecorder recorder;
    registerSynopses("x", {"x ] [", "x } > < {"});
    EXPECT_THAT(recorder.take(), ElementsAre(registered("x ] ["), registered("x } > < {")));
}

TEST_F(CommandEmission, ReportsUnbalancedBracketsWhileSynopsesAreNotTraced)
{
    EventRecorder recorder({EventName::Error});
    registerSynopses("show", {"show [-l", "show"});
    EXPECT_THAT(recorder.take(), ElementsAre(unbalanced("show [-l", "[]")));
}

TEST_F(CommandEmission, TracesAnExecutedLineWithItsWordsJoined)
{
    registerSynopses("show", {"show [-l] <file> { on | off }"});
    EventRecorder recorder;
    EXPECT_EQ(execute({"show", "-l", "a.txt", "on"}), 0);
    EXPECT_EQ(execute({"show", "a b", "", "extra"}), 20);
    EXPECT_EQ(execute({"show", "", "off", "", "more words"}), 0);
    EXPECT_THAT(recorder.take(), ElementsAre(executed("show -l a.txt on"), executed("show  off  more words")));
}

TEST_F(CommandEmission, TracesALineWithoutWordsThatTheRootHandles)
{
    registerSynopses("", {"[show]"});
    EventRecorder recorder;
    EXPECT_EQ(execute({}), 0);
    EXPECT_THAT(recorder.take(), ElementsAre(executed("")));
}

TEST_F(CommandEmission, TracesNothingForALineThatLeadsToNoHandler)
{
    registerSynopses("show", {"show [-l] <file> { on | off }"});
    EventRecorder recorder;
    EXPECT_EQ(execute({"show", "a.txt"}), 20);
    EXPECT_EQ(execute({"list"}), 20);
    EXPECT_EQ(execute({}), 20);
    EXPECT_THAT(recorder.take(), IsEmpty());
}

TEST_F(CommandEmission, TracesALineBeforeItsHandlerRuns)
{
    EventRecorder recorder({EventName::Trace1});
    std::vector<Event> seenByHandler;
    const std::vector<CmdDefinitionCpp> table = {{"look",
                                                  [&](const std::vector<std::string>&, std::ostream&) {
                                                      seenByHandler = recorder.take();
                                                      return 3;
                                                  },
                                                  nullptr}};
    m_service.registerCmdTable("look", table);
    EXPECT_EQ(execute({"look"}), 3);
    EXPECT_THAT(seenByHandler, ElementsAre(executed("look")));
}

TEST_F(CommandEmission, LeavesTheHandlerOfALineAliveThoughTheServiceEndsBeforeItIsCalled)
{
    auto token = std::make_shared<int>(7);
    const std::weak_ptr<int> observed = token;
    m_service.registerCmdTable(
        "x", std::vector<CmdDefinitionCpp>{{"x", [token](const auto&, std::ostream&) { return *token; }, nullptr}});
    token.reset();
    bool isAlive = false;
    runAtNextEmission([&] {
        m_service.end(false);
        isAlive = !observed.expired();
    });
    const EventRecorder recorder({EventName::Trace1});
    EXPECT_EQ(execute({"x"}), 7);
    EXPECT_TRUE(isAlive);
    EXPECT_TRUE(observed.expired());
}

TEST_F(CommandEmission, RunsTheNewHandlerOfALineThatIsReplacedBeforeItIsCalled)
{
    registerSynopses("x", {"x"});
    runAtNextEmission([&] {
        const auto answer = [](const auto&, std::ostream&) { return 2; };
        m_service.registerCmdTable("x", std::vector<CmdDefinitionCpp>{{"x", answer, nullptr}});
    });
    const EventRecorder recorder({EventName::Trace1});
    EXPECT_EQ(execute({"x"}), 2);
}

TEST_F(CommandEmission, BuildsNoTextAtAnySiteWhileItsEventIsOff)
{
    const unsigned int pathsBefore = shortenedPaths();
    registerSynopses("show", {"show <file>", "show [-l", "show {", "show <"});
    const std::string longWord(1 << 20, 'w');
    const std::vector<std::string> words = {"show", longWord};
    std::ostringstream out;

    const std::size_t bytesBefore = allocatedBytes();
    EXPECT_EQ(m_service.executeCmd(words, out), 0);
    const std::size_t bytesWhileOff = allocatedBytes() - bytesBefore;
    EXPECT_EQ(shortenedPaths(), pathsBefore);

    const EventRecorder recorder;
    const std::size_t bytesBeforeOn = allocatedBytes();
    EXPECT_EQ(m_service.executeCmd(words, out), 0);
    const std::size_t bytesWhileOn = allocatedBytes() - bytesBeforeOn;
    EXPECT_EQ(shortenedPaths(), pathsBefore + 1);

    // The matching copies the word or doesn't; the text holds it at least once more.
    EXPECT_GE(bytesWhileOn, bytesWhileOff + longWord.size());
}

} // namespace
