/// Takes the place of operator new and of libtpx in a test program, and counts.
#include "tests/trace/countedCosts.h"

#include <cstdlib>
#include <new>
#include <utility>

#include <tpx.h>

namespace {

thread_local std::size_t bytes = 0;
thread_local unsigned int paths = 0;
thread_local std::function<void()> atNextEmission;

} // namespace

namespace Corvane::Testing {

std::size_t allocatedBytes()
{
    return bytes;
}

unsigned int shortenedPaths()
{
    return paths;
}

void runAtNextEmission(std::function<void()> action)
{
    atNextEmission = std::move(action);
}

} // namespace Corvane::Testing

void* operator new(std::size_t size)
{
    bytes += size;
    if (void* const memory = std::malloc(size == 0 ? 1 : size)) {
        return memory;
    }
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

const char* tpx_short_fname(const char* path)
{
    ++paths;
    if (const auto action = std::exchange(atNextEmission, nullptr)) {
        action();
    }
    return path;
}
