/// Makes allocations of this thread fail. It replaces the global operator new of the program.
#ifndef CORVANE_TESTS_SUPPORT_FAILINGALLOCATION_H
#define CORVANE_TESTS_SUPPORT_FAILINGALLOCATION_H

#include <cstdlib>
#include <new>

#include <gtest/gtest.h>

namespace Corvane::Testing {

/// Which allocations fail.
enum class Failing
{
    Once,      ///< one
    FromThenOn ///< it and all after it
};

/// Fails the allocation of this thread that follows the next `count` ones. Lives for one attempt. The handler of
/// missing memory (std::set_new_handler()) is called once for each failure.
class FailingAllocation
{
public:
    explicit FailingAllocation(int count, Failing failing = Failing::Once);
    ~FailingAllocation();
    FailingAllocation(const FailingAllocation&) = delete;
    FailingAllocation& operator=(const FailingAllocation&) = delete;

    /// Returns  true if the failure has happened.
    bool hasFailed() const;
};

/// Lets allocations succeed while it lives, and doesn't count them: for what a test itself does in an attempt.
class MemoryForTest
{
public:
    MemoryForTest();
    ~MemoryForTest();
    MemoryForTest(const MemoryForTest&) = delete;
    MemoryForTest& operator=(const MemoryForTest&) = delete;

private:
    [[maybe_unused]] const bool m_wasFailing; // by the stand-in of tests/bounds, where no allocation fails
};

/// Makes one attempt at `operation`.
///
/// Returns  true if an allocation failed. std::bad_alloc must then have reached this caller.
template <typename Operation>
bool failAllocation(int count, Failing which, const Operation& operation)
{
    bool failed = false;
    bool thrown = false;
    {
        const FailingAllocation failing(count, which);
        try {
            operation();
        } catch (const std::bad_alloc&) {
            thrown = true;
        }
        failed = failing.hasFailed();
    }
    EXPECT_EQ(failed, thrown) << "allocation " << count << (which == Failing::Once ? "" : " and all after it");
    return failed;
}

/// Tries `operation` with its first allocation and all after it failing, then with the first alone, then the same with
/// its second, and so on until none fails.
///
/// `check` runs after each failed attempt. Returns how many allocations the operation makes.
template <typename Operation, typename Check>
int failEachAllocation(const Operation& operation, const Check& check)
{
    for (int count = 0;; ++count) {
        for (const Failing failing : {Failing::FromThenOn, Failing::Once}) {
            if (!failAllocation(count, failing, operation)) {
                return count;
            }
            check();
        }
    }
}

/// Calls exit(3) in the handler of missing memory, inside the last allocation of `operation`. For EXPECT_EXIT.
template <typename Operation>
[[noreturn]] void exitInsideLastAllocation(int allocations, const Operation& operation)
{
    std::set_new_handler([] { std::exit(3); });
    const FailingAllocation failing(allocations - 1);
    operation();
    std::abort();
}

template <typename Operation>
int failEachAllocation(const Operation& operation)
{
    return failEachAllocation(operation, [] {});
}

} // namespace Corvane::Testing

#endif
