/// Takes the place of trace/emit.h in a library without tracing, which shows what the events cost while they are off.
#ifndef CORVANE_BENCH_UNTRACED_TRACE_EMIT_H
#define CORVANE_BENCH_UNTRACED_TRACE_EMIT_H

#include <sstream>

#include <trace/corvaneTracepoints.h>

// Files test the event themselves where they are fastest.
#undef tracepoint_enabled
#define tracepoint_enabled(...) false

namespace Corvane::Trace {

template <typename WriteText>
void trace1(const char*, unsigned int, const WriteText&)
{
}

template <typename WriteText>
void trace2(const char*, unsigned int, const WriteText&)
{
}

template <typename WriteText>
void info(const char*, unsigned int, const WriteText&)
{
}

template <typename WriteText>
void error(const char*, unsigned int, const WriteText&)
{
}

} // namespace Corvane::Trace

#endif
