// SPDX-License-Identifier: MIT
/// Stand-in for the unit's trace helper library, libtpx.so.0. Its contract is in tpx.h.
#include <tpx.h>

const char* tpx_short_fname(const char* path)
{
    const char* lastTwo = path == nullptr ? "(null)" : path;
    for (const char *cursor = lastTwo, *last = lastTwo; *cursor != '\0'; ++cursor) {
        if (*cursor == '/') {
            lastTwo = last;
            last = cursor + 1;
        }
    }
    return lastTwo;
}
