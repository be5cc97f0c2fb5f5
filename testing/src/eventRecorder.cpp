// SPDX-License-Identifier: MIT
/// Attaches probes to the provider's tracepoints, as a tracer does.
///
/// The functions that attach them are in the tracer's library, which the process has because libcorvane needs it. They
/// are looked up at run time, so that a test needn't be linked with the tracer.
#include <testing/eventRecorder.h>

#include <array>
#include <ostream>
#include <stdexcept>
#include <tuple>

#include <dlfcn.h>
#include <lttng/ust-version.h>
#include <trace/corvaneTracepoints.h>

#include "testing/src/arrivals.h"

namespace Corvane::Testing {

namespace {

std::string textOf(const char* text)
{
    return text == nullptr ? "(null)" : text;
}

std::string bytesOf(const char* data, std::size_t size)
{
    return data == nullptr ? "" : std::string(data, size);
}

// A tracepoint calls a probe with the data of its registration and the arguments of the event.

using Text = const char*;
using Number = unsigned int;

template <EventName name>
struct Probe
{
    static void timed(void* arrivals, Text file, Number line, Number sec, Number usec, Text process, Text msg,
                      Text data, std::size_t size)
    {
        add(arrivals, [&] {
            return Event{name, textOf(file), line, "", textOf(msg), sec, usec, textOf(process), bytesOf(data, size)};
        });
    }
    static void plain(void* arrivals, Text file, Number line, Text obj, Text msg)
    {
        add(arrivals, [&] { return Event{name, textOf(file), line, textOf(obj), textOf(msg)}; });
    }
    static void notice(void* arrivals, Text file, Number line, Text msg)
    {
        add(arrivals, [&] { return Event{name, textOf(file), line, "", textOf(msg)}; });
    }
    static void data(void* arrivals, Text file, Number line, Text obj, Text msg, Text data, std::size_t size)
    {
        add(arrivals,
            [&] { return Event{name, textOf(file), line, textOf(obj), textOf(msg), 0, 0, "", bytesOf(data, size)}; });
    }
    static void sent(void* arrivals, Text file, Number line, Text obj, Number sigNo, Number pid, Text msg)
    {
        add(arrivals,
            [&] { return Event{name, textOf(file), line, textOf(obj), textOf(msg), 0, 0, "", "", sigNo, pid}; });
    }
    static void received(void* arrivals, Text file, Number line, Text obj, Number sigNo, Text msg)
    {
        add(arrivals, [&] { return Event{name, textOf(file), line, textOf(obj), textOf(msg), 0, 0, "", "", sigNo}; });
    }

private:
    template <typename Make>
    static void add(void* arrivals, const Make& make)
    {
        static_cast<Arrivals<Event>*>(arrivals)->add(make);
    }
};

struct Tracepoint
{
    const char* name;
    const lttng_ust_tracepoint& object;
    void (*probe)();
};

#define CORVANE_OLD_LTTNG (LTTNG_UST_MAJOR_VERSION == 2 && LTTNG_UST_MINOR_VERSION < 13)
#if CORVANE_OLD_LTTNG
#define CORVANE_OBJECT(event) __tracepoint_com_brimlow_kelpsys_corvane___##event
#else
#define CORVANE_OBJECT(event) lttng_ust_tracepoint_com_brimlow_kelpsys_corvane___##event
#endif
#define CORVANE_TRACEPOINT(event, name, arguments)                                                                     \
    {                                                                                                                  \
#event, CORVANE_OBJECT(event), reinterpret_cast < void (*)()>(&Probe <EventName::name>::arguments)             \
    }

const Tracepoint& tracepointOf(EventName name)
{
    static const std::array<Tracepoint, 20> tracepoints = {{
        CORVANE_TRACEPOINT(TRACE_UTS7, TraceUts7, timed), CORVANE_TRACEPOINT(TRACE_UTS6, TraceUts6, timed),
        CORVANE_TRACEPOINT(TRACE_UTS5, TraceUts5, timed), CORVANE_TRACEPOINT(TRACE_UTS4, TraceUts4, timed),
        CORVANE_TRACEPOINT(TRACE_UTS3, TraceUts3, timed), CORVANE_TRACEPOINT(TRACE_UTS2, TraceUts2, timed),
        CORVANE_TRACEPOINT(TRACE_UTS1, TraceUts1, timed), CORVANE_TRACEPOINT(DATA, Data, data),
        CORVANE_TRACEPOINT(SEND_SIG, SendSig, sent),      CORVANE_TRACEPOINT(REC_SIG, RecSig, received),
        CORVANE_TRACEPOINT(TRACE7, Trace7, plain),        CORVANE_TRACEPOINT(TRACE6, Trace6, plain),
        CORVANE_TRACEPOINT(TRACE5, Trace5, plain),        CORVANE_TRACEPOINT(TRACE4, Trace4, plain),
        CORVANE_TRACEPOINT(TRACE3, Trace3, plain),        CORVANE_TRACEPOINT(TRACE2, Trace2, plain),
        CORVANE_TRACEPOINT(TRACE1, Trace1, plain),        CORVANE_TRACEPOINT(STATE_CHANGE, StateChange, plain),
        CORVANE_TRACEPOINT(INFO, Info, notice),           CORVANE_TRACEPOINT(ERROR, Error, notice),
    }};
    return tracepoints.at(static_cast<std::size_t>(name));
}

template <typename Function>
Function* find(const char* symbol)
{
    void* const found = ::dlsym(RTLD_DEFAULT, symbol);
    if (found == nullptr) {
        throw std::runtime_error(std::string("the tracer's library has no ") + symbol);
    }
    return reinterpret_cast<Function*>(found);
}

/// The tracer's functions that attach and detach probes.
class Tracer
{
public:
    /// Returns  0 if the probe is attached.
    int attach(const Tracepoint& tracepoint, void* data) const
    {
        const auto& object = tracepoint.object;
#if CORVANE_OLD_LTTNG
        return m_attach(object.name, tracepoint.probe, data, object.signature);
#else
        return m_attach(object.provider_name, object.event_name, tracepoint.probe, data, object.signature);
#endif
    }

    /// When it returns, no thread is inside the probe.
    void detach(const Tracepoint& tracepoint, void* data) const
    {
        const auto& object = tracepoint.object;
#if CORVANE_OLD_LTTNG
        m_detach(object.name, tracepoint.probe, data);
#else
        m_detach(object.provider_name, object.event_name, tracepoint.probe, data);
#endif
    }

private:
#define CORVANE_FIND(function) find<decltype(function)>(#function)
#if CORVANE_OLD_LTTNG
    decltype(&__tracepoint_probe_register) m_attach = CORVANE_FIND(__tracepoint_probe_register);
    decltype(&__tracepoint_probe_unregister) m_detach = CORVANE_FIND(__tracepoint_probe_unregister);
#else
    decltype(&lttng_ust_tracepoint_provider_register) m_attach = CORVANE_FIND(lttng_ust_tracepoint_provider_register);
    decltype(&lttng_ust_tracepoint_provider_unregister) m_detach =
        CORVANE_FIND(lttng_ust_tracepoint_provider_unregister);
#endif
};

std::vector<EventName> allEvents()
{
    std::vector<EventName> names;
    for (int name = 0; name <= static_cast<int>(EventName::Error); ++name) {
        names.push_back(static_cast<EventName>(name));
    }
    return names;
}

} // namespace

bool operator==(const Event& left, const Event& right)
{
    const auto fieldsOf = [](const Event& event) {
        return std::tie(event.name, event.file, event.line, event.obj, event.msg, event.sec, event.usec, event.process,
                        event.data, event.sigNo, event.pid);
    };
    return fieldsOf(left) == fieldsOf(right);
}

bool operator!=(const Event& left, const Event& right)
{
    return !(left == right);
}

std::ostream& operator<<(std::ostream& out, EventName name)
{
    return out << tracepointOf(name).name;
}

std::ostream& operator<<(std::ostream& out, const Event& event)
{
    out << event.name << " \"" << event.file << "\", " << event.line << ", \"" << event.obj << "\", \"" << event.msg
        << "\"";
    if (event.name <= EventName::TraceUts1) {
        out << ", " << event.sec << " s, " << event.usec << " us, \"" << event.process << "\"";
    }
    if (event.name == EventName::SendSig || event.name == EventName::RecSig) {
        out << ", signal " << event.sigNo;
    }
    if (event.name == EventName::SendSig) {
        out << ", process " << event.pid;
    }
    return event.data.empty() ? out : out << ", data \"" << event.data << "\"";
}

class EventRecorder::Impl
{
public:
    explicit Impl(const std::vector<EventName>& events)
    {
        m_attached.reserve(events.size());
        for (const EventName name : events) {
            const Tracepoint& tracepoint = tracepointOf(name);
            if (m_tracer.attach(tracepoint, &arrivals) != 0) {
                detachAll();
                throw std::runtime_error(std::string("the tracer refuses a probe of ") + tracepoint.name);
            }
            m_attached.push_back(&tracepoint);
        }
    }
    ~Impl()
    {
        detachAll();
        arrivals.clear(); // takes the lock after all probes: a sanitizer doesn't see how the tracer waits for them
    }
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;

    Arrivals<Event> arrivals;

private:
    void detachAll()
    {
        for (const Tracepoint* const tracepoint : m_attached) {
            m_tracer.detach(*tracepoint, &arrivals);
        }
    }

    const Tracer m_tracer;
    std::vector<const Tracepoint*> m_attached;
};

EventRecorder::EventRecorder() : EventRecorder(allEvents()) {}

EventRecorder::EventRecorder(const std::vector<EventName>& events) : m_impl(std::make_unique<Impl>(events)) {}

EventRecorder::~EventRecorder() = default;

std::vector<Event> EventRecorder::take(std::size_t atLeast, std::chrono::milliseconds limit)
{
    return m_impl->arrivals.take(atLeast, limit);
}

} // namespace Corvane::Testing
