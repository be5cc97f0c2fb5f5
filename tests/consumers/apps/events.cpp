/// An application that emits all twenty events through the library's tracepoint objects, and prints what arrives.
#include <iostream>

#include <testing/eventRecorder.h>
#include <trace/corvaneTracepoints.h>

namespace {

void emitTimed()
{
    tracepoint(com_brimlow_kelpsys_corvane, TRACE_UTS7, "app.cpp", 1, 10, 100, "process", "uts7", "bytes", 5);
    tracepoint(com_brimlow_kelpsys_corvane, TRACE_UTS6, "app.cpp", 2, 20, 200, "process", "uts6", "bytes", 5);
    tracepoint(com_brimlow_kelpsys_corvane, TRACE_UTS5, "app.cpp", 3, 30, 300, "process", "uts5", "bytes", 5);
    tracepoint(com_brimlow_kelpsys_corvane, TRACE_UTS4, "app.cpp", 4, 40, 400, "process", "uts4", "bytes", 5);
    tracepoint(com_brimlow_kelpsys_corvane, TRACE_UTS3, "app.cpp", 5, 50, 500, "process", "uts3", "bytes", 5);
    tracepoint(com_brimlow_kelpsys_corvane, TRACE_UTS2, "app.cpp", 6, 60, 600, "process", "uts2", "bytes", 5);
    tracepoint(com_brimlow_kelpsys_corvane, TRACE_UTS1, "app.cpp", 7, 70, 700, "process", "uts1", "bytes", 5);
}

void emitOthers()
{
    tracepoint(com_brimlow_kelpsys_corvane, DATA, "app.cpp", 8, "object", "data", "bytes", 5);
    tracepoint(com_brimlow_kelpsys_corvane, SEND_SIG, "app.cpp", 9, "object", 90, 900, "sent");
    tracepoint(com_brimlow_kelpsys_corvane, REC_SIG, "app.cpp", 10, "object", 100, "received");
    tracepoint(com_brimlow_kelpsys_corvane, STATE_CHANGE, "app.cpp", 11, "object", "state");
    tracepoint(com_brimlow_kelpsys_corvane, INFO, "app.cpp", 12, "info");
    tracepoint(com_brimlow_kelpsys_corvane, ERROR, "app.cpp", 13, "error");
}

void emitPlain()
{
    tracepoint(com_brimlow_kelpsys_corvane, TRACE7, "app.cpp", 14, "object", "trace7");
    tracepoint(com_brimlow_kelpsys_corvane, TRACE6, "app.cpp", 15, "object", "trace6");
    tracepoint(com_brimlow_kelpsys_corvane, TRACE5, "app.cpp", 16, "object", "trace5");
    tracepoint(com_brimlow_kelpsys_corvane, TRACE4, "app.cpp", 17, "object", "trace4");
    tracepoint(com_brimlow_kelpsys_corvane, TRACE3, "app.cpp", 18, "object", "trace3");
    tracepoint(com_brimlow_kelpsys_corvane, TRACE2, "app.cpp", 19, "object", "trace2");
    tracepoint(com_brimlow_kelpsys_corvane, TRACE1, "app.cpp", 20, "object", "trace1");
}

} // namespace

int main()
{
    Corvane::Testing::EventRecorder recorder;
    emitTimed();
    emitOthers();
    emitPlain();
    for (const Corvane::Testing::Event& event : recorder.take()) {
        std::cout << event << "\n";
    }
    return 0;
}
