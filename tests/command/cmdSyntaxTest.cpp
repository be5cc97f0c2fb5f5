/// How synopses become a graph: tokens, nodes, groups, and the names of commands.
#include "command/src/cmdSyntax.h"

#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/command/graphSupport.h"

namespace {

using namespace Corvane::CmdTableHelper;
using namespace Corvane::CmdTableHelper::Testing;
using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> tokensOf(const std::string& synopsis)
{
    std::vector<std::string> tokens;
    const char* cursor = synopsis.c_str();
    for (std::string token; SyntaxGraph::getToken(cursor, token);) {
        tokens.push_back(token);
    }
    return tokens;
}

/// A graph that holds one synopsis, and where a sequence read from the root ends.
struct Parsed
{
    explicit Parsed(const std::string& synopsis)
    {
        const char* cursor = synopsis.c_str();
        frontier = {rootOf(graph)};
        end = SyntaxGraph::processVelkSyntax(cursor, frontier);
        rest = cursor;
    }
    SyntaxGraph graph;
    SyntaxGraph::Frontier frontier;
    char end;
    std::string rest;
};

const char* addressOf(const void* member)
{
    return static_cast<const char*>(member);
}

TEST(SyntaxTokens, AreSeparatedByBlanksAndBrackets)
{
    EXPECT_THAT(tokensOf("show [-l] <file> { on | off }"),
                ElementsAre("show", "[", "-l", "]", "<file>", "{", "on", "|", "off", "}"));
    EXPECT_THAT(tokensOf("a|b"), ElementsAre("a", "|", "b"));
    EXPECT_THAT(tokensOf("\t a\t\tb "), ElementsAre("a", "b"));
    EXPECT_THAT(tokensOf(""), IsEmpty());
    EXPECT_THAT(tokensOf(" \t "), IsEmpty());
}

TEST(SyntaxTokens, KeepWhatStandsBetweenAngleBracketsTogether)
{
    EXPECT_THAT(tokensOf("<a b|c>"), ElementsAre("<a b|c>"));
    EXPECT_THAT(tokensOf("x<a [b]>y z"), ElementsAre("x<a [b]>y", "z"));
    EXPECT_THAT(tokensOf("<a<b c>d e> f"), ElementsAre("<a<b c>d e>", "f"));
    EXPECT_THAT(tokensOf("<n:1-8> ..."), ElementsAre("<n:1-8>", "..."));
}

TEST(SyntaxTokens, SwallowTheRestAfterAnAngleBracketThatIsNotClosed)
{
    EXPECT_THAT(tokensOf("get <a b [c]"), ElementsAre("get", "<a b [c]"));
}

TEST(SyntaxTokens, CountASurplusClosingAngleBracket)
{
    // The count is -1 before "<" and 0 after it, so the blank ends the token.
    EXPECT_THAT(tokensOf("a><b c>"), ElementsAre("a><b", "c>"));
}

TEST(SyntaxTokens, LeaveTheTokenEmptyAtTheEnd)
{
    const char* cursor = "  ";
    std::string token = "before";
    EXPECT_FALSE(SyntaxGraph::getToken(cursor, token));
    EXPECT_EQ(token, "");
    EXPECT_EQ(*cursor, '\0');
}

TEST(SyntaxNode, IsAnArgumentByItsName)
{
    for (const char* name : {"<file>", "a>b<", "<n:1-8>", "x<y>", "...", "><"}) {
        EXPECT_TRUE(Node(name).isArgument) << name;
    }
    for (const char* name : {"", "-l", "<a", "b>", "..", "....", " "}) {
        EXPECT_FALSE(Node(name).isArgument) << name;
    }
}

TEST(SyntaxNode, StartsWithoutSubnodesAndHandler)
{
    const Node node("x");
    EXPECT_EQ(node.name, "x");
    EXPECT_THAT(node.subnodes, IsEmpty());
    EXPECT_EQ(node.handler.index(), 0U);
}

TEST(SyntaxNode, KeepsItsMembersInOrder)
{
    const Node node("x");
    EXPECT_LT(addressOf(&node.subnodes), addressOf(&node.handler));
    EXPECT_LT(addressOf(&node.handler), addressOf(&node.isArgument));
    EXPECT_LT(addressOf(&node.isArgument), addressOf(&node.name));
}

TEST(SyntaxNode, ReusesASubnodeOfTheSameName)
{
    Node node("x");
    const NodePtr first = node.addNewSubnode("a");
    EXPECT_EQ(node.addNewSubnode("a"), first);
    EXPECT_EQ(node.findExactSubnode("a"), first);
    EXPECT_EQ(node.findExactSubnode("A"), nullptr);
    EXPECT_EQ(node.subnodes.size(), 1U);
}

TEST(SyntaxNode, FindsEachOfAnyNumberOfSubnodesAndKeepsTheirOrder)
{
    Node node("x");
    std::vector<std::string> names;
    for (int i = 0; i < 1000; ++i) {
        const std::string name = "a" + std::to_string(i);
        ASSERT_EQ(node.findExactSubnode(name), nullptr);
        const NodePtr added = node.addNewSubnode(name);
        ASSERT_EQ(added->name, name);
        ASSERT_EQ(node.addNewSubnode(name), added);
        node.addExistingSubnode(std::make_shared<Node>(name));
        names.push_back(name);
        ASSERT_EQ(node.findExactSubnode("a0"), node.subnodes.front());
        ASSERT_EQ(node.findExactSubnode(name), node.subnodes.back());
    }
    EXPECT_EQ(namesOf(node.subnodes), names);
}

TEST(SyntaxNode, TellsSubnodesApartWhoseNamesHaveOneHash)
{
    constexpr Subnodes::Hash hash = 0xFFFFFFFF;
    Node node("x", hash);
    std::vector<NodePtr> added;
    for (int i = 0; i < 100; ++i) {
        const std::string name = "a" + std::to_string(i);
        ASSERT_EQ(node.subnodes.find(name, hash), nullptr);
        added.push_back(node.addNewSubnode(name, hash));
        ASSERT_EQ(node.addNewSubnode(name, hash), added.back());
        ASSERT_EQ(node.addNewSubnode("a0", hash), added.front());
    }
    EXPECT_THAT(node.subnodes, testing::ElementsAreArray(added));
}

TEST(SyntaxNode, HandsBackANodeThatItDidNotAttach)
{
    Node node("x");
    const NodePtr attached = node.addNewSubnode("a");
    const auto other = std::make_shared<Node>("a");
    EXPECT_EQ(node.addExistingSubnode(other), other);
    EXPECT_THAT(node.subnodes, ElementsAre(attached));
}

TEST(SyntaxNode, MatchesAKeywordBeforeAnyPlaceholder)
{
    Node node("x");
    EXPECT_THAT(node.findMatchingSubnodes("a"), IsEmpty());
    node.addNewSubnode("on");
    EXPECT_THAT(node.findMatchingSubnodes("off"), IsEmpty());
    EXPECT_THAT(node.findMatchingSubnodes(""), IsEmpty());
    node.addNewSubnode("<p>");
    node.addNewSubnode("...");
    EXPECT_THAT(namesOf(node.findMatchingSubnodes("on")), ElementsAre("on"));
    EXPECT_THAT(namesOf(node.findMatchingSubnodes("off")), ElementsAre("<p>", "..."));
    EXPECT_THAT(namesOf(node.findMatchingSubnodes("o")), ElementsAre("<p>", "..."));
    EXPECT_THAT(namesOf(node.findMatchingSubnodes("ON")), ElementsAre("<p>", "..."));
    EXPECT_THAT(namesOf(node.findMatchingSubnodes("<p>")), ElementsAre("<p>", "..."));
}

TEST(SyntaxGraph, StartsWithTheRootOnly)
{
    const SyntaxGraph graph;
    EXPECT_EQ(rootOf(graph)->name, " ");
    EXPECT_FALSE(rootOf(graph)->isArgument);
    EXPECT_THAT(rootOf(graph)->subnodes, IsEmpty());
    EXPECT_THAT(pendingNamesOf(graph), IsEmpty());
    EXPECT_THAT(commandNodesOf(graph), IsEmpty());
}

TEST(SyntaxGraph, KeepsItsMembersInOrder)
{
    const SyntaxGraph graph;
    EXPECT_EQ(addressOf(&graph), addressOf(&graph.mutex));
    EXPECT_LT(addressOf(&graph.mutex), addressOf(&graph.root));
    EXPECT_LT(addressOf(&graph.root), addressOf(&graph.pendingCommandNames));
    EXPECT_LT(addressOf(&graph.pendingCommandNames), addressOf(&graph.commandNodes));
}

TEST(SyntaxGraph, SharesTheNodeThatFollowsAnOptionalGroup)
{
    SyntaxGraph graph;
    graph.addCommand("show", {{"show [-l] <file> { on | off }", returning(7)}});
    EXPECT_THAT(subnodesOf(rootOf(graph)), ElementsAre("show"));
    const NodePtr show = at(rootOf(graph), {"show"});
    EXPECT_THAT(subnodesOf(show), ElementsAre("-l", "<file>"));
    EXPECT_EQ(at(show, {"-l", "<file>"}), at(show, {"<file>"}));
    EXPECT_THAT(subnodesOf(at(show, {"-l"})), ElementsAre("<file>"));
    EXPECT_THAT(subnodesOf(at(show, {"<file>"})), ElementsAre("on", "off"));
    EXPECT_EQ(resultOf(at(show, {"<file>", "on"})->handler), 7);
    EXPECT_EQ(resultOf(at(show, {"<file>", "off"})->handler), 7);
    for (const auto& path : std::vector<std::vector<std::string>>{{}, {"show"}, {"show", "-l"}, {"show", "<file>"}}) {
        EXPECT_FALSE(at(rootOf(graph), path)->handler.hasFunction());
    }
    EXPECT_EQ(commandNodesOf(graph).at("show"), show);
    EXPECT_THAT(pendingNamesOf(graph), IsEmpty());

    graph.addCommand("show", {{"show dump", returning(8)}});
    EXPECT_THAT(subnodesOf(show), ElementsAre("-l", "<file>", "dump"));
    EXPECT_EQ(resultOf(at(show, {"dump"})->handler), 8);
}

TEST(SyntaxGraph, JoinsAWordToEachNodeOfAFrontierAndGoesOnAfterTheWord)
{
    SyntaxGraph graph;
    SyntaxGraph::Frontier frontier = {rootOf(graph), rootOf(graph)->addNewSubnode("a")};
    SyntaxGraph::joinToNode("b", frontier);
    const NodePtr joined = at(rootOf(graph), {"b"});
    EXPECT_THAT(frontier, ElementsAre(joined));
    EXPECT_EQ(at(rootOf(graph), {"a", "b"}), joined);
}

TEST(SyntaxGraph, StopsAtATopLevelBar)
{
    SyntaxGraph graph;
    add(graph, "a", {"a|b"});
    EXPECT_THAT(subnodesOf(rootOf(graph)), ElementsAre("a"));
    EXPECT_THAT(subnodesOf(at(rootOf(graph), {"a"})), IsEmpty());
    EXPECT_EQ(resultOf(at(rootOf(graph), {"a"})->handler), 1);
}

TEST(SyntaxGraph, StopsAtATopLevelClosingBracket)
{
    EXPECT_EQ(Parsed("a | b").end, '|');
    EXPECT_EQ(Parsed("a | b").rest, " b");
    EXPECT_EQ(Parsed("a ] b").end, ']');
    EXPECT_EQ(Parsed("a } b").end, '}');
    EXPECT_EQ(Parsed("a b").end, '\0');
    EXPECT_THAT(namesOf(Parsed("a ] b").frontier), ElementsAre("a"));
    EXPECT_THAT(namesOf(Parsed("| b").frontier), ElementsAre(" "));
}

TEST(SyntaxGraph, GivesAHandlerToEveryEndOfASynopsis)
{
    SyntaxGraph graph;
    add(graph, "x", {"x [-l]"});
    EXPECT_EQ(resultOf(at(rootOf(graph), {"x"})->handler), 1);
    EXPECT_EQ(resultOf(at(rootOf(graph), {"x", "-l"})->handler), 1);

    SyntaxGraph choice;
    add(choice, "x", {"x { -a | -b }"});
    EXPECT_FALSE(at(rootOf(choice), {"x"})->handler.hasFunction());
    EXPECT_EQ(resultOf(at(rootOf(choice), {"x", "-a"})->handler), 1);
    EXPECT_EQ(resultOf(at(rootOf(choice), {"x", "-b"})->handler), 1);
}

TEST(SyntaxGraph, JoinsOneWordToEveryNodeOfTheFrontier)
{
    Parsed parsed("{ a | b }");
    SyntaxGraph::joinToNode("c", parsed.frontier);
    ASSERT_THAT(namesOf(parsed.frontier), ElementsAre("c"));
    EXPECT_EQ(at(rootOf(parsed.graph), {"a", "c"}), parsed.frontier.front());
    EXPECT_EQ(at(rootOf(parsed.graph), {"b", "c"}), parsed.frontier.front());
}

TEST(SyntaxGraph, KeepsDuplicatesInTheFrontier)
{
    EXPECT_THAT(namesOf(Parsed("x [ [ y ] ]").frontier), ElementsAre("x", "x", "y"));
    EXPECT_THAT(namesOf(Parsed("x [[[]]]").frontier), ElementsAre("x", "x", "x", "x"));
    EXPECT_THAT(namesOf(Parsed("x { | a | }").frontier), ElementsAre("x", "a", "x"));
}

TEST(SyntaxGraph, AttachesAFollowingWordOnceToADuplicate)
{
    SyntaxGraph graph;
    add(graph, "x", {"x [ [ y ] ] z"});
    const NodePtr x = at(rootOf(graph), {"x"});
    EXPECT_THAT(subnodesOf(x), ElementsAre("y", "z"));
    EXPECT_EQ(at(x, {"y", "z"}), at(x, {"z"}));
}

TEST(SyntaxGraph, MakesAThirdNodeForARepeatedOptionalWord)
{
    SyntaxGraph graph;
    add(graph, "a", {"a [a] a"});
    const NodePtr first = at(rootOf(graph), {"a"});
    const NodePtr second = at(first, {"a"});
    const NodePtr third = at(second, {"a"});
    ASSERT_TRUE(third);
    EXPECT_NE(second, third);
    EXPECT_THAT(third->subnodes, IsEmpty());
    EXPECT_FALSE(first->handler.hasFunction());
    EXPECT_FALSE(second->handler.hasFunction());
    EXPECT_EQ(resultOf(third->handler), 1);
}

TEST(SyntaxGraph, LeavesAParentAloneThatHasAnotherNodeOfThatName)
{
    SyntaxGraph graph;
    add(graph, "x", {"x b c", "x [a|b] c"});
    const NodePtr x = at(rootOf(graph), {"x"});
    EXPECT_THAT(subnodesOf(x), ElementsAre("b", "a", "c"));
    // "b" had a "c" of its own before; "x" and "a" share the new one.
    EXPECT_EQ(at(x, {"a", "c"}), at(x, {"c"}));
    EXPECT_NE(at(x, {"b", "c"}), at(x, {"c"}));
}

TEST(SyntaxGraph, GivesTheRootTheHandlerOfAnEmptySynopsis)
{
    for (const char* synopsis : {"", "  ", "| a", "[ ]"}) {
        SyntaxGraph graph;
        add(graph, "x", {synopsis});
        EXPECT_EQ(resultOf(rootOf(graph)->handler), 1) << synopsis;
        EXPECT_THAT(rootOf(graph)->subnodes, IsEmpty()) << synopsis;
    }
}

TEST(SyntaxGraph, ReadsAPlaceholderWithBlanksAsOneWord)
{
    SyntaxGraph graph;
    add(graph, "get", {"get <a b>", "get <a"});
    EXPECT_THAT(subnodesOf(at(rootOf(graph), {"get"})), ElementsAre("<a b>", "<a"));
    EXPECT_TRUE(at(rootOf(graph), {"get", "<a b>"})->isArgument);
    EXPECT_FALSE(at(rootOf(graph), {"get", "<a"})->isArgument);
}

TEST(SyntaxGraph, DoesNotMatchAClosingBracketWithTheOpeningOne)
{
    SyntaxGraph graph;
    add(graph, "o", {"o [ x } y"});
    EXPECT_THAT(subnodesOf(at(rootOf(graph), {"o"})), ElementsAre("x", "y"));
    EXPECT_EQ(at(rootOf(graph), {"o", "x", "y"}), at(rootOf(graph), {"o", "y"}));
}

TEST(SyntaxGraph, ClosesEveryGroupAtTheEndOfTheText)
{
    SyntaxGraph graph;
    add(graph, "x", {"x [ a { b"});
    EXPECT_TRUE(at(rootOf(graph), {"x"})->handler.hasFunction());
    EXPECT_FALSE(at(rootOf(graph), {"x", "a"})->handler.hasFunction());
    EXPECT_TRUE(at(rootOf(graph), {"x", "a", "b"})->handler.hasFunction());
}

TEST(SyntaxGraph, MergesCommonPrefixesAcrossCommands)
{
    SyntaxGraph graph;
    add(graph, "show", {"show a"});
    add(graph, "list", {"show b"});
    EXPECT_THAT(subnodesOf(rootOf(graph)), ElementsAre("show"));
    EXPECT_THAT(subnodesOf(at(rootOf(graph), {"show"})), ElementsAre("a", "b"));
}

TEST(SyntaxGraph, ReplacesAHandlerByTheLaterSynopsisThatEndsThere)
{
    SyntaxGraph graph;
    add(graph, "x", {"x a", "x [b] a"});
    EXPECT_EQ(resultOf(at(rootOf(graph), {"x", "a"})->handler), 2);
    const Corvane::ExclusiveLock lock(graph.mutex);
    graph.addSynopsis("x [b]", returning(3));
    EXPECT_EQ(resultOf(at(graph.root, {"x"})->handler), 3);
    EXPECT_EQ(resultOf(at(graph.root, {"x", "b"})->handler), 3);
}

TEST(CommandNames, StayPendingUntilALaterCommandBringsTheirFirstWord)
{
    SyntaxGraph graph;
    add(graph, "b", {"a one"});
    EXPECT_THAT(pendingNamesOf(graph), ElementsAre("b"));
    EXPECT_THAT(commandNodesOf(graph), IsEmpty());
    add(graph, "a", {"b two"});
    EXPECT_THAT(pendingNamesOf(graph), IsEmpty());
    EXPECT_EQ(commandNodesOf(graph).at("a"), at(rootOf(graph), {"a"}));
    EXPECT_EQ(commandNodesOf(graph).at("b"), at(rootOf(graph), {"b"}));
}

TEST(CommandNames, FollowTheOnlyPlaceholderAndStayPending)
{
    SyntaxGraph graph;
    add(graph, "run", {"<program> <argument>"});
    EXPECT_THAT(pendingNamesOf(graph), ElementsAre("run"));
    EXPECT_EQ(commandNodesOf(graph).at("run"), at(rootOf(graph), {"<program>"}));

    // With a second placeholder the name could mean either: its entry stays as it was.
    add(graph, "walk", {"<other>"});
    EXPECT_THAT(pendingNamesOf(graph), ElementsAre("run", "walk"));
    EXPECT_EQ(commandNodesOf(graph).at("run"), at(rootOf(graph), {"<program>"}));
    EXPECT_EQ(commandNodesOf(graph).count("walk"), 0U);

    // A synopsis that begins with the name itself takes the entry over.
    add(graph, "", {"run fast"});
    EXPECT_THAT(pendingNamesOf(graph), ElementsAre("walk"));
    EXPECT_EQ(commandNodesOf(graph).at("run"), at(rootOf(graph), {"run"}));
}

TEST(CommandNames, ThatAreEmptyAddNothingButResolveThePendingOnes)
{
    SyntaxGraph graph;
    add(graph, "late", {"early"});
    ASSERT_THAT(pendingNamesOf(graph), ElementsAre("late"));
    rootOf(graph)->addNewSubnode("late");
    graph.addCommand("", {});
    EXPECT_THAT(pendingNamesOf(graph), IsEmpty());
    EXPECT_EQ(commandNodesOf(graph).size(), 1U);
    EXPECT_EQ(commandNodesOf(graph).at("late"), at(rootOf(graph), {"late"}));
}

TEST(CommandNames, AreNotPendingAgainOnceResolved)
{
    SyntaxGraph graph;
    add(graph, "x", {"x a"});
    add(graph, "x", {"y b"});
    EXPECT_THAT(pendingNamesOf(graph), IsEmpty());
    EXPECT_EQ(commandNodesOf(graph).at("x"), at(rootOf(graph), {"x"}));
}

TEST(CommandNames, ThatArePlaceholdersAreNotPendingAgainOnceResolved)
{
    SyntaxGraph graph;
    add(graph, "<p>", {"<p> a"});
    EXPECT_THAT(pendingNamesOf(graph), IsEmpty());
    add(graph, "<q>", {"<q> b"}); // could be either placeholder
    EXPECT_THAT(pendingNamesOf(graph), ElementsAre("<q>"));
    add(graph, "<p>", {"<p> c"});
    EXPECT_THAT(pendingNamesOf(graph), ElementsAre("<q>"));
}

TEST(CommandNames, OfATableWithoutSynopsesStayPending)
{
    SyntaxGraph graph;
    add(graph, "empty", {});
    EXPECT_THAT(pendingNamesOf(graph), ElementsAre("empty"));
    EXPECT_THAT(rootOf(graph)->subnodes, IsEmpty());
}

} // namespace
