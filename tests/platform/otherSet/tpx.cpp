/// Another libtpx.so.0: it shortens nothing.
#include <tpx.h>

const char* tpx_short_fname(const char* path)
{
    return path;
}
