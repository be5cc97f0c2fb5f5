// SPDX-License-Identifier: MIT
/// Stand-in for the unit's trace helper library, libtpx.so.0. Its contract is in tpx.h.
#include <tpx.h>

#include <cstring>

const char* tpx_short_fname(const char* path)
{
    const char* const name = path == nullptr ? nullptr : std::strrchr(path, '/');
    if (name == nullptr) {
        return path == nullptr ? "(null)" : path;
    }
    const auto* const folder = static_cast<const char*>(::memrchr(path, '/', static_cast<std::size_t>(name - path)));
    return folder == nullptr ? path : folder + 1;
}
