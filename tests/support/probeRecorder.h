/// Records the events that the library emits in this process, without a tracing daemon. For tests that link
/// corvane_internal.
///
///     ProbeRecorder recorder({ProbedEvent::Trace1});
///     service.executeCmd({"show"}, out);
///     EXPECT_THAT(recorder.take(), ElementsAre(ProbeRecord{ProbedEvent::Trace1, "src/x.cpp", 150, "-", "..."}));
///
/// It attaches its own probes to the tracepoint objects. That turns the events on while the object lives. Before and
/// after, each event is off: a program that links this fake registers no provider with a tracing daemon (noTracer.h).
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

/// The arguments of one emission. A null text becomes "(null)". `obj` is empty for INFO and ERROR, which have none.
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

/// Returns  true if the event is on.
bool isEnabled(ProbedEvent event);

class ProbeRecorder
{
public:
    /// Turns on and records `events`: all four by default.
    explicit ProbeRecorder(std::vector<ProbedEvent> events = {ProbedEvent::Trace1, ProbedEvent::Trace2,
                                                              ProbedEvent::Info, ProbedEvent::Error});

    /// Turns the events off again.
    ///
    /// Requires  no other thread is emitting.
    ~ProbeRecorder();

    /// Returns  what was emitted since the last call, in the order of emission.
    std::vector<ProbeRecord> take();

    /// Adds a record. For the probes.
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
