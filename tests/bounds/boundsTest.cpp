/// The cost of each operation grows with its input by the law in docs/testing.md, and by no other law.
///
/// The tests print the rows of that page's table: bounds_test | grep '^|'
#include <algorithm>
#include <array>
#include <cmath>
#include <iostream>

#include <gtest/gtest.h>

#include "tests/bounds/family.h"

namespace Corvane::Testing {

std::ostream& operator<<(std::ostream& out, Law law)
{
    constexpr std::array<const char*, 6> names = {"1", "n", "n log n", "n²", "n³", "worse than n³"};
    return out << names.at(static_cast<std::size_t>(law));
}

/// What a failed test says of its family.
static void PrintTo(const Family& family, std::ostream* out)
{
    *out << family.operation;
}

namespace {

/// Inputs have fixed parts, and hash tables, vectors and strings grow in steps.
constexpr double tolerance = 1.15;

constexpr std::size_t timesAsLarge = 4;

using Sizes = std::array<std::size_t, 3>;
using Figures = std::array<std::uint64_t, 3>;

double valueOf(Law law, std::size_t size)
{
    const auto n = static_cast<double>(size);
    switch (law) {
    case Law::constant:
        return 1;
    case Law::linear:
        return n;
    case Law::linearithmic:
        return n * std::log2(n);
    case Law::quadratic:
        return n * n;
    default:
        return n * n * n;
    }
}

bool allows(Law law, const Sizes& sizes, const Figures& figures)
{
    for (std::size_t i = 1; i < sizes.size(); ++i) {
        const double allowed = valueOf(law, sizes[i]) / valueOf(law, sizes[i - 1]) * tolerance;
        if (static_cast<double>(figures[i]) > static_cast<double>(figures[i - 1]) * allowed) {
            return false;
        }
    }
    return true;
}

/// Returns  the best law by which the figures grow.
Law lawOf(const Sizes& sizes, const Figures& figures)
{
    for (const Law law : {Law::constant, Law::linear, Law::linearithmic, Law::quadratic, Law::cubic}) {
        if (allows(law, sizes, figures)) {
            return law;
        }
    }
    return Law::worse;
}

/// Checks that the figures grow by the law. A logarithm may stay hidden behind the fixed part of an input.
void expectLaw(Law law, const Sizes& sizes, const Figures& figures, const char* what)
{
    const Law found = lawOf(sizes, figures);
    const bool isHidden = law == Law::linearithmic && found == Law::linear;
    EXPECT_TRUE(found == law || isHidden)
        << what << " grow as " << found << ", which is " << (found > law ? "worse" : "better") << " than " << law
        << ": " << figures[0] << ", " << figures[1] << ", " << figures[2] << " for n = " << sizes[0] << ", " << sizes[1]
        << ", " << sizes[2];
}

/// A bar in a table's cell has a backslash.
std::string asCell(std::string text)
{
    for (std::size_t bar = text.find('|'); bar != std::string::npos; bar = text.find('|', bar + 2)) {
        text.insert(bar, 1, '\\');
    }
    return text;
}

void printRow(const Family& family, const Sizes& sizes, const Figures& steps, const Figures& bytes)
{
    std::cout << "| " << family.name << " | " << asCell(family.operation) << " | " << sizes[0] << ", " << sizes[1]
              << ", " << sizes[2] << " | " << family.steps << " | " << steps[0] << ", " << steps[1] << ", " << steps[2]
              << " | " << family.bytes << " | " << bytes[0] << ", " << bytes[1] << ", " << bytes[2] << " |\n";
}

std::vector<Family> allFamilies()
{
    std::vector<Family> all;
    for (const auto& families : {synopsisFamilies(), lineFamilies(), fileFamilies(), entryFamilies()}) {
        all.insert(all.end(), families.begin(), families.end());
    }
    return all;
}

class BoundsTest : public ::testing::TestWithParam<Family>
{
};

TEST_P(BoundsTest, GrowsByItsLaw)
{
    const Family& family = GetParam();
    const Sizes sizes = {family.size, family.size * timesAsLarge, family.size * timesAsLarge * timesAsLarge};
    Figures steps{};
    Figures bytes{};
    for (std::size_t i = 0; i < sizes.size(); ++i) {
        const Cost cost = family.measure(sizes[i]);
        steps[i] = cost.steps;
        bytes[i] = cost.bytes;
    }
    printRow(family, sizes, steps, bytes);
    expectLaw(family.steps, sizes, steps, "steps");
    expectLaw(family.bytes, sizes, bytes, "bytes");
}

std::string nameOf(const ::testing::TestParamInfo<Family>& info)
{
    std::string name = info.param.name;
    std::replace(name.begin(), name.end(), ' ', '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(Family, BoundsTest, ::testing::ValuesIn(allFamilies()), nameOf);

TEST(LawTest, IsTheBestThatAllowsTheGrowth)
{
    const Sizes sizes = {100, 400, 1600};
    EXPECT_EQ(lawOf(sizes, {70, 71, 80}), Law::constant);
    EXPECT_EQ(lawOf(sizes, {70, 70, 81}), Law::linear);
    EXPECT_EQ(lawOf(sizes, {1010, 4010, 16010}), Law::linear);
    EXPECT_EQ(lawOf(sizes, {700, 3500, 17000}), Law::linearithmic);
    EXPECT_EQ(lawOf(sizes, {1000, 10000, 40000}), Law::quadratic);
    EXPECT_EQ(lawOf(sizes, {1000, 64000, 4096000}), Law::cubic);
    EXPECT_EQ(lawOf(sizes, {1, 256, 65536}), Law::worse);
}

TEST(LawTest, NoticesASlowLoopBesideAFasterOne)
{
    Figures steps{};
    const Sizes sizes = {1000, 4000, 16000};
    for (std::size_t i = 0; i < sizes.size(); ++i) {
        std::vector<std::size_t> numbers;
        steps[i] = costOf([&] {
                       for (std::size_t n = 0; n < sizes[i]; ++n) {
                           numbers.push_back(n);
                       }
                   }).steps;
    }
    EXPECT_EQ(lawOf(sizes, steps), Law::linear);
    for (std::size_t i = 0; i < sizes.size(); ++i) {
        std::vector<std::size_t> numbers;
        steps[i] = costOf([&] {
                       for (std::size_t n = 0; n < sizes[i]; ++n) {
                           if (std::find(numbers.begin(), numbers.end(), n) == numbers.end()) {
                               numbers.push_back(n);
                           }
                       }
                   }).steps;
    }
    EXPECT_EQ(lawOf(sizes, steps), Law::quadratic);
}

} // namespace

} // namespace Corvane::Testing
