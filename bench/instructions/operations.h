/// The operations whose instructions tools/instructions counts.
///
/// Each service has a file here, which defines its function below:
///
///     void countCommand()
///     {
///         count("executeCmd", [] { executeCmd({"show"}); });
///     }
///
/// The program runs the function once in a process with all events off, and once in another process with all events
/// on, where a probe takes each event and does nothing with it.
#ifndef CORVANE_BENCH_INSTRUCTIONS_OPERATIONS_H
#define CORVANE_BENCH_INSTRUCTIONS_OPERATIONS_H

#include <functional>

namespace Corvane::Bench {

void countCommand();
void countRamfs();
void countElog();

/// Counts the instructions of the current thread in `times` calls of `operation`, after ten calls that aren't counted.
/// The result is the mean of a call. The name is of letters, digits and '-', and unique in its service. The operation
/// must do the same each time: a content that grows, for example, makes the figure depend on `times`.
void count(const char* name, const std::function<void()>& operation, int times = 200);

} // namespace Corvane::Bench

#endif
