/// Random command tables and lines.
#ifndef CORVANE_TESTS_COMMAND_RANDOMTABLES_H
#define CORVANE_TESTS_COMMAND_RANDOMTABLES_H

#include <cstddef>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

namespace Corvane::CmdTableHelper::Testing {

/// Some of the tables are faulty. Short words from a small set make them share much.
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

/// Returns  the seed that the environment gives, for a repetition, or else one of chance.
inline unsigned int testSeed()
{
    const char* given = std::getenv("CORVANE_TEST_SEED");
    return given != nullptr ? static_cast<unsigned int>(std::strtoul(given, nullptr, 10)) : std::random_device()();
}

} // namespace Corvane::CmdTableHelper::Testing

#endif
