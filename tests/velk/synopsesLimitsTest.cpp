/// Large, deep and cyclic tables.
#include <chrono>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <synopses/table.h>

namespace {

using namespace Corvane::Synopses;

/// Also with a sanitizer, under emulation or on a busy machine. Without limits, what is tested here takes days.
constexpr auto longest = std::chrono::seconds(120);

class Stopwatch
{
public:
    ~Stopwatch() { EXPECT_LT(std::chrono::steady_clock::now() - m_start, longest); }

private:
    const std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

std::string repeated(const std::string& before, std::size_t times, const std::string& after)
{
    std::string text;
    for (std::size_t i = 0; i < times; ++i) {
        text += before + std::to_string(i) + after;
    }
    return text;
}

TEST(SynopsesLimits, RefusesALongSynopsis)
{
    EXPECT_NO_THROW(Table({{"x " + repeated("w", 999, " ")}}));
    EXPECT_THROW(Table({{"x " + repeated("w", 1000, " ")}}), TooLarge);
}

TEST(SynopsesLimits, RefusesAGraphWithTooManyConnections)
{
    const Stopwatch stopwatch;
    std::vector<Synopsis> synopses;
    for (int i = 0; i < 60; ++i) { // each has 300 words after each of which all later ones may come
        synopses.push_back({"x" + std::to_string(i) + repeated(" [w", 300, "]")});
    }
    EXPECT_THROW(Table{synopses}, TooLarge);
}

TEST(SynopsesLimits, ChecksManySynopses)
{
    const Stopwatch stopwatch;
    std::vector<Synopsis> synopses;
    for (int i = 0; i < 3000; ++i) {
        synopses.push_back({"show thing" + std::to_string(i) + " [-l] <name> { on | off }"});
    }
    const Table table(synopses);
    EXPECT_TRUE(table.check().empty());
    EXPECT_EQ(table.lines(10000, 4).size(), 6000U);
}

TEST(SynopsesLimits, ListsTheFirstOfMoreLinesThanAnybodyCouldRead)
{
    const Stopwatch stopwatch;
    const Table table({{"x" + repeated(" { a | b } c", 40, "")}}); // 2^40 lines of one length
    EXPECT_EQ(table.lines(100, 100).size(), 100U);
}

TEST(SynopsesLimits, ListsLinesOfACyclicGraph)
{
    const Table table({{"x [a b] a"}});
    const auto lines = table.lines(3);
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines.back(), (std::vector<std::string>{"x", "a", "b", "a", "b", "a"}));
}

TEST(SynopsesLimits, ComparesPlaceholdersOnlyAsLongAsItPays)
{
    const Stopwatch stopwatch;
    std::vector<Synopsis> synopses;
    for (int i = 0; i < 400; ++i) {
        const std::string name = "<p" + std::to_string(i);
        synopses.push_back({"x " + name + "> [a] { b | c } [d] " + name + "> e" + std::to_string(i)});
    }
    EXPECT_TRUE(Table(synopses).check().empty());
}

TEST(SynopsesLimits, ReportsManyCycles)
{
    const Stopwatch stopwatch;
    std::string synopsis = "x";
    for (int i = 0; i < 190; ++i) {
        const std::string word = "w" + std::to_string(i);
        synopsis += " [" + word + " v] " + word; // "v" leads back to the word
    }
    EXPECT_EQ(check({{synopsis}}).size(), 190U);
}

TEST(SynopsesLimits, ReadsDeepGroups)
{
    EXPECT_NO_THROW(Table({{"x " + std::string(400, '[') + " y " + std::string(400, ']')}}).check());
}

} // namespace
