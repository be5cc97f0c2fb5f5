/// How long a program may take to end where nothing holds it up: the one that doesn't is killed by its alarm.
#ifndef CORVANE_TESTS_SUPPORT_TIMETOEND_H
#define CORVANE_TESTS_SUPPORT_TIMETOEND_H

#include "tests/support/emulation.h"

namespace Corvane::Testing {

/// Returns  seconds: less than the five for which an end waits for what has stalled, loaded as the machine may be. With
///          a sanitizer or under an emulator the end alone may take longer than that.
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
