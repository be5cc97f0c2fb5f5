/// The clock and the calendar of a test program that links this: they take the place of the C library's.
///
/// Threads  one thread at a time.
#ifndef CORVANE_TESTS_RAMFS_FAKECLOCK_H
#define CORVANE_TESTS_RAMFS_FAKECLOCK_H

#include <ctime>

namespace Corvane::Testing {

/// Makes time() give `now` from now on.
void setClock(std::time_t now);

/// Makes strftime() find no room for its text, or work again.
void refuseDates(bool refuse);

} // namespace Corvane::Testing

#endif
