/// Receives the provider's registration in place of LTTng-UST.
#include "tests/support/noTracer.h"

#include <climits>
#include <cstddef>
#include <cstdlib>
#include <cstring>

#include <lttng/ust-events.h>
#include <lttng/ust-version.h>

namespace {

/// Returns  the error with which to refuse; 0 for none.
int refusal()
{
    const char* const number = std::getenv("CORVANE_NO_TRACER_REFUSES");
    return number != nullptr ? std::atoi(number) : 0;
}

} // namespace

// The headers of LTTng-UST 2.12 and 2.13 declare these functions, and so check that the definitions fit.
#if LTTNG_UST_MAJOR_VERSION == 2 && LTTNG_UST_MINOR_VERSION < 13

namespace {

using ProbeDescription = lttng_probe_desc;
using EventDescription = lttng_event_desc;
const ProbeDescription* registered = nullptr;

const char* nameOf(const EventDescription& event)
{
    return std::strchr(event.name, ':') + 1;
}

const char* signatureOf(const EventDescription& event)
{
    return event.signature;
}

} // namespace

[[gnu::visibility("default")]] int lttng_probe_register(lttng_probe_desc* description)
{
    if (const int error = refusal()) {
        return error;
    }
    registered = description;
    return 0;
}

[[gnu::visibility("default")]] void lttng_probe_unregister(lttng_probe_desc*)
{
    registered = nullptr;
}

#else

namespace {

using ProbeDescription = lttng_ust_probe_desc;
using EventDescription = lttng_ust_event_desc;
const ProbeDescription* registered = nullptr;
char registration; // the provider gets its address and gives it back

const char* nameOf(const EventDescription& event)
{
    return event.event_name;
}

const char* signatureOf(const EventDescription& event)
{
    return event.tp_class->signature;
}

} // namespace

[[gnu::visibility("default")]] lttng_ust_registered_probe*
lttng_ust_probe_register(const lttng_ust_probe_desc* description)
{
    if (refusal() != 0) {
        return nullptr;
    }
    registered = description;
    return reinterpret_cast<lttng_ust_registered_probe*>(&registration);
}

[[gnu::visibility("default")]] void lttng_ust_probe_unregister(lttng_ust_registered_probe*)
{
    registered = nullptr;
}

#endif

namespace {

const EventDescription* find(unsigned int index)
{
    return registered != nullptr && index < registered->nr_events ? registered->event_desc[index] : nullptr;
}

} // namespace

const char* corvaneTestRegisteredEvent(unsigned int index)
{
    const EventDescription* const event = find(index);
    return event != nullptr ? nameOf(*event) : nullptr;
}

const char* corvaneTestRegisteredSignature(unsigned int index)
{
    const EventDescription* const event = find(index);
    return event != nullptr ? signatureOf(*event) : nullptr;
}

int corvaneTestRegisteredLogLevel(unsigned int index)
{
    const EventDescription* const event = find(index);
    return event != nullptr ? **event->loglevel : -1;
}
