/// Synopses and lines of unusual size and shape: they take bounded time and stack, and nothing is lost.
#include <ctime>
#include <set>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/command/graphSupport.h"
#include "tests/support/smallStack.h"

namespace {

using namespace Corvane::CmdTableHelper;
using namespace Corvane::CmdTableHelper::Testing;
using Corvane::Testing::runOnSmallStack;
using testing::ElementsAre;

constexpr int deep = 100000;
constexpr int printed = 65536; // the most words of a usage

std::string repeated(const std::string& text, int times)
{
    std::string all;
    for (int i = 0; i < times; ++i) {
        all += text;
    }
    return all;
}

std::vector<std::string> line(const std::string& first, const std::string& word, int times)
{
    std::vector<std::string> words(static_cast<std::size_t>(times) + 1, word);
    words.front() = first;
    return words;
}

SyntaxGraph::Frontier endsOf(SyntaxGraph& graph, const std::string& synopsis)
{
    SyntaxGraph::Frontier frontier{rootOf(graph)};
    const char* cursor = synopsis.c_str();
    SyntaxGraph::processVelkSyntax(cursor, frontier);
    return frontier;
}

std::size_t distinct(const SyntaxGraph::Frontier& frontier)
{
    return std::set<NodePtr>(frontier.begin(), frontier.end()).size();
}

TEST(DeepSynopsis, OfNestedBracketsNeedsNoStack)
{
    for (const char* brackets : {"[]", "{}"}) {
        runOnSmallStack([&] {
            SyntaxGraph graph;
            const std::string open(deep, brackets[0]);
            const std::string close(deep, brackets[1]);
            add(graph, "x", {"x " + open + "y" + close + " z"});
            EXPECT_EQ(dispatch(graph, {"x", "y", "z"}).result, 1);
            EXPECT_EQ(dispatch(graph, {"x", "y"}).text, "Usage: x y z \n\n");
            pelmSyntaxFrom(rootOf(graph));
        });
    }
}

TEST(DeepSynopsis, OfNestedOptionalWordsIsPrintedWithoutStack)
{
    runOnSmallStack([] {
        SyntaxGraph graph;
        const int depth = deep;
        add(graph, "x", {"x " + repeated("[w ", depth) + std::string(static_cast<std::size_t>(depth), ']')});
        const std::string pelm = pelmSyntaxFrom(rootOf(graph));
        EXPECT_EQ(pelm, "x [" + repeated("w [", printed - 2) + "w" + std::string(printed - 1, ']') + " ");
        EXPECT_EQ(dispatch(graph, line("x", "w", depth)).result, 1);
    });
}

TEST(DeepSynopsis, OfManyWordsIsParsedPrintedMatchedAndDestroyed)
{
    runOnSmallStack([] {
        SyntaxGraph graph;
        add(graph, "x", {"x " + repeated("w ", deep)});
        EXPECT_EQ(syntaxFrom(rootOf(graph)), "x " + repeated("w ", printed - 1));
        EXPECT_EQ(pelmSyntaxFrom(rootOf(graph)), "x " + repeated("w ", printed - 1));
        EXPECT_EQ(dispatch(graph, line("x", "w", deep)).result, 1);
        EXPECT_EQ(dispatch(graph, line("x", "w", deep - 1)).text, "Usage: x " + repeated("w ", deep) + "\n\n");
    });
}

TEST(DeepSynopsis, ThatStaysOpenIsClosedAtTheEnd)
{
    runOnSmallStack([] {
        SyntaxGraph graph;
        add(graph, "x", {"x " + std::string(deep, '{') + "y"});
        EXPECT_EQ(dispatch(graph, {"x", "y"}).result, 1);
    });
}

TEST(Destruction, FreesACyclicGraph)
{
    std::weak_ptr<Node> node;
    {
        SyntaxGraph graph;
        add(graph, "x", {"x [w p] w"});
        node = at(rootOf(graph), {"x", "w"});
        ASSERT_FALSE(node.expired());
    }
    EXPECT_TRUE(node.expired());
}

TEST(ManyOptionalWords, OfOneSynopsisEachLeadToAllLaterOnes)
{
    const int words = 1000;
    std::string synopsis = "x";
    for (int i = 0; i < words; ++i) {
        synopsis += " [w" + std::to_string(i) + "]";
    }
    SyntaxGraph graph;
    add(graph, "x", {synopsis});
    add(graph, "x", {synopsis}); // finds the same words and makes none
    NodePtr node = at(rootOf(graph), {"x"});
    for (std::size_t i = 0; i < words; ++i) {
        ASSERT_EQ(node->subnodes.size(), words - i);
        ASSERT_EQ(node->subnodes.front()->name, "w" + std::to_string(i));
        ASSERT_EQ(node->subnodes.back()->name, "w" + std::to_string(words - 1));
        node = node->subnodes.front();
    }
    EXPECT_EQ(dispatch(graph, {"x", "w1", "w998"}).result, 1);
    EXPECT_EQ(dispatch(graph, {"x", "w998", "w1"}).result, 1) << "words beyond the end are not looked at";
}

TEST(ManyCommands, AreRegisteredAndFound)
{
    const int commands = 50000;
    SyntaxGraph graph;
    for (int i = 0; i < commands; ++i) {
        const std::string name = "c" + std::to_string(i);
        graph.addCommand(name, {{name + " <a>", returning(i)}, {"all " + name, returning(i)}});
    }
    for (int i = 0; i < commands; ++i) {
        const std::string name = "c" + std::to_string(i);
        ASSERT_EQ(dispatch(graph, {name, "v"}).result, i);
    }
    graph.addCommand("all", {});
    for (int i = 0; i < commands; ++i) {
        ASSERT_EQ(dispatch(graph, {"all", "c" + std::to_string(i)}).result, i);
    }
}

TEST(ManyCommands, ThatEachBeginWithAnotherPlaceholderAreRegisteredInTime)
{
    const std::clock_t begin = std::clock();
    SyntaxGraph graph;
    for (int i = 0; i < 2000; ++i) {
        const std::string number = std::to_string(i);
        graph.addCommand("n" + number, {{"<p" + number + ">", returning(i)}});
    }
    EXPECT_LT((std::clock() - begin) / CLOCKS_PER_SEC, 5); // it takes a tenth of a second
    EXPECT_EQ(dispatch(graph, {"n1999"}).result, 0);
}

TEST(Duplicates, DoubleWithEachGroupUpToTheLimit)
{
    SyntaxGraph graph;
    // Each "[[]]" appends the frontier to itself twice more.
    EXPECT_EQ(endsOf(graph, "x" + repeated("[]", 10)).size(), 1024U);
    EXPECT_EQ(endsOf(graph, "x" + repeated("[]", 11)).size(), 1U);
    EXPECT_EQ(endsOf(graph, "x" + repeated("[]", 11) + repeated("[]", 10)).size(), 1024U);
}

TEST(Duplicates, OfMoreThanTheLimitAreDroppedInTheOrderOfTheFirst)
{
    SyntaxGraph graph;
    const auto before = endsOf(graph, "x" + repeated("[[a]]", 4) + "[b]");
    EXPECT_EQ(before.size(), 32U) << "each group doubles the exits and adds one";
    EXPECT_THAT(namesOf({before.front(), before.back()}), ElementsAre("x", "b"));

    const auto after = endsOf(graph, "y {" + repeated("|", 1100) + " a | b | a }");
    EXPECT_THAT(namesOf(after), ElementsAre("y", "a", "b"));
    // The later list is longer than the earlier one, and shorter.
    const std::string many = repeated("|", 1100);
    EXPECT_THAT(namesOf(endsOf(graph, "x {" + many + "a|{b|c|a|d}}")), ElementsAre("x", "a", "b", "c", "d"));
    EXPECT_THAT(namesOf(endsOf(graph, "x {" + many + "a|b|c|{d|b}}")), ElementsAre("x", "a", "b", "c", "d"));
}

TEST(Duplicates, DoNotMakeManyOptionalGroupsExpensive)
{
    SyntaxGraph graph;
    std::string synopsis = "x";
    for (int i = 0; i < 200; ++i) {
        synopsis += " [[w" + std::to_string(i) + "]]";
    }
    const auto ends = endsOf(graph, synopsis);
    EXPECT_EQ(distinct(ends), 201U);
    EXPECT_LE(ends.size(), 3U * 1024U);
}

TEST(Duplicates, DoNotMakeManyEmptyAlternativesExpensive)
{
    SyntaxGraph graph;
    EXPECT_EQ(endsOf(graph, "x" + repeated("[]", 10) + "{" + std::string(1000000, '|') + "}").size(), 1U);
}

TEST(Search, AmongAmbiguousPlaceholdersIsBoundedByEdgesTimesWords)
{
    // Two placeholders at every step and no handler at the end: trying all 2^60 ways would take for ever.
    SyntaxGraph graph;
    std::string synopsis = "x";
    for (int i = 0; i < 60; ++i) {
        synopsis += " { <a" + std::to_string(i) + "> | <b" + std::to_string(i) + "> }";
    }
    add(graph, "x", {synopsis + " end"});
    EXPECT_EQ(dispatch(graph, line("x", "v", 61)).result, -1);
    auto complete = line("x", "v", 61);
    complete.back() = "end";
    EXPECT_EQ(dispatch(graph, complete).result, 1);
}

TEST(Search, TriesANodeWithEachWordOfTheLineOnce)
{
    // The short way comes to <z> early and fails; the long way comes to the same node with another word.
    for (int longWay = 1; longWay <= 200; ++longWay) {
        SyntaxGraph graph;
        add(graph, "x", {"x { <a> | " + repeated("<b> ", longWay) + "} <z> end"});
        auto complete = line("x", "v", longWay + 2);
        complete.back() = "end";
        ASSERT_EQ(dispatch(graph, complete).result, 1) << longWay;
    }
}

TEST(Search, ThroughALongLineNeedsNoStack)
{
    runOnSmallStack([] { // every word of the line is ambiguous
        SyntaxGraph graph;
        std::string synopsis = "x";
        const int words = 2000;
        for (int i = 0; i < words; ++i) {
            synopsis += " { <a> | <b> }";
        }
        add(graph, "x", {synopsis + " end"});
        auto complete = line("x", "v", words + 1);
        EXPECT_EQ(dispatch(graph, complete).result, -1);
        complete.back() = "end";
        EXPECT_EQ(dispatch(graph, complete).result, 1);
    });
}

TEST(Lines, OfTenThousandWordsAreMatched)
{
    SyntaxGraph graph;
    add(graph, "x", {"x <a>"});
    EXPECT_EQ(dispatch(graph, line("x", "v", 10000)).result, 1);
    EXPECT_EQ(dispatch(graph, line("y", "v", 10000)).text, "Usage: x <a> \n\n");
}

TEST(Lines, WithWordsOfAMebibyteAreMatched)
{
    const std::string word(1024 * 1024, 'w');
    SyntaxGraph graph;
    add(graph, "x", {"x <a> " + word + " [y]", "x <b> " + word + " y z"});
    EXPECT_EQ(dispatch(graph, {"x", word, word}).result, 1);
    EXPECT_EQ(dispatch(graph, {"x", word, word, "y", "z"}).result, 1);
    EXPECT_EQ(dispatch(graph, {"x", word}).text, "Usage: x " + word + " " + word + " [ y ] \n\n");
    EXPECT_EQ(dispatch(graph, {word}).result, -1);
}

TEST(Synopses, OfAMebibyteAreParsed)
{
    SyntaxGraph graph;
    const std::string name = "<" + std::string(1024 * 1024, 'n');
    add(graph, "x", {"x " + name + ">"});
    EXPECT_EQ(dispatch(graph, {"x", "v"}).result, 1);
}

TEST(Synopses, EndAtANul)
{
    SyntaxGraph graph;
    add(graph, "x", {std::string("x a\0b", 5)});
    EXPECT_EQ(dispatch(graph, {"x", "a"}).result, 1);
    EXPECT_TRUE(at(rootOf(graph), {"x", "a"})->subnodes.empty());
}

} // namespace
