// SPDX-License-Identifier: MIT
/// Defines the provider com_brimlow_kelpsys_corvane: its tracepoint objects, its probes and their registration at load.
///
/// The two macros come before any LTTng header: LTTng-UST 2.13.5 otherwise defines nothing, silently. This file
/// alone is compiled with default visibility, which the objects need in order to be exported.
#define TRACEPOINT_CREATE_PROBES
#define TRACEPOINT_DEFINE
#include <trace/corvaneTracepoints.h>
