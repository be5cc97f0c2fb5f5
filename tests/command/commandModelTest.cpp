/// The library against the plain model, on random tables and lines.
#include "tests/command/commandModel.h"

#include <iostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/command/graphSupport.h"
#include "tests/command/randomTables.h"

namespace {

using namespace Corvane::CmdTableHelper;
using namespace Corvane::CmdTableHelper::Testing;

TEST(CommandModel, AgreesWithTheLibraryOnRandomTables)
{
    const unsigned int start = testSeed();
    std::cout << "CORVANE_TEST_SEED=" << start << "\n";
    RandomTables random(start);
    int compared = 0;
    int cyclic = 0;
    for (int round = 0; round < 4000; ++round) {
        SyntaxGraph graph;
        CommandModel model;
        std::string tables;
        for (int command = random.below(3); command >= 0; --command) {
            const std::string name = random.commandName();
            std::vector<std::string> synopses;
            SyntaxGraph::Synopses pairs;
            for (int i = random.below(4); i > 0; --i) {
                synopses.push_back(random.synopsis());
                pairs.emplace_back(synopses.back(), returning(command * 10 + static_cast<int>(synopses.size())));
                tables += "\n  " + name + ": " + synopses.back();
            }
            graph.addCommand(name, pairs);
            model.addCommand(name, synopses, command * 10 + 1);
        }
        for (int i = 0; i < 10; ++i) {
            const std::vector<std::string> words = random.line();
            const Dispatched answer = dispatch(graph, words);
            try {
                const CommandModel::Answer expected = model.dispatch(words);
                ++compared;
                ASSERT_EQ(answer, (Dispatched{expected.handler.value_or(-1), expected.text}))
                    << ::testing::PrintToString(words) << " with" << tables;
            } catch (const ComesBack& end) {
                ++cyclic;
                ASSERT_EQ(answer, (Dispatched{-1, end.text})) << ::testing::PrintToString(words) << " with" << tables;
            }
        }
    }
    EXPECT_GT(compared, 30000);
    EXPECT_GT(cyclic, 0) << "no cyclic table among them";
}

} // namespace
