/// The library against the plain model, on random tables and lines.
#include "tests/command/commandModel.h"

#include <cstdlib>
#include <iostream>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/command/graphSupport.h"

namespace {

using namespace Corvane::CmdTableHelper;
using namespace Corvane::CmdTableHelper::Testing;

class RandomTables
{
public:
    explicit RandomTables(unsigned int seed) : m_random(seed) {}

    int below(int end) { return std::uniform_int_distribution<int>(0, end - 1)(m_random); }

    std::string commandName()
    {
        static const std::vector<std::string> names = {"a", "b", "pelm", "run", ""};
        return names[static_cast<std::size_t>(below(5))];
    }

    std::string synopsis()
    {
        std::string text = below(4) != 0 ? commandName() + " " : "";
        sequence(text, 3);
        if (below(8) == 0) { // spoil it
            const std::string noise = "[]{}|<> ";
            text.insert(static_cast<std::size_t>(below(static_cast<int>(text.size()) + 1)), 1,
                        noise[static_cast<std::size_t>(below(8))]);
        }
        return text;
    }

    std::vector<std::string> line()
    {
        std::vector<std::string> words{commandName()};
        for (int i = below(6); i > 0; --i) {
            words.push_back(word());
        }
        return words;
    }

private:
    std::string word()
    {
        static const std::vector<std::string> words = {"a", "b", "c", "-l", "<x>", "<y>", "...", "<z z>"};
        return words[static_cast<std::size_t>(below(8))];
    }

    void sequence(std::string& text, int depth)
    {
        for (int i = below(4); i >= 0; --i) {
            const int kind = depth == 0 ? 0 : below(5);
            if (kind < 3) {
                text += word() + " ";
                continue;
            }
            text += kind == 3 ? "[" : "{ ";
            sequence(text, depth - 1);
            while (below(3) == 0) {
                text += "|";
                if (below(4) != 0) {
                    sequence(text, depth - 1);
                }
            }
            text += kind == 3 ? "]" : "} ";
        }
    }

    std::mt19937 m_random;
};

unsigned int seed()
{
    const char* given = std::getenv("CORVANE_TEST_SEED");
    return given != nullptr ? static_cast<unsigned int>(std::strtoul(given, nullptr, 10)) : std::random_device()();
}

TEST(CommandModel, AgreesWithTheLibraryOnRandomTables)
{
    const unsigned int start = seed();
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
