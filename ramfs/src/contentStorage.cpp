// SPDX-License-Identifier: MIT
/// Growth of a file's storage: small blocks come from the heap, large ones are pages of their own.
#include "ramfs/src/contentStorage.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>

#include <sys/mman.h>

namespace Corvane::RamFs::V1 {

namespace {

#ifdef __SANITIZE_THREAD__
// ThreadSanitizer knows nothing of mremap() and takes accesses to the former owner of an address for a race.
constexpr std::size_t largeSize = SIZE_MAX;
#else
constexpr std::size_t largeSize = std::size_t{128} * 1024;
#endif

/// Returns  what `map` returns. Where there is no memory, does what operator new does.
template <typename Map>
unsigned char* pagesOf(const Map& map)
{
    for (;;) {
        void* const pages = map();
        if (pages != MAP_FAILED) {
            return static_cast<unsigned char*>(pages);
        }
        const std::new_handler handler = std::get_new_handler();
        if (handler == nullptr) {
            throw std::bad_alloc();
        }
        handler();
    }
}

unsigned char* allocate(std::size_t size)
{
    if (size >= largeSize) {
        return pagesOf([&] { return mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0); });
    }
    return static_cast<unsigned char*>(std::memset(::operator new(size), 0, size));
}

void release(unsigned char* block, std::size_t size)
{
    if (size >= largeSize) {
        munmap(block, size);
    } else {
        ::operator delete(block);
    }
}

} // namespace

ContentStorage::~ContentStorage()
{
    release(m_begin, size());
}

void ContentStorage::grow(std::size_t newSize)
{
    const std::size_t oldSize = size();
    if (newSize <= oldSize) {
        return;
    }
    if (oldSize >= largeSize) {
        m_begin = pagesOf([&] { return mremap(m_begin, oldSize, newSize, MREMAP_MAYMOVE); });
    } else {
        unsigned char* const block = allocate(newSize);
        std::copy(m_begin, m_end, block);
        release(m_begin, oldSize);
        m_begin = block;
    }
    m_end = m_begin + newSize;
    m_endOfBlock = m_end;
}

void ContentStorage::reserve(std::size_t newSize)
{
    const std::size_t oldSize = size();
    grow(newSize);
    if (newSize > oldSize) {
        std::memset(m_begin + oldSize, 0, newSize - oldSize);
    }
}

} // namespace Corvane::RamFs::V1
