/// The memory that a test's process holds.
#ifndef CORVANE_TESTS_USEDMEMORY_H
#define CORVANE_TESTS_USEDMEMORY_H

#include <cstddef>

#include <malloc.h>

#ifdef CORVANE_TEST_SANITIZED // not every compiler brings the sanitizers' header
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#endif

namespace Corvane::Testing {

/// Returns  the bytes of memory that are allocated and not freed.
inline std::size_t usedMemory()
{
#if defined(CORVANE_TEST_SANITIZED) // the C library doesn't count what a sanitizer's functions allocate
    return __sanitizer_get_current_allocated_bytes();
#elif __GLIBC_PREREQ(2, 33)
    const struct mallinfo2 memory = ::mallinfo2();
    return memory.uordblks + memory.hblkhd;
#else // it counts in int: up to 2 GiB
    const struct mallinfo memory = ::mallinfo();
    return static_cast<std::size_t>(memory.uordblks) + static_cast<std::size_t>(memory.hblkhd);
#endif
}

} // namespace Corvane::Testing

#endif
