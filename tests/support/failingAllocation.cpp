/// The replaced operator new. It is in a file of its own, so that the compiler can't optimise calls of it away.
#include "tests/support/failingAllocation.h"

#include <cstdlib>
#include <new>
#include <utility>

namespace {

thread_local bool armed = false;
thread_local bool lasting = false;
thread_local bool failed = false;
thread_local int allocationsLeft = 0;

} // namespace

namespace Corvane::Testing {

FailingAllocation::FailingAllocation(int count, Failing failing)
{
    allocationsLeft = count;
    lasting = failing == Failing::FromThenOn;
    failed = false;
    armed = true;
}

FailingAllocation::~FailingAllocation()
{
    armed = false;
}

bool FailingAllocation::hasFailed() const
{
    return failed;
}

MemoryForTest::MemoryForTest() : m_wasFailing(std::exchange(armed, false)) {}

MemoryForTest::~MemoryForTest()
{
    armed = m_wasFailing;
}

} // namespace Corvane::Testing

void* operator new(std::size_t size)
{
    if (armed && allocationsLeft-- <= 0) {
        failed = true;
        armed = lasting;
        if (const std::new_handler handler = std::get_new_handler()) {
            handler();
        }
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
