// SPDX-License-Identifier: MIT
/// The tracepoint provider com_brimlow_kelpsys_corvane: twenty events shared by the library and its applications.
///
/// An application links the library, includes this header and emits through the library's own tracepoint objects:
///
///     tracepoint(com_brimlow_kelpsys_corvane, INFO, "app.cpp", 12, "link is up");
///
/// or, where an argument costs something, tests first and so builds nothing while the event is off:
///
///     if (tracepoint_enabled(com_brimlow_kelpsys_corvane, TRACE1)) {
///         do_tracepoint(com_brimlow_kelpsys_corvane, TRACE1, "app.cpp", 12, "-", describe().c_str());
///     }
///
/// It never defines the tracepoints again: TRACEPOINT_DEFINE and TRACEPOINT_CREATE_PROBES belong to the library.
///
/// Texts    a null text is recorded as "(null)". They are copied while the event is recorded; the caller keeps them.
/// Data     datalen counts bytes; null data is recorded as an empty sequence. The bytes are copied as the texts are.
/// Units    sec and usec are seconds and microseconds of whatever clock the application uses.
/// Requires the libraries of LTTng-UST: where they are not installed, a program that uses this library doesn't start.
/// Threads  any thread may emit at any time, without a lock. Without a tracing daemon emitting does nothing.
/// Errors   none are reported: an event that the tracer can't take is lost, and the tracer counts it.
/// Since    0.1.0
#undef TRACEPOINT_PROVIDER
#define TRACEPOINT_PROVIDER com_brimlow_kelpsys_corvane

#undef TRACEPOINT_INCLUDE
#define TRACEPOINT_INCLUDE "trace/corvaneTracepoints.h"

#if !defined(CORVANE_TRACE_CORVANETRACEPOINTS_H) || defined(TRACEPOINT_HEADER_MULTI_READ)
#define CORVANE_TRACE_CORVANETRACEPOINTS_H

#include <lttng/tracepoint.h>

#include <cstddef>
#include <cstdint>

// clang-format off

// The argument lists are the declared signatures of the events: LTTng-UST compares their text, blanks included,
// between the provider and its users.

TRACEPOINT_EVENT_CLASS(com_brimlow_kelpsys_corvane, TimedTrace,
    TP_ARGS(const char*, file, unsigned int, line, unsigned int, sec, unsigned int, usec, const char*, process, const char*, msg, const char*, data, size_t, datalen),
    TP_FIELDS(
        ctf_string(file, file)
        ctf_integer(unsigned int, line, line)
        ctf_integer(unsigned int, sec, sec)
        ctf_integer(unsigned int, usec, usec)
        ctf_string(process, process)
        ctf_string(msg, msg)
        ctf_sequence(uint8_t, data, data, size_t, data ? datalen : 0)
    )
)

TRACEPOINT_EVENT_CLASS(com_brimlow_kelpsys_corvane, PlainTrace,
    TP_ARGS(const char*, file, unsigned int, line, const char*, obj, const char*, msg),
    TP_FIELDS(
        ctf_string(file, file)
        ctf_integer(unsigned int, line, line)
        ctf_string(obj, obj)
        ctf_string(msg, msg)
    )
)

TRACEPOINT_EVENT_CLASS(com_brimlow_kelpsys_corvane, Notice,
    TP_ARGS(const char*, file, unsigned int, line, const char*, msg),
    TP_FIELDS(
        ctf_string(file, file)
        ctf_integer(unsigned int, line, line)
        ctf_string(msg, msg)
    )
)

// The number in a name rises as the severity falls. Readers filter by level, and the order of the events below is the
// order in which they are registered.

TRACEPOINT_EVENT_INSTANCE(com_brimlow_kelpsys_corvane, TimedTrace, TRACE_UTS7,
    TP_ARGS(const char*, file, unsigned int, line, unsigned int, sec, unsigned int, usec, const char*, process, const char*, msg, const char*, data, size_t, datalen))
TRACEPOINT_LOGLEVEL(com_brimlow_kelpsys_corvane, TRACE_UTS7, TRACE_DEBUG)

TRACEPOINT_EVENT_INSTANCE(com_brimlow_kelpsys_corvane, TimedTrace, TRACE_UTS6,
    TP_ARGS(const char*, file, unsigned int, line, unsigned int, sec, unsigned int, usec, const char*, process, const char*, msg, const char*, data, size_t, datalen))
TRACEPOINT_LOGLEVEL(com_brimlow_kelpsys_corvane, TRACE_UTS6, TRACE_DEBUG_LINE)

TRACEPOINT_EVENT_INSTANCE(com_brimlow_kelpsys_corvane, TimedTrace, TRACE_UTS5,
    TP_ARGS(const char*, file, unsigned int, line, unsigned int, sec, unsigned int, usec, const char*, process, const char*, msg, const char*, data, size_t, datalen))
TRACEPOINT_LOGLEVEL(com_brimlow_kelpsys_corvane, TRACE_UTS5, TRACE_DEBUG_FUNCTION)

TRACEPOINT_EVENT_INSTANCE(com_brimlow_kelpsys_corvane, TimedTrace, TRACE_UTS4,
    TP_ARGS(const char*, file, unsigned int, line, unsigned int, sec, unsigned int, usec, const char*, process, const char*, msg, const char*, data, size_t, datalen))
TRACEPOINT_LOGLEVEL(com_brimlow_kelpsys_corvane, TRACE_UTS4, TRACE_DEBUG_UNIT)

TRACEPOINT_EVENT_INSTANCE(com_brimlow_kelpsys_corvane, TimedTrace, TRACE_UTS3,
    TP_ARGS(const char*, file, unsigned int, line, unsigned int, sec, unsigned int, usec, const char*, process, const char*, msg, const char*, data, size_t, datalen))
TRACEPOINT_LOGLEVEL(com_brimlow_kelpsys_corvane, TRACE_UTS3, TRACE_DEBUG_MODULE)

TRACEPOINT_EVENT_INSTANCE(com_brimlow_kelpsys_corvane, TimedTrace, TRACE_UTS2,
    TP_ARGS(const char*, file, unsigned int, line, unsigned int, sec, unsigned int, usec, const char*, process, const char*, msg, const char*, data, size_t, datalen))
TRACEPOINT_LOGLEVEL(com_brimlow_kelpsys_corvane, TRACE_UTS2, TRACE_DEBUG_PROCESS)

TRACEPOINT_EVENT_INSTANCE(com_brimlow_kelpsys_corvane, TimedTrace, TRACE_UTS1,
    TP_ARGS(const char*, file, unsigned int, line, unsigned int, sec, unsigned int, usec, const char*, process, const char*, msg, const char*, data, size_t, datalen))
TRACEPOINT_LOGLEVEL(com_brimlow_kelpsys_corvane, TRACE_UTS1, TRACE_DEBUG_PROGRAM)

TRACEPOINT_EVENT(com_brimlow_kelpsys_corvane, DATA,
    TP_ARGS(const char*, file, unsigned int, line, const char*, obj, const char*, msg, const char*, data, size_t, datalen),
    TP_FIELDS(
        ctf_string(file, file)
        ctf_integer(unsigned int, line, line)
        ctf_string(obj, obj)
        ctf_string(msg, msg)
        ctf_sequence(uint8_t, data, data, size_t, data ? datalen : 0)
    )
)
TRACEPOINT_LOGLEVEL(com_brimlow_kelpsys_corvane, DATA, TRACE_DEBUG)

TRACEPOINT_EVENT(com_brimlow_kelpsys_corvane, SEND_SIG,
    TP_ARGS(const char*, file, unsigned int, line, const char*, obj, unsigned int, sig_no, unsigned int, pid, const char*, msg),
    TP_FIELDS(
        ctf_string(file, file)
        ctf_integer(unsigned int, line, line)
        ctf_string(obj, obj)
        ctf_integer_hex(unsigned int, sig_no, sig_no)
        ctf_integer(unsigned int, pid, pid)
        ctf_string(msg, msg)
    )
)
TRACEPOINT_LOGLEVEL(com_brimlow_kelpsys_corvane, SEND_SIG, TRACE_DEBUG_SYSTEM)

TRACEPOINT_EVENT(com_brimlow_kelpsys_corvane, REC_SIG,
    TP_ARGS(const char*, file, unsigned int, line, const char*, obj, unsigned int, sig_no, const char*, msg),
    TP_FIELDS(
        ctf_string(file, file)
        ctf_integer(unsigned int, line, line)
        ctf_string(obj, obj)
        ctf_integer_hex(unsigned int, sig_no, sig_no)
        ctf_string(msg, msg)
    )
)
TRACEPOINT_LOGLEVEL(com_brimlow_kelpsys_corvane, REC_SIG, TRACE_DEBUG_SYSTEM)

TRACEPOINT_EVENT_INSTANCE(com_brimlow_kelpsys_corvane, PlainTrace, TRACE7,
    TP_ARGS(const char*, file, unsigned int, line, const char*, obj, const char*, msg))
TRACEPOINT_LOGLEVEL(com_brimlow_kelpsys_corvane, TRACE7, TRACE_DEBUG)

TRACEPOINT_EVENT_INSTANCE(com_brimlow_kelpsys_corvane, PlainTrace, TRACE6,
    TP_ARGS(const char*, file, unsigned int, line, const char*, obj, const char*, msg))
TRACEPOINT_LOGLEVEL(com_brimlow_kelpsys_corvane, TRACE6, TRACE_DEBUG_LINE)

TRACEPOINT_EVENT_INSTANCE(com_brimlow_kelpsys_corvane, PlainTrace, TRACE5,
    TP_ARGS(const char*, file, unsigned int, line, const char*, obj, const char*, msg))
TRACEPOINT_LOGLEVEL(com_brimlow_kelpsys_corvane, TRACE5, TRACE_DEBUG_FUNCTION)

TRACEPOINT_EVENT_INSTANCE(com_brimlow_kelpsys_corvane, PlainTrace, TRACE4,
    TP_ARGS(const char*, file, unsigned int, line, const char*, obj, const char*, msg))
TRACEPOINT_LOGLEVEL(com_brimlow_kelpsys_corvane, TRACE4, TRACE_DEBUG_UNIT)

TRACEPOINT_EVENT_INSTANCE(com_brimlow_kelpsys_corvane, PlainTrace, TRACE3,
    TP_ARGS(const char*, file, unsigned int, line, const char*, obj, const char*, msg))
TRACEPOINT_LOGLEVEL(com_brimlow_kelpsys_corvane, TRACE3, TRACE_DEBUG_MODULE)

TRACEPOINT_EVENT_INSTANCE(com_brimlow_kelpsys_corvane, PlainTrace, TRACE2,
    TP_ARGS(const char*, file, unsigned int, line, const char*, obj, const char*, msg))
TRACEPOINT_LOGLEVEL(com_brimlow_kelpsys_corvane, TRACE2, TRACE_DEBUG_PROCESS)

TRACEPOINT_EVENT_INSTANCE(com_brimlow_kelpsys_corvane, PlainTrace, TRACE1,
    TP_ARGS(const char*, file, unsigned int, line, const char*, obj, const char*, msg))
TRACEPOINT_LOGLEVEL(com_brimlow_kelpsys_corvane, TRACE1, TRACE_DEBUG_PROGRAM)

TRACEPOINT_EVENT_INSTANCE(com_brimlow_kelpsys_corvane, PlainTrace, STATE_CHANGE,
    TP_ARGS(const char*, file, unsigned int, line, const char*, obj, const char*, msg))
TRACEPOINT_LOGLEVEL(com_brimlow_kelpsys_corvane, STATE_CHANGE, TRACE_DEBUG_SYSTEM)

TRACEPOINT_EVENT_INSTANCE(com_brimlow_kelpsys_corvane, Notice, INFO,
    TP_ARGS(const char*, file, unsigned int, line, const char*, msg))
TRACEPOINT_LOGLEVEL(com_brimlow_kelpsys_corvane, INFO, TRACE_INFO)

TRACEPOINT_EVENT_INSTANCE(com_brimlow_kelpsys_corvane, Notice, ERROR,
    TP_ARGS(const char*, file, unsigned int, line, const char*, msg))
TRACEPOINT_LOGLEVEL(com_brimlow_kelpsys_corvane, ERROR, TRACE_ERR)

// clang-format on

#endif

#include <lttng/tracepoint-event.h>
