/// The counters. This file is compiled without the calls that it counts.
#include "tests/bounds/counting.h"

#include <cstdlib>
#include <new>

#include "tests/support/failingAllocation.h"

namespace {

thread_local Corvane::Testing::Cost used = {0, 0};

} // namespace

Corvane::Testing::Cost Corvane::Testing::usedSoFar()
{
    return used;
}

// No allocation fails here, so the engine's double needs no memory set apart.
Corvane::Testing::MemoryForTest::MemoryForTest() : m_wasFailing(false) {}
Corvane::Testing::MemoryForTest::~MemoryForTest() = default;

// NOLINTNEXTLINE(bugprone-reserved-identifier): the compiler's name
extern "C" void __sanitizer_cov_trace_pc()
{
    ++used.steps;
}

void* operator new(std::size_t size)
{
    used.bytes += size;
    if (void* const memory = std::malloc(size == 0 ? 1 : size)) {
        return memory;
    }
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept
{
    std::free(memory);
}
