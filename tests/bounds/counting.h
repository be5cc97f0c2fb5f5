/// Counts what an operation costs: steps of the library's code and bytes from the heap.
///
/// The program is compiled with -fsanitize-coverage=trace-pc: each basic block calls a function, which counts. So the
/// figures depend on the compiler and its options, but not on the machine, its load or the time.
///
/// Threads  the counters are those of the calling thread.
#ifndef CORVANE_TESTS_BOUNDS_COUNTING_H
#define CORVANE_TESTS_BOUNDS_COUNTING_H

#include <cstdint>

namespace Corvane::Testing {

struct Cost
{
    std::uint64_t steps; // basic blocks that ran
    std::uint64_t bytes; // taken with operator new, given back or not
};

/// Returns  what this thread has used since it began.
Cost usedSoFar();

/// Returns  what `operation` uses.
template <typename Operation>
Cost costOf(const Operation& operation)
{
    const Cost before = usedSoFar();
    operation();
    const Cost after = usedSoFar();
    return {after.steps - before.steps, after.bytes - before.bytes};
}

} // namespace Corvane::Testing

#endif
