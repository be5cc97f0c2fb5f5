/// Makes an allocation of this thread fail. A program that links it has its global operator new replaced.
#ifndef CORVANE_TESTS_RAMFS_FAILINGALLOCATION_H
#define CORVANE_TESTS_RAMFS_FAILINGALLOCATION_H

namespace Corvane::Testing {

/// Lets `count` allocations of this thread through and fails the next one. Lives for one attempt.
class FailingAllocation
{
public:
    explicit FailingAllocation(int count);
    ~FailingAllocation();
    FailingAllocation(const FailingAllocation&) = delete;
    FailingAllocation& operator=(const FailingAllocation&) = delete;

    /// Returns  whether the failure has happened.
    bool hasFailed() const;
};

} // namespace Corvane::Testing

#endif
