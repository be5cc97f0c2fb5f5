/// The clock and the calendar of a test program that links this: they take the place of the C library's.
///
/// Threads  one thread at a time.
#ifndef CORVANE_TESTS_RAMFS_FAKECLOCK_H
#define CORVANE_TESTS_RAMFS_FAKECLOCK_H

#include <ctime>
#include <string>

namespace Corvane::Testing {

/// Makes time() give `now` from now on.
void setClock(std::time_t now);

/// Makes strftime() give `text`, if there is room for it; an empty one makes it work as ever again.
void setDate(const std::string& text);

} // namespace Corvane::Testing

#endif
