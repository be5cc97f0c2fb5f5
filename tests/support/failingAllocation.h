/// Makes an allocation of this thread fail. It replaces the global operator new of the program.
#ifndef CORVANE_TESTS_SUPPORT_FAILINGALLOCATION_H
#define CORVANE_TESTS_SUPPORT_FAILINGALLOCATION_H

#include <new>

#include <gtest/gtest.h>

namespace Corvane::Testing {

/// Fails the allocation of this thread that follows the next `count` ones. Lives for one attempt.
class FailingAllocation
{
public:
    explicit FailingAllocation(int count);
    ~FailingAllocation();
    FailingAllocation(const FailingAllocation&) = delete;
    FailingAllocation& operator=(const FailingAllocation&) = delete;

    /// Returns  true if the failure has happened.
    bool hasFailed() const;
};

/// Tries `operation` with its first allocation failing, then its second, and so on until none fails.
///
/// `check` runs after each failed attempt. Returns the number of failed attempts.
template <typename Operation, typename Check>
int failEachAllocation(const Operation& operation, const Check& check)
{
    for (int count = 0;; ++count) {
        bool failed = false;
        bool thrown = false;
        {
            const FailingAllocation failing(count);
            try {
                operation();
            } catch (const std::bad_alloc&) {
                thrown = true;
            }
            failed = failing.hasFailed();
        }
        EXPECT_EQ(failed, thrown) << "allocation " << count;
        if (!failed) {
            return count;
        }
        check();
    }
}

template <typename Operation>
int failEachAllocation(const Operation& operation)
{
    return failEachAllocation(operation, [] {});
}

} // namespace Corvane::Testing

#endif
