/// The library against the plain model, on random operations.
///
/// CORVANE_TEST_SEED repeats a run; CORVANE_TEST_OPERATIONS makes it longer.
#include <cstdlib>
#include <iostream>
#include <random>

#include <gtest/gtest.h>

#include "tests/ramfs/fileComparison.h"

namespace Corvane::RamFs::V1 {
namespace {

unsigned int numberFrom(const char* variable, unsigned int otherwise)
{
    const char* const given = std::getenv(variable);
    return given != nullptr ? static_cast<unsigned int>(std::strtoul(given, nullptr, 10)) : otherwise;
}

TEST(FileModel, AgreesWithTheLibraryOnRandomOperations)
{
    const unsigned int seed = numberFrom("CORVANE_TEST_SEED", std::random_device()());
    const unsigned int operations = numberFrom("CORVANE_TEST_OPERATIONS", 100'000);
    std::cout << "CORVANE_TEST_SEED=" << seed << " CORVANE_TEST_OPERATIONS=" << operations << "\n";
    std::mt19937 random{seed};
    Testing::EventRecorder recorder;
    FileComparison comparison(
        [&](unsigned int end) { return std::uniform_int_distribution<unsigned int>(0, end - 1)(random); }, recorder);
    for (unsigned int operation = 0; operation < operations; ++operation) {
        ASSERT_EQ(comparison.operate(), "") << "operation " << operation;
    }
    if (operations >= 100'000) {
        const auto& met = comparison.met;
        for (const int count : {met.created, met.taken, met.opened, met.tookOut, met.sharedNumber, met.replaced,
                                met.removedSeveral, met.removedToCout, met.cut, met.streamed}) {
            EXPECT_GT(count, 20);
        }
    }
}

} // namespace
} // namespace Corvane::RamFs::V1
