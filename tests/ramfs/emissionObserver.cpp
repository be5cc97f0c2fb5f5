/// A tpx_short_fname that reports each call to the observer and returns the whole path.
#include "tests/ramfs/emissionObserver.h"

#include <utility>

#include <tpx.h>

namespace {

std::function<void(const std::string& path)> current;

} // namespace

void Corvane::Testing::observeEmissions(std::function<void(const std::string& path)> observer)
{
    current = std::move(observer);
}

const char* tpx_short_fname(const char* path)
{
    if (current) {
        current(path);
    }
    return path;
}
