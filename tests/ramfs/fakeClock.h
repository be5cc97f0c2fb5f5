/// A clock and a calendar that replace those of the C library in a test program that links this.
///
/// Threads  one thread at a time.
#ifndef CORVANE_TESTS_RAMFS_FAKECLOCK_H
#define CORVANE_TESTS_RAMFS_FAKECLOCK_H

#include <ctime>
#include <string>

namespace Corvane::Testing {

/// Makes time() give `now` from now on.
void setClock(std::time_t now);

/// Makes strftime() give `text`, if there is room for it. An empty `text` restores its normal work.
void setDate(const std::string& text);

} // namespace Corvane::Testing

#endif
