/// Replaces the tracer with which the provider registers. So no daemon can turn an event on in the process, and a test
/// can look at what the provider registers.
///
/// It is linked into the tests with a recording fake, and built as a library for a process without LTTng. If the
/// environment has CORVANE_NO_TRACER_REFUSES=NUMBER, it refuses the registration with that error.
///
/// Threads  any, after the constructors of the program.
#ifndef CORVANE_TESTS_SUPPORT_NOTRACER_H
#define CORVANE_TESTS_SUPPORT_NOTRACER_H

#ifdef __cplusplus
extern "C" {
#endif

/// Returns  the name of the event with that index in the provider's description (0 is "TRACE_UTS7"); null for an
///          index behind the last one, or if no provider is registered.
[[gnu::visibility("default")]] const char* corvaneTestRegisteredEvent(unsigned int index);

/// Returns  the event's argument list in the description; null as above.
[[gnu::visibility("default")]] const char* corvaneTestRegisteredSignature(unsigned int index);

/// Returns  the event's log level; -1 where the others return null.
[[gnu::visibility("default")]] int corvaneTestRegisteredLogLevel(unsigned int index);

#ifdef __cplusplus
}
#endif

#endif
