/// Attaches probes to the tracepoint objects of this process.
#include "tests/support/probeRecorder.h"

#include <array>
#include <cstddef>
#include <ostream>
#include <stdexcept>
#include <utility>

#include "tests/support/noTracer.h"
#include "tests/support/tracepointObjects.h"

namespace Corvane::Testing {

namespace {

std::string textOf(const char* text)
{
    return text == nullptr ? "(null)" : text;
}

// A tracepoint calls a probe with the data of its registration and the arguments of the event.

template <ProbedEvent event>
void probeTrace(void* recorder, const char* file, unsigned int line, const char* obj, const char* msg)
{
    static_cast<ProbeRecorder*>(recorder)->add({event, textOf(file), line, textOf(obj), textOf(msg)});
}

template <ProbedEvent event>
void probeNotice(void* recorder, const char* file, unsigned int line, const char* msg)
{
    static_cast<ProbeRecorder*>(recorder)->add({event, textOf(file), line, "", textOf(msg)});
}

// The registration functions of the provider's header take names that are not const; from 2.13 on they take one more.

std::string provider = "com_brimlow_kelpsys_corvane";

#if CORVANE_TEST_OLD_LTTNG
#define CORVANE_TEST_CALL(action, event, probe, data)                                                                  \
    std::string name = provider + ":" #event;                                                                          \
    __tracepoint_##action##_com_brimlow_kelpsys_corvane___##event(name.data(), probe, data)
#else
#define CORVANE_TEST_CALL(action, event, probe, data)                                                                  \
    std::string name = #event;                                                                                         \
    lttng_ust_tracepoint_##action##_com_brimlow_kelpsys_corvane___##event(provider.data(), name.data(), probe, data)
#endif

#define CORVANE_TEST_ATTACHMENT(event, function)                                                                       \
    void attach##event(void* data)                                                                                     \
    {                                                                                                                  \
        CORVANE_TEST_CALL(register, event, reinterpret_cast<void (*)()>(&(function)), data);                           \
    }                                                                                                                  \
    void detach##event(void* data)                                                                                     \
    {                                                                                                                  \
        CORVANE_TEST_CALL(unregister, event, reinterpret_cast<void (*)()>(&(function)), data);                         \
    }

CORVANE_TEST_ATTACHMENT(TRACE1, probeTrace<ProbedEvent::Trace1>)
CORVANE_TEST_ATTACHMENT(TRACE2, probeTrace<ProbedEvent::Trace2>)
CORVANE_TEST_ATTACHMENT(INFO, probeNotice<ProbedEvent::Info>)
CORVANE_TEST_ATTACHMENT(ERROR, probeNotice<ProbedEvent::Error>)

struct Attachment
{
    const char* name;
    void (*attach)(void*);
    void (*detach)(void*);
    const lttng_ust_tracepoint* object;
};

const Attachment& attachmentOf(ProbedEvent event)
{
    static const std::array<Attachment, 4> attachments = {{
        {"TRACE1", attachTRACE1, detachTRACE1, &CORVANE_TRACEPOINT_OBJECT(TRACE1)},
        {"TRACE2", attachTRACE2, detachTRACE2, &CORVANE_TRACEPOINT_OBJECT(TRACE2)},
        {"INFO", attachINFO, detachINFO, &CORVANE_TRACEPOINT_OBJECT(INFO)},
        {"ERROR", attachERROR, detachERROR, &CORVANE_TRACEPOINT_OBJECT(ERROR)},
    }};
    return attachments.at(static_cast<std::size_t>(event));
}

} // namespace

bool operator==(const ProbeRecord& left, const ProbeRecord& right)
{
    return left.event == right.event && left.file == right.file && left.line == right.line && left.obj == right.obj &&
           left.msg == right.msg;
}

std::ostream& operator<<(std::ostream& out, const ProbeRecord& record)
{
    return out << record.event << " \"" << record.file << "\", " << record.line << ", \"" << record.obj << "\", \""
               << record.msg << "\"";
}

std::ostream& operator<<(std::ostream& out, ProbedEvent event)
{
    return out << attachmentOf(event).name;
}

bool isEnabled(ProbedEvent event)
{
    return attachmentOf(event).object->state != 0;
}

ProbeRecorder::ProbeRecorder(std::vector<ProbedEvent> events) : m_events(std::move(events))
{
    if (corvaneTestRegisteredEvent(0) == nullptr) { // this call also makes the linker take noTracer.cpp
        throw std::logic_error("the provider is registered with the tracer");
    }
    for (const ProbedEvent event : m_events) {
        attachmentOf(event).attach(this);
    }
}

ProbeRecorder::~ProbeRecorder()
{
    for (const ProbedEvent event : m_events) {
        attachmentOf(event).detach(this);
    }
}

std::vector<ProbeRecord> ProbeRecorder::take()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return std::exchange(m_records, {});
}

void ProbeRecorder::add(ProbeRecord record)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_records.push_back(std::move(record));
}

} // namespace Corvane::Testing
