/// Runs the conformance suite: what the platform contract promises, tried on the libraries that the loader finds.
///
/// To test other libraries than those it was built with, name their folder:
///
///     LD_LIBRARY_PATH=FOLDER platform_conformance
///
/// FOLDER holds libzel.so.1 or libpindle.so.0 or both; `ldd` with the same variable shows what is tried. A test that
/// can't pass because the other library chose differently is about what its contract's header marks "Stand-in".
#include <gtest/gtest.h>

#include "suite.h"

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    const auto& suites = *testing::UnitTest::GetInstance();
    if (GTEST_FLAG_GET(filter) != "*" || GTEST_FLAG_GET(list_tests)) {
        return RUN_ALL_TESTS();
    }
    int result = 0;
    for (int suite = 0; suite < suites.total_test_suite_count(); ++suite) {
        const testing::TestSuite& tests = *suites.GetTestSuite(suite);
        for (int test = 0; test < tests.total_test_count(); ++test) {
            Conformance::Peer alone([&](const Conformance::Peer&) {
                GTEST_FLAG_SET(filter, std::string(tests.name()) + "." + tests.GetTestInfo(test)->name());
                std::exit(RUN_ALL_TESTS());
            });
            result |= alone.finish();
        }
    }
    return result == 0 ? 0 : 1;
}
