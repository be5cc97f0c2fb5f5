/// What the two usage printers write, character by character.
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/command/graphSupport.h"

namespace {

using namespace Corvane::CmdTableHelper;
using namespace Corvane::CmdTableHelper::Testing;

/// Both formats, printed from the node at `path` of a graph with these synopses.
std::pair<std::string, std::string> printed(const std::vector<std::string>& synopses,
                                            const std::vector<std::string>& path = {})
{
    SyntaxGraph graph;
    add(graph, "x", synopses);
    const NodePtr node = at(rootOf(graph), path);
    return {syntaxFrom(node), pelmSyntaxFrom(node)};
}

using Texts = std::pair<std::string, std::string>;

TEST(UsagePrinters, WriteTheDocumentedExamples)
{
    EXPECT_EQ(printed({"show [-l] <file> { on | off }"}),
              Texts("show [ -l ] <file> { on | off } ", "show { -l | <file> } "));
    EXPECT_EQ(printed({"x [-l]"}), Texts("x [ -l ] ", "x [-l] "));
    EXPECT_EQ(printed({"x <a> [-v] <b>"}), Texts("x <a> [ -v ] <b> ", "x <a> { -v | <b> } "));
    EXPECT_EQ(printed({"x <a> [<b>]"}), Texts("x <a> [ <b> ] ", "x <a> [<b>] "));
    EXPECT_EQ(printed({"x [ <a> | <b> ]"}), Texts("x { <a> | <b> } ", "x [ <a> | <b>  ] "));
    EXPECT_EQ(printed({"show [-l] <file> { on | off }"}, {"show", "<file>"}), Texts("{ on | off } ", "{ on | off } "));
}

TEST(UsagePrinters, WriteNothingForALeafOrNoNode)
{
    EXPECT_EQ(printed({"x a"}, {"x", "a"}), Texts("", ""));
    EXPECT_EQ(syntaxFrom(nullptr), "");
    EXPECT_EQ(pelmSyntaxFrom(nullptr), "");
    std::ostringstream out;
    EXPECT_EQ(SyntaxGraph::printSimpleSubNodes(nullptr, out), nullptr);
    EXPECT_EQ(SyntaxGraph::printSubNodes(nullptr, nullptr, out), nullptr);
    EXPECT_EQ(out.str(), "");
}

TEST(UsagePrinters, LeaveTheStreamsWidthToWhatFollowsANodeWithNothingToWrite)
{
    std::ostringstream out;
    out.width(20);
    SyntaxGraph::printSyntax(nullptr, out);
    SyntaxGraph::printPelmSyntax(nullptr, out);
    SyntaxGraph::printSimpleSubNodes(nullptr, out);
    SyntaxGraph::printSyntax(std::make_shared<Node>("leaf"), out);
    SyntaxGraph::printPelmSyntax(std::make_shared<Node>("leaf"), out);
    EXPECT_EQ(out.str(), "");
    EXPECT_EQ(out.width(), 20);
}

TEST(UsagePrinters, WriteTheFirstWordsOfSeveralCommandsInOrder)
{
    EXPECT_EQ(printed({"show a", "list b"}), Texts("{ show | list } ", "{ show | list } "));
    EXPECT_EQ(printed({"b a", "a b", "c"}), Texts("{ b | a | c } ", "{ b | a | c } "));
}

TEST(PrintSyntax, DoesNotFollowAlternatives)
{
    EXPECT_EQ(printed({"x { a b | c d } e"}).first, "x { a | c } ");
    EXPECT_EQ(printed({"x [ a | b | c ] d"}).first, "x { a | b | c | d } ");
}

TEST(PrintSyntax, MarksALastOptionalWordOnly)
{
    EXPECT_EQ(printed({"x [ a b ]"}).first, "x a b ");
    EXPECT_EQ(printed({"x a [ b [ c ] ]"}).first, "x a b [ c ] ");
}

TEST(PrintSyntax, SeesASharedNodeOnlyInTheSecondPlace)
{
    // "b" is registered first, so the two do not stand in the order of an optional word.
    EXPECT_EQ(printed({"x b", "x [a] b"}).first, "x { b | a } ");
    EXPECT_EQ(printed({"x [a] [b] c"}).first, "x { a | b | c } ");
}

TEST(PrintPelmSyntax, WritesALoneOptionalGroupInCompactForm)
{
    EXPECT_EQ(printed({"x [ a b ]"}).second, "x [a b] ");
    EXPECT_EQ(printed({"x [ a [ b [ c ] ] ]"}).second, "x [a [b [c]]] ");
    EXPECT_EQ(printed({"x [ a [b] c ]"}).second, "x [a [b] c] ");
}

TEST(PrintPelmSyntax, LeavesItsLoopAtAChoiceThatDoesNotBeginWithAPlaceholder)
{
    EXPECT_EQ(printed({"x { a b | <c> d }"}).second, "x { a | <c> } ");
    EXPECT_EQ(printed({"x { <a> b | c d }"}).second, "x { <a> | c } ");
}

TEST(PrintPelmSyntax, WritesAnOptionalChoiceOfLeaves)
{
    EXPECT_EQ(printed({"x [ -a | <b> ]"}).second, "x [ { -a | <b> } ] ");
    EXPECT_EQ(printed({"x { <a> | <b> }"}).second, "x [ <a> | <b>  ] ");
    EXPECT_EQ(printed({"x [ <a> | <b> | c ]"}).second, "x [ <a> | <b> | c  ] ");
}

TEST(PrintPelmSyntax, LooksAtTheSecondOfMoreThanTwoInTheFirstPassOnly)
{
    const std::vector<std::string> synopses = {"x { <a> | b | <c> }"};
    EXPECT_EQ(printed(synopses, {"x"}).second, "{ <a> | b | <c> } ");
    EXPECT_EQ(printed(synopses).second, "x [ <a> | b | <c>  ] ");
}

TEST(PrintPelmSyntax, WritesAnOptionalPlaceholderBeforeASharedOne)
{
    EXPECT_EQ(printed({"x [<a>] <b>"}).second, "x [<a>] <b> ");
    EXPECT_EQ(printed({"x [<a>] <b> c"}).second, "x [<a>] <b> c ");
}

TEST(PrintPelmSyntax, WritesAnOptionalSequenceBeforeASharedPlaceholder)
{
    EXPECT_EQ(printed({"x [<a> -v w] <b>"}).second, "x [<a> -v w] <b> ");
    EXPECT_EQ(printed({"x [<a> [-v] w] <b>"}).second, "x [<a> [-v] w] <b> ");
}

TEST(PrintPelmSyntax, EndsAGroupWhereANestedPrintEndsAtALeaf)
{
    // Inside the group the first of two words is a leaf: nothing follows it that could be the group's end.
    SyntaxGraph graph;
    const NodePtr x = rootOf(graph)->addNewSubnode("x");
    const NodePtr a = x->addNewSubnode("<a>");
    x->addNewSubnode("<b>");
    a->addNewSubnode("c")->addNewSubnode("d");
    a->addNewSubnode("e");
    EXPECT_EQ(pelmSyntaxFrom(x), "[<a> [c]] d ");
}

TEST(PrintSubNodes, WritesUpToTheStop)
{
    SyntaxGraph graph;
    add(graph, "x", {"x a b c d"});
    const NodePtr x = at(rootOf(graph), {"x"});
    std::ostringstream out;
    EXPECT_EQ(SyntaxGraph::printSubNodes(x, at(x, {"a", "b", "c"}), out), at(x, {"a", "b"}));
    EXPECT_EQ(out.str(), "x a b");
}

TEST(PrintSubNodes, DoesNotWriteALeafAtTheEnd)
{
    SyntaxGraph graph;
    add(graph, "x", {"x a b"});
    const NodePtr x = at(rootOf(graph), {"x"});
    std::ostringstream out;
    EXPECT_EQ(SyntaxGraph::printSubNodes(x, nullptr, out), at(x, {"a"}));
    EXPECT_EQ(out.str(), "x a");
}

TEST(PrintSubNodes, WritesANodeWithoutSubnodesAndReturnsIt)
{
    const auto leaf = std::make_shared<Node>("leaf");
    std::ostringstream out;
    EXPECT_EQ(SyntaxGraph::printSubNodes(leaf, nullptr, out), leaf);
    EXPECT_EQ(out.str(), "leaf");
}

TEST(PrintSimpleSubNodes, WritesNoBlanksInsideBracketsAndReturnsWhereItStopped)
{
    SyntaxGraph graph;
    add(graph, "x", {"x [-l]"});
    const NodePtr x = at(rootOf(graph), {"x"});
    std::ostringstream out;
    EXPECT_EQ(SyntaxGraph::printSimpleSubNodes(x, out), at(x, {"-l"}));
    EXPECT_EQ(out.str(), "x [-l]");
}

TEST(UsagePrinters, EndWhereACyclicSynopsisComesBack)
{
    SyntaxGraph graph;
    add(graph, "x", {"x [w p] w"});
    const NodePtr x = at(rootOf(graph), {"x"});
    ASSERT_EQ(at(x, {"w", "p", "w"}), at(x, {"w"}));
    EXPECT_EQ(syntaxFrom(rootOf(graph)), "x w p w ");
    EXPECT_EQ(pelmSyntaxFrom(rootOf(graph)), "x w [p w [p]] ");
    EXPECT_EQ(syntaxFrom(at(x, {"w"})), "p w ");
    EXPECT_EQ(dispatch(graph, {"x", "w", "p"}), (Dispatched{-1, "Usage: x w p w p \n\n"}));
    EXPECT_EQ(dispatch(graph, {"x", "w", "p", "w", "p", "w"}).result, 1);
}

TEST(UsagePrinters, EndWhereACycleLeadsThroughGroupsOnly)
{
    const auto a = std::make_shared<Node>("a");
    const auto b = std::make_shared<Node>("b");
    for (const auto& [node, first] : {std::pair{a, b}, std::pair{b, a}}) {
        node->addExistingSubnode(first);
        node->addExistingSubnode(node);
    }
    std::ostringstream out;
    SyntaxGraph::printSimpleSubNodes(a, out);
    EXPECT_EQ(out.str(), "a [b] [a]");
    std::vector<NodePtr> released;
    a->subnodes.moveTo(released);
    b->subnodes.moveTo(released);
}

TEST(PrintPelmSyntax, ClosesEveryBracketWhereACyclicSynopsisComesBack)
{
    // Words that may be left out, each inside the one before.
    EXPECT_EQ(printed({"x [w p] w"}).second, "x w [p w [p]] ");
    EXPECT_EQ(printed({"x [w p] w", "x w p"}).second, "x w [p [w [p]]] ");
    EXPECT_EQ(printed({"x [w p q] w", "x w p", "x w p q"}).second, "x w [p [q [w [p]]]] ");
    // "w" comes back inside a group that would end before "z".
    EXPECT_EQ(printed({"x [w p] w", "x w p z y"}).second, "x w [p [w p [w]]] ");
    // It comes back behind a group that has ended.
    EXPECT_EQ(printed({"x [w p [a]] w"}).second, "x w [p [a] w [p]] ");
}

TEST(PrintPelmSyntax, WritesTheWholeUsageOfACyclicSynopsisIfItEndsByItself)
{
    SyntaxGraph graph;
    add(graph, "pelm", {"pelm [<u> [x [s] t]] <b>", "pelm <u> [x s t <b> [e] <f> p] x"});
    EXPECT_EQ(dispatch(graph, {"pelm"}).text, "Usage: pelm [<u> [x [s] t]] <b> [e] <f> p x { s | t } \n\n");
}

TEST(UsagePrinters, EndAfter65536Words)
{
    std::string words;
    for (int i = 0; i < 65534; ++i) {
        words += "w ";
    }
    EXPECT_EQ(printed({words + "w w w"}), Texts(words + "w w ", words + "w w "));
    EXPECT_EQ(printed({words + "w [a] b c"}).first, words + "w [ a ] ");
    EXPECT_EQ(printed({words + "[a] b c"}).first, words + "[ a ] b ");
    EXPECT_EQ(printed({words + "{ a | b | c }"}), Texts(words + "{ a | b } ", words + "{ a | b } "));
    EXPECT_EQ(printed({words + "[ a | <b> | <c> ]"}, {"w"}).second, words.substr(2) + "[ { a | <b> | <c> } ] ");
    EXPECT_EQ(printed({words + "[ a [ b [ c ] ] ]"}).second, words + "[a [b]] ");
}

} // namespace
