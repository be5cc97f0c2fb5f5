/// How long a program may take to end if nothing holds it up. Its alarm kills one that takes longer.
#ifndef CORVANE_TESTS_SUPPORT_TIMETOEND_H
#define CORVANE_TESTS_SUPPORT_TIMETOEND_H

#include "tests/support/emulation.h"

namespace Corvane::Testing {

/// Returns  seconds: less than the five for which the end of a process waits for a stalled engine. It is more with a
///          sanitizer or under an emulator, where ending alone may take that long.
inline unsigned int timeToEnd()
{
#ifdef CORVANE_TEST_SANITIZED
    return 60;
#else
    return isEmulated() ? 60 : 4;
#endif
}

} // namespace Corvane::Testing

#endif
