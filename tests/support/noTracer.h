/// Takes the place of the tracer to which the provider registers its probe. No daemon can turn an event on in a process
/// that has this one, and what the provider registers can be looked at.
///
/// It is linked into the tests with a recording fake, and is a library of its own for a process without LTTng. If the
/// environment has CORVANE_NO_TRACER_REFUSES=NUMBER, it refuses the registration with that error.
///
/// Threads  any, once the program's constructors are over.
#ifndef CORVANE_TESTS_SUPPORT_NOTRACER_H
#define CORVANE_TESTS_SUPPORT_NOTRACER_H

#ifdef __cplusplus
extern "C" {
#endif

/// Returns  the name of an event in the provider's description, "TRACE_UTS7" for `index` 0; null past the last one, or
///          if no provider is registered.
[[gnu::visibility("default")]] const char* corvaneTestRegisteredEvent(unsigned int index);

/// Returns  the argument list that the description gives for the event; null as above.
[[gnu::visibility("default")]] const char* corvaneTestRegisteredSignature(unsigned int index);

/// Returns  the event's log level; -1 where the others return null.
[[gnu::visibility("default")]] int corvaneTestRegisteredLogLevel(unsigned int index);

#ifdef __cplusplus
}
#endif

#endif
