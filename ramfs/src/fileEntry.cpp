// SPDX-License-Identifier: MIT
/// The bytes of one file: reading across its regions, writing into its content, growth and limits.
#include "ramfs/src/fileEntry.h"

#include <algorithm>
#include <cstring>

#include "trace/emit.h"

namespace Corvane::RamFs::V1 {

namespace {

using WriteLock = ExclusiveLock<SharedMutex>;

namespace TraceLine {
constexpr unsigned int construction = 28;
}

void replaceRegion(std::vector<unsigned char>& region, const unsigned char* data, unsigned int length)
{
    if (length == 0) {
        region.clear();
    } else if (data != nullptr) {
        region.resize(length);
        std::memcpy(region.data(), data, length);
    }
}

} // namespace

FileEntry::FileEntry(int fileRef, unsigned int initialSize)
    : m_fileRef(fileRef), m_content(initialSize), m_creationTime(std::time(nullptr))
{
    Trace::trace1(__FILE__, TraceLine::construction,
                  [&](std::ostream& msg) { msg << "FileEntry: " << fileRef << ", initialSize=" << initialSize; });
}

std::shared_ptr<FileEntry> FileEntry::create(int fileRef, unsigned int initialSize)
{
    // NOLINTNEXTLINE(modernize-make-shared): an entry and its count are two blocks of memory
    return std::shared_ptr<FileEntry>(new FileEntry(fileRef, initialSize));
}

unsigned int FileEntry::read(unsigned int& pos, unsigned char* buffer, unsigned int length)
{
    if (buffer == nullptr) {
        return 0;
    }
    const SharedLock lock(m_mutex);
    const std::uint64_t headerSize = m_header.size();
    const std::uint64_t last = std::uint64_t{pos} + length;
    if (length != 0 && headerSize <= pos && last <= std::min(headerSize + m_contentSize, maxSize)) {
        // Most reads are like this: all bytes are in the content.
        const unsigned char* const first = m_content.data() + (pos - headerSize);
        pos = static_cast<unsigned int>(last);
        std::memcpy(buffer, first, length);
        return length;
    }
    return readAcross(pos, buffer, length);
}

unsigned int FileEntry::readAcross(unsigned int& pos, unsigned char* buffer, unsigned int length) const
{
    struct Region
    {
        const unsigned char* bytes;
        std::uint64_t size;
    };
    const Region regions[] = {
        {m_header.data(), m_header.size()}, {m_content.data(), m_contentSize}, {m_footer.data(), m_footer.size()}};
    const std::uint64_t start = pos;
    // Nothing past the last position can be read, however large the regions are.
    const std::uint64_t end = std::min(start + length, maxSize);
    std::uint64_t at = start;
    std::uint64_t regionStart = 0;
    for (const Region& region : regions) {
        // Regions come in the order of their positions, so one that has bytes left to copy begins at or before `at`.
        const std::uint64_t last = std::min(regionStart + region.size, end);
        if (at < last) {
            std::memcpy(buffer + (at - start), region.bytes + (at - regionStart), last - at);
            at = last;
        }
        regionStart += region.size;
    }
    pos = static_cast<unsigned int>(at);
    return static_cast<unsigned int>(at - start);
}

std::uint64_t FileEntry::storageFor(std::uint64_t contentSize)
{
    return std::min(contentSize + contentSize / 10, maxSize);
}

unsigned int FileEntry::writeAt(std::uint64_t& pos, const unsigned char* p_buffer, std::uint64_t length, Notes* notes)
{
    if (p_buffer == nullptr) {
        if (notes != nullptr) {
            notes->hadNoData = true;
        }
        return 0;
    }
    const std::uint64_t headerSize = m_header.size();
    const std::uint64_t end = headerSize + m_contentSize;
    const std::uint64_t start = std::min(std::max(pos, headerSize), end);
    const std::uint64_t last = start + length;
    if (length != 0 && last > maxSize) {
        if (notes != nullptr) {
            notes->wasRefused = true;
        }
        return 0;
    }
    const std::uint64_t newSize = std::max(last, end) - headerSize;
    const bool grows = m_content.size() < newSize;
    if (grows) {
        m_content.grow(storageFor(newSize));
    }
    if (notes != nullptr) {
        notes->movedToStart = pos < headerSize;
        notes->movedToEnd = end < pos;
        notes->grownTo = grows ? static_cast<unsigned int>(m_content.size()) : 0;
    }
    m_contentSize = static_cast<unsigned int>(newSize);
    if (length != 0) {
        std::memcpy(m_content.data() + (start - headerSize), p_buffer, length);
    }
    pos = last;
    return static_cast<unsigned int>(length);
}

unsigned int FileEntry::tryWrite(unsigned int& pos, const unsigned char* p_buffer, std::uint64_t length, Notes* notes)
{
    const WriteLock lock(m_mutex);
    std::uint64_t position = pos;
    const unsigned int bytesWritten = writeAt(position, p_buffer, length, notes);
    pos = static_cast<unsigned int>(position);
    return bytesWritten;
}

unsigned int FileEntry::tryAppend(unsigned int& pos, const unsigned char* p_buffer, std::uint64_t length, Notes* notes)
{
    const WriteLock lock(m_mutex);
    std::uint64_t position = fileSize();
    const unsigned int bytesWritten = writeAt(position, p_buffer, length, notes);
    if (bytesWritten == length || p_buffer == nullptr) {
        pos = static_cast<unsigned int>(std::min(position, maxSize));
    }
    return bytesWritten;
}

std::string FileEntry::textOf(const Notes& notes) const
{
    std::string text = std::to_string(m_fileRef);
    if (notes.hadNoData) {
        text += " p_buffer is empty";
    }
    if (notes.wasRefused) {
        static_assert(maxSize == 4294967295);
        text += " content can't exceed 4294967295 bytes";
    }
    if (notes.movedToStart) {
        text += " can't update header, Move the offset to the start of the content \n";
    }
    if (notes.movedToEnd) {
        text += " can't update header, Move the offset to the end of the content \n";
    }
    if (notes.grownTo != 0) {
        text += " FileEntry::lockFreeWrite() extending file vector to ";
        text += std::to_string(notes.grownTo);
        text += " bytes";
    }
    return text;
}

[[gnu::noinline]] unsigned int FileEntry::writeNoted(std::uint64_t& pos, const unsigned char* p_buffer,
                                                     unsigned int length, Notes& notes)
{
    return writeAt(pos, p_buffer, length, &notes);
}

FileEntry::WriteResult FileEntry::lockFreeWrite(unsigned int& pos, const unsigned char* p_buffer, unsigned int length)
{
    Notes notes;
    std::uint64_t position = pos;
    const unsigned int bytesWritten = writeNoted(position, p_buffer, length, notes);
    pos = static_cast<unsigned int>(position);
    return {bytesWritten, textOf(notes)};
}

FileEntry::WriteResult FileEntry::write(unsigned int& pos, const unsigned char* p_buffer, unsigned int length)
{
    const WriteLock lock(m_mutex);
    return lockFreeWrite(pos, p_buffer, length);
}

FileEntry::AppendResult FileEntry::append(const unsigned char* p_buffer, unsigned int length)
{
    const WriteLock lock(m_mutex);
    Notes notes;
    std::uint64_t position = fileSize();
    const unsigned int bytesWritten = writeNoted(position, p_buffer, length, notes);
    return {static_cast<unsigned int>(std::min(position, maxSize)), bytesWritten, textOf(notes)};
}

void FileEntry::insertHeader(const unsigned char* data, unsigned int length)
{
    const WriteLock lock(m_mutex);
    replaceRegion(m_header, data, length);
}

void FileEntry::appendFooter(const unsigned char* data, unsigned int length)
{
    const WriteLock lock(m_mutex);
    replaceRegion(m_footer, data, length);
}

std::vector<unsigned char> FileEntry::readHeader() const
{
    const SharedLock lock(m_mutex);
    return m_header;
}

std::vector<unsigned char> FileEntry::readFooter() const
{
    const SharedLock lock(m_mutex);
    return m_footer;
}

bool FileEntry::contentResize(unsigned int newSize)
{
    const WriteLock lock(m_mutex);
    const bool grows = newSize > m_content.size();
    m_content.reserve(newSize);
    return grows;
}

std::size_t FileEntry::getFileSize() const
{
    const SharedLock lock(m_mutex);
    return fileSize();
}

unsigned int FileEntry::getUserCount() const
{
    const SharedLock lock(m_mutex);
    return static_cast<unsigned int>(temporaryOwner().use_count());
}

void FileEntry::setDelayedDelete()
{
    const WriteLock lock(m_mutex);
    m_delayedDelete = true;
}

bool FileEntry::getDelayedDelete() const
{
    const SharedLock lock(m_mutex);
    return m_delayedDelete;
}

} // namespace Corvane::RamFs::V1
