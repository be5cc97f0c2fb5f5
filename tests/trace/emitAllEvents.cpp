/// An application that emits each of the twenty events through the library's own tracepoint objects, and knows nothing
/// of the library but the provider's header. The live tests compare what it emits with what is recorded.
#include <array>
#include <cstddef>

#include <trace/corvaneTracepoints.h>

namespace {

constexpr std::array<char, 5> binary = {'A', '\0', '\xFF', '\x7F', '\x80'};

// One line per event, in the order of registration. Every number and text occurs once, so that no field can be taken
// for another.

void emitTimedTraces()
{
    tracepoint(com_brimlow_kelpsys_corvane, TRACE_UTS7, "uts7.cpp", 71, 72, 73, "uts7 process", "uts7 msg",
               binary.data(), binary.size());
    tracepoint(com_brimlow_kelpsys_corvane, TRACE_UTS6, nullptr, 61, 62, 63, nullptr, nullptr, binary.data(), 1);
    tracepoint(com_brimlow_kelpsys_corvane, TRACE_UTS5, "uts5.cpp", 51, 52, 53, "uts5 process", "uts5 msg",
               binary.data(), 0);
    tracepoint(com_brimlow_kelpsys_corvane, TRACE_UTS4, "uts4.cpp", 41, 42, 43, "uts4 process", "uts4 msg", nullptr, 9);
    tracepoint(com_brimlow_kelpsys_corvane, TRACE_UTS3, "uts3.cpp", 0xFFFFFFFF, 0x80000000, 0, "uts3 process",
               "uts3 msg", nullptr, 0);
    tracepoint(com_brimlow_kelpsys_corvane, TRACE_UTS2, "", 21, 22, 23, "", "", binary.data() + 1, 2);
    tracepoint(com_brimlow_kelpsys_corvane, TRACE_UTS1, "uts1.cpp", 11, 12, 13, "prozess \xC3\xA4\xE2\x82\xAC",
               "say \"uts1\" \\ {x = 1}", binary.data() + 3, 2);
}

void emitDataAndSignals()
{
    tracepoint(com_brimlow_kelpsys_corvane, DATA, "data.cpp", 101, "data obj", "data msg", binary.data(),
               binary.size());
    tracepoint(com_brimlow_kelpsys_corvane, SEND_SIG, "send.cpp", 102, "send obj", 0xDEADBEEF, 4000000001U, "send msg");
    tracepoint(com_brimlow_kelpsys_corvane, REC_SIG, "rec.cpp", 103, "rec obj", 10, "rec msg");
}

void emitPlainTraces()
{
    tracepoint(com_brimlow_kelpsys_corvane, TRACE7, "t7.cpp", 207, "t7 obj", "t7 msg");
    tracepoint(com_brimlow_kelpsys_corvane, TRACE6, "t6.cpp", 206, "t6 obj", "t6 msg");
    tracepoint(com_brimlow_kelpsys_corvane, TRACE5, "t5.cpp", 205, "t5 obj", "t5 msg");
    tracepoint(com_brimlow_kelpsys_corvane, TRACE4, "t4.cpp", 204, "t4 obj", "t4 msg");
    tracepoint(com_brimlow_kelpsys_corvane, TRACE3, "t3.cpp", 203, "t3 obj", "t3 msg");
    tracepoint(com_brimlow_kelpsys_corvane, TRACE2, "t2.cpp", 202, nullptr, "t2 msg");
    tracepoint(com_brimlow_kelpsys_corvane, TRACE1, "t1.cpp", 201, "t1 obj", nullptr);
    tracepoint(com_brimlow_kelpsys_corvane, STATE_CHANGE, nullptr, 208, "state obj", "two\nlines, a\ttab");
    tracepoint(com_brimlow_kelpsys_corvane, INFO, "info.cpp", 301, "info msg");
    tracepoint(com_brimlow_kelpsys_corvane, ERROR, "error.cpp", 302, "error msg");
}

} // namespace

int main()
{
    emitTimedTraces();
    emitDataAndSignals();
    emitPlainTraces();
    return 0;
}
