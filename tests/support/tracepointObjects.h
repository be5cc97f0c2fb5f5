/// The provider's twenty tracepoint objects. Their names and their layout differ between LTTng-UST 2.12 and 2.13.
///
/// Threads  any.
#ifndef CORVANE_TESTS_SUPPORT_TRACEPOINTOBJECTS_H
#define CORVANE_TESTS_SUPPORT_TRACEPOINTOBJECTS_H

#include <array>
#include <string>

#include <lttng/ust-version.h>
#include <trace/corvaneTracepoints.h>

#define CORVANE_TEST_OLD_LTTNG (LTTNG_UST_MAJOR_VERSION == 2 && LTTNG_UST_MINOR_VERSION < 13)

#if CORVANE_TEST_OLD_LTTNG
#define CORVANE_TRACEPOINT_OBJECT(event) __tracepoint_com_brimlow_kelpsys_corvane___##event
#else
#define CORVANE_TRACEPOINT_OBJECT(event) lttng_ust_tracepoint_com_brimlow_kelpsys_corvane___##event
#endif

namespace Corvane::Testing {

/// Returns  the twenty objects in the order of registration.
inline const std::array<const lttng_ust_tracepoint*, 20>& tracepointObjects()
{
    static const std::array<const lttng_ust_tracepoint*, 20> objects = {
        &CORVANE_TRACEPOINT_OBJECT(TRACE_UTS7), &CORVANE_TRACEPOINT_OBJECT(TRACE_UTS6),
        &CORVANE_TRACEPOINT_OBJECT(TRACE_UTS5), &CORVANE_TRACEPOINT_OBJECT(TRACE_UTS4),
        &CORVANE_TRACEPOINT_OBJECT(TRACE_UTS3), &CORVANE_TRACEPOINT_OBJECT(TRACE_UTS2),
        &CORVANE_TRACEPOINT_OBJECT(TRACE_UTS1), &CORVANE_TRACEPOINT_OBJECT(DATA),
        &CORVANE_TRACEPOINT_OBJECT(SEND_SIG),   &CORVANE_TRACEPOINT_OBJECT(REC_SIG),
        &CORVANE_TRACEPOINT_OBJECT(TRACE7),     &CORVANE_TRACEPOINT_OBJECT(TRACE6),
        &CORVANE_TRACEPOINT_OBJECT(TRACE5),     &CORVANE_TRACEPOINT_OBJECT(TRACE4),
        &CORVANE_TRACEPOINT_OBJECT(TRACE3),     &CORVANE_TRACEPOINT_OBJECT(TRACE2),
        &CORVANE_TRACEPOINT_OBJECT(TRACE1),     &CORVANE_TRACEPOINT_OBJECT(STATE_CHANGE),
        &CORVANE_TRACEPOINT_OBJECT(INFO),       &CORVANE_TRACEPOINT_OBJECT(ERROR)};
    return objects;
}

/// Returns  the name with which a tracepoint is registered: "com_brimlow_kelpsys_corvane:TRACE1".
inline std::string fullName(const lttng_ust_tracepoint& object)
{
#if CORVANE_TEST_OLD_LTTNG
    return object.name;
#else
    return std::string(object.provider_name) + ":" + object.event_name;
#endif
}

} // namespace Corvane::Testing

#endif
