// SPDX-License-Identifier: MIT
/// Records the events of the provider com_brimlow_kelpsys_corvane that this process emits, without a tracing daemon.
///
///     using namespace Corvane::Testing;
///     EventRecorder recorder({EventName::Error});
///     files.create("log", 0, 0);
///     files.create("log", 0, 0);                                  // fails: there is a file of this name
///     const std::vector<Event> events = recorder.take();          // one event, with all its fields
///     const std::vector<Event> later = recorder.take(2, 5s);      // waits until other threads have emitted two
///
/// From its construction to its destruction, a recorder turns its events on. So the library and the application format
/// the texts of these events, and the recorder records them, from all threads. Several recorders may live at once, each
/// with its own events. A tracing daemon that records the process at the same time gets the same events as without a
/// recorder.
///
/// Since  0.1.0
#ifndef CORVANE_TESTING_EVENTRECORDER_H
#define CORVANE_TESTING_EVENTRECORDER_H

#include <chrono>
#include <cstddef>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

namespace Corvane::Testing {

/// The provider's events, in the order of <trace/corvaneTracepoints.h>. The library itself emits four of them: TRACE1,
/// TRACE2, INFO and ERROR. Applications may emit all of them.
enum class EventName
{
    TraceUts7,
    TraceUts6,
    TraceUts5,
    TraceUts4,
    TraceUts3,
    TraceUts2,
    TraceUts1,
    Data,
    SendSig,
    RecSig,
    Trace7,
    Trace6,
    Trace5,
    Trace4,
    Trace3,
    Trace2,
    Trace1,
    StateChange,
    Info,
    Error
};

/// One event as it was emitted, with all its fields. The fields have the same values as in a recording of LTTng: a null
/// text is "(null)", null data is empty. A field that this kind of event doesn't have is empty or 0.
struct Event
{
    EventName name = EventName::Error; ///< which event
    std::string file = {};             ///< every event has it, and line and msg
    unsigned int line = 0;             ///< the line in `file`, or a constant that stands for the place
    std::string obj = {};              ///< of TRACE1 to TRACE7, STATE_CHANGE, DATA, SEND_SIG and REC_SIG
    std::string msg = {};              ///< the text
    unsigned int sec = 0;              ///< seconds; TRACE_UTS1 to TRACE_UTS7 have it, and usec and process
    unsigned int usec = 0;             ///< microseconds
    std::string process = {};          ///< the name that the emitter gave
    std::string data = {};             ///< of TRACE_UTS1 to TRACE_UTS7 and DATA: the bytes
    unsigned int sigNo = 0;            ///< of SEND_SIG and REC_SIG
    unsigned int pid = 0;              ///< of SEND_SIG
};

/// Returns  true if all fields are equal.
bool operator==(const Event& left, const Event& right);
/// Returns  true if one field differs.
bool operator!=(const Event& left, const Event& right);

/// Writes an event on one line, its name first. Test frameworks use it to show events.
std::ostream& operator<<(std::ostream& out, const Event& event);

/// Writes the name as LTTng shows it: "TRACE1".
std::ostream& operator<<(std::ostream& out, EventName name);

class EventRecorder
{
public:
    /// Turns on and records all twenty events, or only `events`.
    ///
    /// Errors  std::bad_alloc; std::runtime_error if the tracer's library isn't loaded or refuses.
    /// Threads any.
    EventRecorder();
    explicit EventRecorder(const std::vector<EventName>& events);

    /// Ends the recording. Other threads may go on emitting: when this returns, none of them is inside the recorder.
    ///
    /// Requires  no other thread is in take().
    ~EventRecorder();

    /// Takes the events that have been recorded. Waits first until there are `atLeast` events, or the time `limit` is
    /// over.
    ///
    /// Returns  the events since the last call, in the order in which they were emitted; fewer than `atLeast` if the
    ///          time was over.
    /// Errors   std::bad_alloc, also if there was no memory to record an event. The thread that emits it gets no error.
    /// Threads  any.
    std::vector<Event> take(std::size_t atLeast = 0, std::chrono::milliseconds limit = std::chrono::seconds(10));

    EventRecorder(const EventRecorder&) = delete;
    EventRecorder& operator=(const EventRecorder&) = delete;

private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace Corvane::Testing

#endif
