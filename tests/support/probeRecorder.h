/// Records the events that the library emits inside this process, without a tracing daemon: the recording fake of the
/// tests that link corvane_internal.
///
///     ProbeRecorder recorder({ProbedEvent::Trace1});
///     service.executeCmd({"show"}, out);
///     EXPECT_THAT(recorder.take(), ElementsAre(ProbeRecord{ProbedEvent::Trace1, "src/x.cpp", 150, "-", "..."}));
///
/// It attaches probes of its own to the tracepoint objects. That turns the events on for as long as the object lives;
/// each event is off before and after, since a program that links this fake registers no provider that a tracing daemon
/// could record (noTracer.h).
///
/// Threads  any thread may emit while the object lives; the object itself belongs to one thread.
#ifndef CORVANE_TESTS_SUPPORT_PROBERECORDER_H
#define CORVANE_TESTS_SUPPORT_PROBERECORDER_H

#include <iosfwd>
#include <mutex>
#include <string>
#include <vector>

namespace Corvane::Testing {

/// The events that the library emits itself.
enum class ProbedEvent
{
    Trace1,
    Trace2,
    Info,
    Error
};

/// The arguments of one emission. A null text reads "(null)"; INFO and ERROR have no `obj`, it is empty.
struct ProbeRecord
{
    ProbedEvent event;
    std::string file;
    unsigned int line;
    std::string obj;
    std::string msg;
};

bool operator==(const ProbeRecord& left, const ProbeRecord& right);
std::ostream& operator<<(std::ostream& out, const ProbeRecord& record);
std::ostream& operator<<(std::ostream& out, ProbedEvent event);

/// Returns  whether the event is on.
bool isEnabled(ProbedEvent event);

class ProbeRecorder
{
public:
    /// Turns on and records `events`, all four if none are named.
    explicit ProbeRecorder(std::vector<ProbedEvent> events = {ProbedEvent::Trace1, ProbedEvent::Trace2,
                                                              ProbedEvent::Info, ProbedEvent::Error});

    /// Turns the events off again.
    ///
    /// Requires  no other thread emits meanwhile.
    ~ProbeRecorder();

    /// Returns  what was emitted since the last call, in the order of emission.
    std::vector<ProbeRecord> take();

    /// For the probes: adds a record.
    void add(ProbeRecord record);

    ProbeRecorder(const ProbeRecorder&) = delete;
    ProbeRecorder& operator=(const ProbeRecorder&) = delete;

private:
    const std::vector<ProbedEvent> m_events;
    std::mutex m_mutex;
    std::vector<ProbeRecord> m_records;
};

} // namespace Corvane::Testing

#endif
