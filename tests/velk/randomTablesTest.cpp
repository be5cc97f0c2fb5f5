/// Compares the library of synopses with the command service's own graph and its trace, on random tables.
#include <iostream>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <synopses/table.h>
#include <testing/eventRecorder.h>

#include "tests/command/graphSupport.h"
#include "tests/command/randomTables.h"

namespace {

using namespace Corvane;
using namespace Corvane::CmdTableHelper;
using namespace Corvane::CmdTableHelper::Testing;
using Corvane::Testing::EventName;
using Corvane::Testing::EventRecorder;
using Synopses::Finding;
using Synopses::Rule;
using Synopses::Synopsis;

/// What the library shows of the tables that it registers.
struct Seen
{
    std::set<std::size_t> unbalanced;                         // synopses that it reports
    std::set<std::pair<std::size_t, std::size_t>> sharedEnds; // synopses, each with an earlier one
    std::set<std::size_t> atRoot;                             // synopses that end at the root
};

void collect(const NodePtr& node, std::map<NodePtr, int>& handlers)
{
    if (handlers.emplace(node, resultOf(node->handler)).second) {
        for (const NodePtr& subnode : node->subnodes) {
            collect(subnode, handlers);
        }
    }
}

/// Registers the synopses one by one and looks at all handlers after each.
Seen registerAll(SyntaxGraph& graph, const std::vector<Synopsis>& synopses, EventRecorder& recorder)
{
    Seen seen;
    recorder.take();
    std::map<NodePtr, int> before;
    for (std::size_t i = 0; i < synopses.size(); ++i) {
        const bool isLast = i + 1 == synopses.size() || synopses[i + 1].command != synopses[i].command;
        const SyntaxGraph::Synopses one{{synopses[i].text, returning(static_cast<int>(i))}};
        {
            const ExclusiveLock lock(graph.mutex);
            graph.addSynopsis(one.front().first, one.front().second);
            if (isLast) {
                graph.registerCommandName(synopses[i].command);
            }
        }
        if (!recorder.take().empty()) {
            seen.unbalanced.insert(i);
        }
        std::map<NodePtr, int> after;
        collect(rootOf(graph), after);
        for (const auto& [node, handler] : after) {
            const auto earlier = before.find(node);
            if (handler != static_cast<int>(i)) {
                continue;
            }
            if (node == rootOf(graph)) {
                seen.atRoot.insert(i);
            }
            if (earlier != before.end() && earlier->second >= 0) {
                seen.sharedEnds.emplace(i, static_cast<std::size_t>(earlier->second));
            }
        }
        before = std::move(after);
    }
    return seen;
}

Seen seenBy(const std::vector<Finding>& findings)
{
    Seen seen;
    for (const Finding& finding : findings) {
        if (finding.rule == Rule::unbalancedBrackets) {
            seen.unbalanced.insert(finding.synopsis);
        } else if (finding.rule == Rule::sharedEnd) {
            seen.sharedEnds.emplace(finding.synopsis, finding.other.value());
        } else if (finding.rule == Rule::catchesEveryLine) {
            seen.atRoot.insert(finding.synopsis);
        }
    }
    return seen;
}

class VelkOnRandomTables : public ::testing::Test
{
protected:
    /// Calls `check` with each of 1,000 tables.
    template <typename Check>
    void forEachTable(const Check& check)
    {
        const unsigned int seed = testSeed();
        std::cout << "CORVANE_TEST_SEED=" << seed << "\n";
        RandomTables random(seed);
        for (int round = 0; round < 1000 && !HasFatalFailure(); ++round) {
            std::vector<Synopsis> synopses;
            std::string text;
            for (int i = random.below(8); i >= 0; --i) {
                std::string name = random.commandName();
                synopses.push_back({random.synopsis(), name.empty() ? "x" : name});
                text += "\n  " + synopses.back().command + ": " + synopses.back().text;
            }
            SCOPED_TRACE(text);
            check(synopses, random);
        }
    }
};

TEST_F(VelkOnRandomTables, AgreesWithTheLibraryAboutBalanceAndSharedEnds)
{
    EventRecorder recorder({EventName::Error});
    std::size_t unbalanced = 0;
    std::size_t shared = 0;
    forEachTable([&](const std::vector<Synopsis>& synopses, RandomTables& /*random*/) {
        SyntaxGraph graph;
        const Seen expected = registerAll(graph, synopses, recorder);
        const Seen found = seenBy(Synopses::check(synopses));
        ASSERT_EQ(found.unbalanced, expected.unbalanced);
        ASSERT_EQ(found.sharedEnds, expected.sharedEnds);
        ASSERT_EQ(found.atRoot, expected.atRoot);
        unbalanced += expected.unbalanced.size();
        shared += expected.sharedEnds.size();
    });
    EXPECT_GT(unbalanced, 100U);
    EXPECT_GT(shared, 20U);
}

TEST_F(VelkOnRandomTables, ListsOnlyLinesThatRun)
{
    EventRecorder recorder({EventName::Error});
    std::size_t run = 0;
    forEachTable([&](const std::vector<Synopsis>& synopses, RandomTables& /*random*/) {
        SyntaxGraph graph;
        registerAll(graph, synopses, recorder);
        std::size_t length = 0;
        for (const std::vector<std::string>& line : Synopses::Table(synopses).lines(30)) {
            ASSERT_NE(dispatch(graph, line).result, -1) << ::testing::PrintToString(line);
            ASSERT_GE(line.size(), length) << "a longer line came first";
            length = line.size();
            ++run;
        }
    });
    EXPECT_GT(run, 3000U);
}

TEST_F(VelkOnRandomTables, MatchesLinesAsTheLibraryDoesAndPrintsItsUsage)
{
    EventRecorder recorder({EventName::Error});
    forEachTable([&](const std::vector<Synopsis>& synopses, RandomTables& random) {
        SyntaxGraph graph;
        registerAll(graph, synopses, recorder);
        const Synopses::Table table(synopses);
        for (int i = 0; i < 10; ++i) {
            const std::vector<std::string> line = random.line();
            const Synopses::Match match = table.match(line);
            const Dispatched expected = dispatch(graph, line);
            ASSERT_EQ(match.synopsis ? static_cast<int>(*match.synopsis) : -1, expected.result)
                << ::testing::PrintToString(line);
            if (match.synopsis) {
                ASSERT_EQ(match.words.size(), line.size());
            } else {
                const bool isPelm = line.front() == "pelm";
                ASSERT_EQ(table.usage(line, isPelm ? Synopses::Format::pelm : Synopses::Format::velk), expected.text);
            }
        }
    });
}

/// No line shows that a placeholder is chosen which the check calls never chosen.
TEST_F(VelkOnRandomTables, NeverChoosesAPlaceholderThatItCallsNeverChosen)
{
    std::size_t never = 0;
    forEachTable([&](std::vector<Synopsis> synopses, RandomTables& random) {
        synopses.push_back({"x { <p> | <q> | <r> " + random.synopsis() + " }", "x"});
        synopses.push_back({"x { <q> on | <r> [ off ] }", "x"});
        const Synopses::Table table(synopses);
        std::set<std::pair<std::size_t, std::string>> neverChosen;
        for (const Finding& finding : table.check()) {
            if (finding.rule == Rule::neverChosen) {
                neverChosen.emplace(finding.synopsis,
                                    synopses[finding.synopsis].text.substr(finding.column, finding.length));
            }
        }
        never += neverChosen.size();
        for (const std::vector<std::string>& line : table.lines(200, 6)) {
            const Synopses::Match match = table.match(line);
            for (std::size_t i = 1; i < match.words.size() && i < 2; ++i) {
                const bool isOfX = line.front() == "x" && match.words[1].role == Synopses::Role::placeholder;
                if (isOfX && match.synopsis && (match.words[1].name == "<q>" || match.words[1].name == "<r>")) {
                    ASSERT_EQ(neverChosen.count({*match.synopsis, match.words[1].name}), 0U)
                        << ::testing::PrintToString(line);
                }
            }
        }
    });
    EXPECT_GT(never, 0U);
}

} // namespace
