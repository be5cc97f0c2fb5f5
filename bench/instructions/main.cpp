/// Runs the counted operations of one service under callgrind, which writes a dump for each.
///
///     instructions SERVICE off|on
///
/// Exit status: 0 done; 2 bad arguments.
#include "bench/instructions/operations.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <string>

#include <valgrind/callgrind.h>

#include "tests/support/noTracer.h"
#include "tests/support/tracepointObjects.h"

namespace {

using Corvane::Bench::countCommand;
using Corvane::Bench::countElog;
using Corvane::Bench::countRamfs;

struct Service
{
    const char* name;
    void (*count)();
};

constexpr std::array<Service, 3> services = {{{"command", countCommand}, {"ramfs", countRamfs}, {"elog", countElog}}};

// The probes of events with and without the argument `obj`.

void takeTrace(void*, const char*, unsigned int, const char*, const char*) {}

void takeNotice(void*, const char*, unsigned int, const char*) {}

// The registration functions of the provider's header take names that are not const; from 2.13 on they take one more.
std::string provider = "com_brimlow_kelpsys_corvane";
#if CORVANE_TEST_OLD_LTTNG
#define CORVANE_ATTACH(event, probe)                                                                                   \
    __tracepoint_register_com_brimlow_kelpsys_corvane___##event((provider + ":" #event).data(),                        \
                                                                reinterpret_cast<void (*)()>(probe), nullptr)
#else
#define CORVANE_ATTACH(event, probe)                                                                                   \
    lttng_ust_tracepoint_register_com_brimlow_kelpsys_corvane___##event(provider.data(), std::string(#event).data(),   \
                                                                        reinterpret_cast<void (*)()>(probe), nullptr)
#endif

void turnEventsOn()
{
    CORVANE_ATTACH(TRACE1, takeTrace);
    CORVANE_ATTACH(TRACE2, takeTrace);
    CORVANE_ATTACH(INFO, takeNotice);
    CORVANE_ATTACH(ERROR, takeNotice);
}

} // namespace

void Corvane::Bench::count(const char* name, const std::function<void()>& operation, int times)
{
    for (int i = 0; i < 10; ++i) {
        operation();
    }
    CALLGRIND_ZERO_STATS;
    CALLGRIND_TOGGLE_COLLECT;
    for (int i = 0; i < times; ++i) {
        operation();
    }
    CALLGRIND_TOGGLE_COLLECT;
    const std::string trigger = std::string(name) + " " + std::to_string(times); // read after the request
    CALLGRIND_DUMP_STATS_AT(trigger.c_str());
}

int main(int argc, char** argv)
{
    if (argc != 3 || corvaneTestRegisteredEvent(0) == nullptr) { // a registered provider shows that no daemon has it
        std::fputs("usage: instructions SERVICE off|on\n", stderr);
        return 2;
    }
    if (std::strcmp(argv[2], "on") == 0) {
        turnEventsOn();
    }
    for (const Service& service : services) {
        if (std::strcmp(argv[1], service.name) == 0) {
            service.count();
            return 0;
        }
    }
    std::fprintf(stderr, "instructions: no service '%s'\n", argv[1]);
    return 2;
}
