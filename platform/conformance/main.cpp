// SPDX-License-Identifier: MIT
/// Runs the conformance suite: what the platform contract promises, tried on the libraries that the loader finds.
///
/// LD_LIBRARY_PATH=FOLDER names others than those it was built with: libzel.so.1, libpindle.so.0 or both. A test that
/// can't pass because these chose differently is about what its contract's header marks "Stand-in". On a unit, from
/// here:
///
///     g++ -std=c++17 -I../include *.cpp -LFOLDER -l:libzel.so.1 -l:libpindle.so.0 -lgmock -lgtest -pthread
#include <gtest/gtest.h>

#include "suite.h"

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    if (GTEST_FLAG_GET(filter) != "*" || GTEST_FLAG_GET(list_tests)) {
        return RUN_ALL_TESTS();
    }
    int result = 0;
    const auto& all = *testing::UnitTest::GetInstance();
    for (int suite = 0; suite < all.total_test_suite_count(); ++suite) {
        const testing::TestSuite& tests = *all.GetTestSuite(suite);
        for (int test = 0; test < tests.total_test_count(); ++test) {
            Conformance::Peer alone([&](const Conformance::Peer&) {
                GTEST_FLAG_SET(filter, std::string(tests.name()) + "." + tests.GetTestInfo(test)->name());
                std::exit(RUN_ALL_TESTS());
            });
            result = alone.finish() == 0 ? result : 1;
        }
    }
    return result;
}
