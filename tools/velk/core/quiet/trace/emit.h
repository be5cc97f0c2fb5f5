// SPDX-License-Identifier: MIT
/// Stands in for the library's trace/emit.h where its syntax graph is compiled into this library: nothing is traced,
/// and the checks see when the graph reports an error.
#ifndef CORVANE_SYNOPSES_QUIET_EMIT_H
#define CORVANE_SYNOPSES_QUIET_EMIT_H

#include <ostream>

namespace Corvane::Trace {

/// How many errors the graph has reported in this thread.
inline thread_local unsigned long reportedErrors = 0;

template <typename WriteText>
void error(const char* /*path*/, unsigned int /*line*/, const WriteText& /*writeText*/)
{
    ++reportedErrors;
}

template <typename WriteText>
void trace2(const char* /*path*/, unsigned int /*line*/, const WriteText& /*writeText*/)
{
}

} // namespace Corvane::Trace

#define tracepoint_enabled(provider, event) false

#endif
