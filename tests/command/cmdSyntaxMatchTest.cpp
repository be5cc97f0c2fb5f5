/// Which handler a typed line leads to, and what it is answered when it leads to none.
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/command/graphSupport.h"

namespace {

using namespace Corvane::CmdTableHelper;
using namespace Corvane::CmdTableHelper::Testing;
using testing::ElementsAre;
using testing::IsEmpty;
using Words = std::vector<std::string>;

struct Walked
{
    NodePtr node;
    std::string usedWords;
};

Walked walk(const SyntaxGraph& graph, const std::vector<const char*>& words)
{
    Walked walked;
    walked.node = walkFrom(graph, rootOf(graph), &walked.usedWords, words.size(), words.data());
    return walked;
}

class DispatchOfShow : public testing::Test
{
protected:
    DispatchOfShow() { graph.addCommand("show", {{"show [-l] <file> { on | off }", returning(7)}}); }
    SyntaxGraph graph;
};

TEST_F(DispatchOfShow, FindsTheHandlerOfACompleteLine)
{
    EXPECT_EQ(dispatch(graph, {"show", "a.txt", "on"}), (Dispatched{7, ""}));
    std::ostringstream out;
    const char* const argv[] = {"show", "a.txt", "on"};
    EXPECT_EQ(graph.dispatchCommand(3, argv, out), &at(rootOf(graph), {"show", "<file>", "on"})->handler);
}

TEST_F(DispatchOfShow, PrefersAKeywordToThePlaceholder)
{
    EXPECT_EQ(dispatch(graph, {"show", "-l", "a.txt", "off"}), (Dispatched{7, ""}));
    EXPECT_EQ(dispatch(graph, {"show", "-l", "on"}), (Dispatched{-1, "Usage: show -l <file> { on | off } \n\n"}));
}

TEST_F(DispatchOfShow, ShowsHowAnIncompleteLineGoesOn)
{
    EXPECT_EQ(dispatch(graph, {"show", "a.txt"}), (Dispatched{-1, "Usage: show <file> { on | off } \n\n"}));
    EXPECT_EQ(dispatch(graph, {"show"}), (Dispatched{-1, "Usage: show [ -l ] <file> { on | off } \n\n"}));
}

TEST_F(DispatchOfShow, ShowsEverythingForAnUnknownCommand)
{
    EXPECT_EQ(dispatch(graph, {"list"}), (Dispatched{-1, "Usage: show [ -l ] <file> { on | off } \n\n"}));
    EXPECT_EQ(dispatch(graph, {"SHOW", "a.txt", "on"}),
              (Dispatched{-1, "Usage: show [ -l ] <file> { on | off } \n\n"}));
    EXPECT_EQ(dispatch(graph, {""}), (Dispatched{-1, "Usage: show [ -l ] <file> { on | off } \n\n"}));
}

TEST_F(DispatchOfShow, ShowsEverythingForNoWords)
{
    std::ostringstream out;
    EXPECT_EQ(graph.dispatchCommand(0, nullptr, out), nullptr);
    EXPECT_EQ(out.str(), "Usage: show [ -l ] <file> { on | off } \n\n");
}

TEST_F(DispatchOfShow, StopsAtAWordThatDoesNotMatch)
{
    EXPECT_EQ(dispatch(graph, {"show", "a.txt", "maybe", "on"}),
              (Dispatched{-1, "Usage: show <file> { on | off } \n\n"}));
}

TEST_F(DispatchOfShow, IgnoresWordsAfterTheEnd)
{
    EXPECT_EQ(dispatch(graph, {"show", "a.txt", "on", "extra"}), (Dispatched{7, ""}));
}

TEST_F(DispatchOfShow, TakesEmptyWordsForAPlaceholder)
{
    EXPECT_EQ(dispatch(graph, {"show", "", "on"}), (Dispatched{7, ""}));
}

TEST_F(DispatchOfShow, ReportsANullWord)
{
    std::ostringstream out;
    const char* const nullCommand[] = {nullptr};
    try {
        graph.dispatchCommand(1, nullCommand, out);
        FAIL();
    } catch (const std::logic_error& error) {
        EXPECT_STREQ(error.what(), "basic_string::_M_construct null not valid");
    }
    const char* const nullWord[] = {"show", nullptr, "on"};
    EXPECT_THROW(graph.dispatchCommand(3, nullWord, out), std::logic_error);
    // The lock is free again, and what stands after the first surplus word is not looked at.
    const char* const unseen[] = {"show", "a.txt", "on", "extra", nullptr};
    EXPECT_NE(graph.dispatchCommand(5, unseen, out), nullptr);
}

TEST(Dispatch, OfAnEmptyGraphShowsNothing)
{
    const SyntaxGraph graph;
    EXPECT_EQ(dispatch(graph, {"x"}), (Dispatched{-1, "Usage: \n\n"}));
    EXPECT_EQ(dispatch(graph, {}), (Dispatched{-1, "Usage: \n\n"}));
}

TEST(Dispatch, ShowsEachWordOfALongLine)
{
    SyntaxGraph graph;
    std::string synopsis = "x";
    std::string matched = "x ";
    std::vector<std::string> line = {"x"};
    for (int i = 0; i < 40; ++i) {
        const std::string name = "<a" + std::to_string(i) + ">";
        synopsis += " " + name;
        matched += name + " ";
        line.push_back("v");
        add(graph, "x", {synopsis + " end"});
        EXPECT_EQ(dispatch(graph, line), (Dispatched{-1, "Usage: " + matched + "end \n\n"}));
    }
}

TEST(Dispatch, OfAGraphThatHasEndedFindsNothing)
{
    SyntaxGraph graph;
    add(graph, "x", {"x"});
    std::ostringstream out;
    const char* const argv[] = {"x"};
    SyntaxGraph::Command command = graph.findCommand(1, argv, out);
    graph.end();
    graph.end();
    EXPECT_EQ(command.call(1, argv, out), 1) << "a command that was found lives on";
    EXPECT_EQ(resultOf(command.node->handler), 1);
    add(graph, "x", {"x", "<a>"});
    add(graph, "pelm", {});
    EXPECT_EQ(dispatch(graph, {"x"}), (Dispatched{-1, "Usage: \n\n"}));
    EXPECT_EQ(dispatch(graph, {"pelm"}), (Dispatched{-1, "Usage: \n\n"}));
    EXPECT_EQ(dispatch(graph, {}), (Dispatched{-1, "Usage: \n\n"}));
}

TEST(Dispatch, GoesOnAfterANodeWithAHandler)
{
    SyntaxGraph graph;
    add(graph, "x", {"x [-l] [-v]"});
    graph.addCommand("x", {{"x -l -v", returning(5)}});
    EXPECT_EQ(dispatch(graph, {"x"}).result, 1);
    EXPECT_EQ(dispatch(graph, {"x", "-l"}).result, 1);
    EXPECT_EQ(dispatch(graph, {"x", "-l", "-v"}).result, 5);
}

TEST(Dispatch, NeedsTheNameOfARegisteredCommand)
{
    SyntaxGraph graph;
    add(graph, "list", {"show a"});
    // "show" begins a synopsis but is no command; "list" is one, but nothing begins with it.
    EXPECT_EQ(dispatch(graph, {"show", "a"}), (Dispatched{-1, "Usage: show a \n\n"}));
    EXPECT_EQ(dispatch(graph, {"list", "a"}), (Dispatched{-1, "Usage: show a \n\n"}));
}

TEST(Dispatch, LeadsACommandNameToThePlaceholderItIsBoundTo)
{
    SyntaxGraph graph;
    add(graph, "run", {"<program> <argument>"});
    EXPECT_EQ(dispatch(graph, {"run", "fast"}), (Dispatched{1, ""}));
    EXPECT_EQ(dispatch(graph, {"run"}), (Dispatched{-1, "Usage: run <argument> \n\n"}));
    EXPECT_EQ(dispatch(graph, {"walk", "fast"}), (Dispatched{-1, "Usage: <program> <argument> \n\n"}));
    EXPECT_THAT(namesOf(matchingRootSubnodes(graph, "run")), ElementsAre("<program>"));
    EXPECT_THAT(matchingRootSubnodes(graph, "walk"), IsEmpty());
}

TEST(Dispatch, TriesEveryPlaceholderOfTheRootForAPendingName)
{
    SyntaxGraph graph;
    add(graph, "", {"<a> one", "<b> two"});
    add(graph, "run", {});
    EXPECT_THAT(namesOf(matchingRootSubnodes(graph, "run")), ElementsAre("<a>", "<b>"));
    EXPECT_EQ(dispatch(graph, {"run", "one"}), (Dispatched{1, ""}));
    EXPECT_EQ(dispatch(graph, {"run", "two"}), (Dispatched{2, ""}));
    EXPECT_EQ(dispatch(graph, {"run", "three"}), (Dispatched{-1, "Usage: run one \n\n"}));
}

TEST(Dispatch, TakesTheFirstPlaceholderWhoseRestLeadsToAHandler)
{
    SyntaxGraph graph;
    add(graph, "x", {"x <a> one", "x <b> two", "x <c> one"});
    EXPECT_EQ(dispatch(graph, {"x", "v", "one"}), (Dispatched{1, ""}));
    EXPECT_EQ(dispatch(graph, {"x", "v", "two"}), (Dispatched{2, ""}));
}

TEST(Dispatch, TakesTheEarliestOfSeveralPlaceholdersThatEndALine)
{
    SyntaxGraph graph;
    add(graph, "x", {"x <a>", "x <b>"});
    EXPECT_EQ(dispatch(graph, {"x", "v"}), (Dispatched{1, ""}));
}

TEST(Dispatch, ShowsTheFirstPlaceholdersUsageWhenNoneLeadsToAHandler)
{
    SyntaxGraph graph;
    add(graph, "x", {"x <a> one", "x <b> two"});
    // The typed word is shown, not a placeholder's name: it could be either.
    EXPECT_EQ(dispatch(graph, {"x", "v"}), (Dispatched{-1, "Usage: x v one \n\n"}));
    EXPECT_EQ(dispatch(graph, {"x", "v", "nine"}), (Dispatched{-1, "Usage: x v one \n\n"}));
}

TEST(Dispatch, SearchesThroughChoicesBehindChoices)
{
    SyntaxGraph graph;
    add(graph, "x", {"x <a> <b> no", "x <a> <c> nope", "x <d> <e> never", "x <d> <f> yes"});
    EXPECT_EQ(dispatch(graph, {"x", "1", "2", "yes"}), (Dispatched{4, ""}));
    EXPECT_EQ(dispatch(graph, {"x", "1", "2", "nope"}), (Dispatched{2, ""}));
    EXPECT_EQ(dispatch(graph, {"x", "1", "2", "?"}), (Dispatched{-1, "Usage: x 1 { <b> | <c> } \n\n"}));
}

TEST(Dispatch, EndsASearchAtTheFirstPlaceholderOfAnInnerChoiceIfThatHasAHandler)
{
    SyntaxGraph graph;
    add(graph, "x", {"x <a> one", "x <b> [<c>] <d> end"});
    graph.addCommand("x", {{"x <b> <c>", returning(9)}});
    // Behind "<b>" neither "<c>" nor "<d>" leads to a handler with "v"; the inner choice then ends at "<c>".
    EXPECT_EQ(dispatch(graph, {"x", "v", "v", "v"}), (Dispatched{9, ""}));
}

TEST(Dispatch, EndsASearchAtAHandlerThatIsFollowedByWordsThatDoNotMatch)
{
    SyntaxGraph graph;
    add(graph, "x", {"x <a> one", "x <b>"});
    EXPECT_EQ(dispatch(graph, {"x", "v", "rest", "more"}), (Dispatched{2, ""}));
}

TEST(Dispatch, PrintsAPelmCommandInItsOwnFormat)
{
    SyntaxGraph graph;
    add(graph, "pelm", {"pelm x [-l] <y>"});
    add(graph, "other", {"other x [-l] <y>"});
    EXPECT_EQ(dispatch(graph, {"pelm", "x"}), (Dispatched{-1, "Usage: pelm x { -l | <y> } \n\n"}));
    EXPECT_EQ(dispatch(graph, {"other", "x"}), (Dispatched{-1, "Usage: other x [ -l ] <y> \n\n"}));
}

TEST(Dispatch, PrintsInThePelmFormatWhereverThatLineEnds)
{
    SyntaxGraph graph;
    add(graph, "x", {"x y [-l]"});
    // "pelm" is no command here; the walk stays at the root.
    EXPECT_EQ(dispatch(graph, {"pelm"}), (Dispatched{-1, "Usage: x y [-l] \n\n"}));
    EXPECT_EQ(dispatch(graph, {"pelms"}), (Dispatched{-1, "Usage: x y [ -l ] \n\n"}));
}

TEST(Walk, StaysWhereItIsWithoutWords)
{
    SyntaxGraph graph;
    add(graph, "x", {"x a"});
    std::string usedWords = "kept";
    const NodePtr x = at(rootOf(graph), {"x"});
    EXPECT_EQ(walkFrom(graph, x, &usedWords, 0, nullptr), x);
    EXPECT_EQ(usedWords, "kept");
}

TEST(Walk, AppendsTheWordsAsTheSynopsisWritesThem)
{
    SyntaxGraph graph;
    add(graph, "x", {"x <a> y <b> z"});
    const Walked walked = walk(graph, {"x", "1", "y", "2"});
    EXPECT_EQ(walked.usedWords, "x <a> y <b> ");
    EXPECT_EQ(walked.node, at(rootOf(graph), {"x", "<a>", "y", "<b>"}));
}

TEST(Walk, AppendsTheFirstWordAsItWasTyped)
{
    SyntaxGraph graph;
    add(graph, "run", {"<program> a b"});
    EXPECT_EQ(walk(graph, {"run", "a"}).usedWords, "run a ");
}

TEST(Walk, DoesNotAppendTheWordThatLeadsToAHandler)
{
    SyntaxGraph graph;
    add(graph, "x", {"x a"});
    EXPECT_EQ(walk(graph, {"x", "a"}).usedWords, "x ");
    EXPECT_EQ(walk(graph, {"x", "a", "b"}).usedWords, "x a ");
}

TEST(Walk, AppendsNothingFromAChoiceOnThatLeadsToAHandler)
{
    SyntaxGraph graph;
    add(graph, "x", {"x a <p> one", "x a <q> two", "x a <q>"});
    const Walked further = walk(graph, {"x", "a", "v", "two"});
    EXPECT_EQ(further.usedWords, "x a ");
    EXPECT_EQ(further.node, at(rootOf(graph), {"x", "a", "<q>", "two"}));
    const Walked last = walk(graph, {"x", "a", "v"});
    EXPECT_EQ(last.usedWords, "x a ");
    EXPECT_EQ(last.node, at(rootOf(graph), {"x", "a", "<q>"}));
    EXPECT_EQ(walk(graph, {"x", "a", "v", "three", "four"}).usedWords, "x a ") << "ends at a handler before";
}

TEST(Walk, AppendsTheTypedWordOfAChoiceThatLeadsToNoHandler)
{
    SyntaxGraph graph;
    add(graph, "x", {"x <p> one", "x <q> two"});
    const Walked walked = walk(graph, {"x", "v", "three"});
    EXPECT_EQ(walked.usedWords, "x v ");
    EXPECT_EQ(walked.node, at(rootOf(graph), {"x", "<p>"}));
}

TEST(Walk, AppendsTheTypedWordAlsoIfTheFirstPlaceholderHasAHandler)
{
    SyntaxGraph graph;
    add(graph, "x", {"x <a>", "x <a> more words", "x <b> other"});
    const Walked walked = walk(graph, {"x", "v", "more"});
    EXPECT_EQ(walked.node, at(rootOf(graph), {"x", "<a>"}));
    EXPECT_EQ(walked.usedWords, "x v ");
}

TEST(Walk, StartsAtAnyNodeAndNeedsNoUsedWords)
{
    SyntaxGraph graph;
    add(graph, "x", {"x <a> y"});
    const char* const words[] = {"1", "y"};
    const NodePtr x = at(rootOf(graph), {"x"});
    EXPECT_EQ(walkFrom(graph, x, nullptr, 2, words), at(x, {"<a>", "y"}));
    std::string usedWords;
    // The first word is appended as typed, wherever the walk starts.
    walkFrom(graph, x, &usedWords, 1, words);
    EXPECT_EQ(usedWords, "1 ");
}

} // namespace
