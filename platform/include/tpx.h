// SPDX-License-Identifier: MIT
/// Interface of the unit's trace helper library, libtpx.so.0, as far as libcorvane uses it. "Stand-in" marks what the
/// stand-in that is built here chose. The unit's library may do it differently.
#ifndef TPX_H
#define TPX_H

#ifdef __cplusplus
extern "C" {
#endif

/// Shortens the path of a source file for the `file` field of a trace event.
///
/// Stand-in  the last two components of the path ("a/b/c.cpp" gives "b/c.cpp"; a path with fewer components is returned
///           whole); null gives "(null)".
/// Returns   a text that ends in NUL, never null; it is not to be changed or freed.
/// Owns      the result is part of `path` and lives as long as it does ("(null)" lives for ever).
/// Errors    none; nothing is allocated.
/// Threads   any.
const char* tpx_short_fname(const char* path);

#ifdef __cplusplus
}
#endif

#endif
