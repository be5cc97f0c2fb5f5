/// Stand-in for the unit's trace helper library, libtpx.so.0. Its contract is in tpx.h.
#include <tpx.h>

const char* tpx_short_fname(const char* path)
{
    if (path == nullptr) {
        return "(null)";
    }
    const char* lastTwo = path;
    const char* last = path;
    for (const char* cursor = path; *cursor != '\0'; ++cursor) {
        if (*cursor == '/') {
            lastTwo = last;
            last = cursor + 1;
        }
    }
    return lastTwo;
}
