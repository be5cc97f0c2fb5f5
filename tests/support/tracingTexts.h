/// Turns on the events that the library emits, without a receiver: their texts are made and dropped.
///
///     const TracingTexts tracing;
///
/// For programs that link corvane_internal_testing, which registers no provider with a tracing daemon.
///
/// Threads  no other thread emits while it is made or destroyed.
#ifndef CORVANE_TESTS_SUPPORT_TRACINGTEXTS_H
#define CORVANE_TESTS_SUPPORT_TRACINGTEXTS_H

#include "tests/support/tracepointObjects.h"

namespace Corvane::Testing {

class TracingTexts
{
public:
    TracingTexts() { turn(1); }
    ~TracingTexts() { turn(0); }
    TracingTexts(const TracingTexts&) = delete;
    TracingTexts& operator=(const TracingTexts&) = delete;

private:
    static void turn(int state)
    {
        CORVANE_TRACEPOINT_OBJECT(TRACE1).state = state;
        CORVANE_TRACEPOINT_OBJECT(TRACE2).state = state;
        CORVANE_TRACEPOINT_OBJECT(INFO).state = state;
        CORVANE_TRACEPOINT_OBJECT(ERROR).state = state;
    }
};

} // namespace Corvane::Testing

#endif
