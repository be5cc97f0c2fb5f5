/// Counts, in a program of its own, what a trace text costs: memory from the heap, and shortened paths.
///
/// Threads  the counters are those of the calling thread.
#ifndef CORVANE_TESTS_TRACE_COUNTEDCOSTS_H
#define CORVANE_TESTS_TRACE_COUNTEDCOSTS_H

#include <cstddef>
#include <functional>

namespace Corvane::Testing {

/// Returns  how many bytes this thread has taken from the heap with operator new.
std::size_t allocatedBytes();

/// Returns  how often this thread has called tpx_short_fname(), which here returns the path as it is.
unsigned int shortenedPaths();

/// Has `action` run when this thread calls tpx_short_fname() next, that is, in the middle of an emission.
void runAtNextEmission(std::function<void()> action);

} // namespace Corvane::Testing

#endif
