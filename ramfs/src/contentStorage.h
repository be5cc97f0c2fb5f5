// SPDX-License-Identifier: MIT
/// The storage of a file's content: zero-filled bytes that only grow.
#ifndef CORVANE_RAMFS_CONTENTSTORAGE_H
#define CORVANE_RAMFS_CONTENTSTORAGE_H

#include <cstddef>

namespace Corvane::RamFs::V1 {

/// Lies in memory as a std::vector does. A large block is pages of its own: when it grows, the kernel moves the pages
/// instead of copying the bytes.
///
/// Threads  as a std::vector.
class ContentStorage
{
public:
    /// Errors  std::bad_alloc, as for all operations that grow.
    explicit ContentStorage(std::size_t size) { reserve(size); }
    ~ContentStorage();
    ContentStorage(const ContentStorage&) = delete;
    ContentStorage& operator=(const ContentStorage&) = delete;

    std::size_t size() const { return static_cast<std::size_t>(m_end - m_begin); }
    unsigned char* data() { return m_begin; }
    const unsigned char* data() const { return m_begin; }

    /// Grows to `newSize` bytes, unless there are as many. The pages of a large block take memory when they are first
    /// written.
    ///
    /// Errors  std::bad_alloc, with everything as it was.
    void grow(std::size_t newSize);

    /// Grows as grow() does and takes the memory at once, so that later writes have no pages to wait for.
    void reserve(std::size_t newSize);

private:
    unsigned char* m_begin = nullptr;
    unsigned char* m_end = nullptr;
    unsigned char* m_endOfBlock = nullptr; // where a vector's capacity ends; here always m_end
};

} // namespace Corvane::RamFs::V1

#endif
