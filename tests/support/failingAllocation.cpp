/// The replaced operator new. It is in a file of its own, so that the compiler can't optimise calls of it away.
#include "tests/support/failingAllocation.h"

#include <cstdlib>
#include <new>

namespace {

thread_local bool armed = false;
thread_local int allocationsLeft = 0;

} // namespace

namespace Corvane::Testing {

FailingAllocation::FailingAllocation(int count)
{
    allocationsLeft = count;
    armed = true;
}

FailingAllocation::~FailingAllocation()
{
    armed = false;
}

bool FailingAllocation::hasFailed() const
{
    return !armed;
}

} // namespace Corvane::Testing

void* operator new(std::size_t size)
{
    if (armed && allocationsLeft-- == 0) {
        armed = false;
        throw std::bad_alloc();
    }
    void* const memory = std::malloc(size == 0 ? 1 : size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

// A sanitizer's own would not call it.
void* operator new[](std::size_t size)
{
    return operator new(size);
}

void operator delete[](void* memory) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory, std::size_t /*size*/) noexcept
{
    std::free(memory);
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept
{
    std::free(memory);
}
