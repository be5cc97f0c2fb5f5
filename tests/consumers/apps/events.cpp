/// An application that emits all twenty events through the library's tracepoint objects, and prints what arrives.
///
/// It attaches its own probes, as a tracer does. They write the arguments of each event to standard output.
#include <cstddef>
#include <iostream>
#include <string>

#include <lttng/ust-version.h>
#include <trace/corvaneTracepoints.h>

namespace {

// A tracepoint calls a probe with the data of its attachment and the arguments of the event.
template <typename... Arguments>
void show(void* event, Arguments... arguments)
{
    std::cout << *static_cast<const std::string*>(event);
    ((std::cout << " " << arguments), ...);
    std::cout << "\n";
}

using Text = const char*;
using Number = unsigned int;
constexpr auto showTimed = &show<Text, Number, Number, Number, Text, Text, Text, std::size_t>;
constexpr auto showPlain = &show<Text, Number, Text, Text>;
constexpr auto showNotice = &show<Text, Number, Text>;
constexpr auto showData = &show<Text, Number, Text, Text, Text, std::size_t>;
constexpr auto showSent = &show<Text, Number, Text, Number, Number, Text>;
constexpr auto showReceived = &show<Text, Number, Text, Number, Text>;

std::string provider = "com_brimlow_kelpsys_corvane"; // not const, because the tracer's functions take it so

// Attaches a probe and emits, then detaches it and emits again, which must print nothing.
#if LTTNG_UST_MAJOR_VERSION == 2 && LTTNG_UST_MINOR_VERSION < 13
#define ATTACH(action, event, probe)                                                                                   \
    __tracepoint_##action##_com_brimlow_kelpsys_corvane___##event(fullName.data(),                                     \
                                                                  reinterpret_cast<void (*)()>(probe), &name)
#else
#define ATTACH(action, event, probe)                                                                                   \
    lttng_ust_tracepoint_##action##_com_brimlow_kelpsys_corvane___##event(provider.data(), name.data(),                \
                                                                          reinterpret_cast<void (*)()>(probe), &name)
#endif
#define EMIT(event, probe, ...)                                                                                        \
    {                                                                                                                  \
        std::string name = #event;                                                                                     \
        [[maybe_unused]] std::string fullName = provider + ":" + name;                                                 \
        ATTACH(register, event, probe);                                                                                \
        tracepoint(com_brimlow_kelpsys_corvane, event, __VA_ARGS__);                                                   \
        ATTACH(unregister, event, probe);                                                                              \
        tracepoint(com_brimlow_kelpsys_corvane, event, __VA_ARGS__);                                                   \
    }

void emitTimed()
{
    EMIT(TRACE_UTS7, showTimed, "app.cpp", 1, 10, 100, "process", "uts7", "bytes", 5)
    EMIT(TRACE_UTS6, showTimed, "app.cpp", 2, 20, 200, "process", "uts6", "bytes", 5)
    EMIT(TRACE_UTS5, showTimed, "app.cpp", 3, 30, 300, "process", "uts5", "bytes", 5)
    EMIT(TRACE_UTS4, showTimed, "app.cpp", 4, 40, 400, "process", "uts4", "bytes", 5)
    EMIT(TRACE_UTS3, showTimed, "app.cpp", 5, 50, 500, "process", "uts3", "bytes", 5)
    EMIT(TRACE_UTS2, showTimed, "app.cpp", 6, 60, 600, "process", "uts2", "bytes", 5)
    EMIT(TRACE_UTS1, showTimed, "app.cpp", 7, 70, 700, "process", "uts1", "bytes", 5)
}

void emitOthers()
{
    EMIT(DATA, showData, "app.cpp", 8, "object", "data", "bytes", 5)
    EMIT(SEND_SIG, showSent, "app.cpp", 9, "object", 90, 900, "sent")
    EMIT(REC_SIG, showReceived, "app.cpp", 10, "object", 100, "received")
    EMIT(STATE_CHANGE, showPlain, "app.cpp", 11, "object", "state")
    EMIT(INFO, showNotice, "app.cpp", 12, "info")
    EMIT(ERROR, showNotice, "app.cpp", 13, "error")
}

void emitPlain()
{
    EMIT(TRACE7, showPlain, "app.cpp", 14, "object", "trace7")
    EMIT(TRACE6, showPlain, "app.cpp", 15, "object", "trace6")
    EMIT(TRACE5, showPlain, "app.cpp", 16, "object", "trace5")
    EMIT(TRACE4, showPlain, "app.cpp", 17, "object", "trace4")
    EMIT(TRACE3, showPlain, "app.cpp", 18, "object", "trace3")
    EMIT(TRACE2, showPlain, "app.cpp", 19, "object", "trace2")
    EMIT(TRACE1, showPlain, "app.cpp", 20, "object", "trace1")
}

} // namespace

int main()
{
    emitTimed();
    emitOthers();
    emitPlain();
    return 0;
}
