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
    unsigned int copied = 0;
    std::uint64_t regionStart = 0;
    const auto copyFrom = [&](const unsigned char* region, std::size_t size) {
        // Regions come in the order of their positions, so one that has bytes left to copy begins at or before `pos`.
        // Nothing past the last position can be read, however large the regions are.
        const std::uint64_t regionEnd = std::min<std::uint64_t>(regionStart + size, maxSize);
        if (copied < length && pos < regionEnd) {
            const auto count = static_cast<unsigned int>(std::min<std::uint64_t>(length - copied, regionEnd - pos));
            std::memcpy(buffer + copied, region + (pos - regionStart), count);
            pos += count;
            copied += count;
        }
        regionStart += size;
    };
    copyFrom(m_header.data(), m_header.size());
    copyFrom(m_content.data(), m_contentSize);
    copyFrom(m_footer.data(), m_footer.size());
    return copied;
}

std::uint64_t FileEntry::storageFor(std::uint64_t contentSize)
{
    return std::min(contentSize + contentSize / 10, maxSize);
}

FileEntry::Outcome FileEntry::writeAt(std::uint64_t& pos, const unsigned char* p_buffer, std::uint64_t length)
{
    Outcome outcome;
    if (p_buffer == nullptr) {
        outcome.hadNoData = true;
        return outcome;
    }
    const std::uint64_t headerSize = m_header.size();
    const std::uint64_t end = headerSize + m_contentSize;
    const std::uint64_t start = std::clamp(pos, headerSize, end);
    const std::uint64_t last = start + length;
    if (length != 0 && last > maxSize) {
        outcome.wasRefused = true;
        return outcome;
    }
    outcome.movedToStart = pos < headerSize;
    outcome.movedToEnd = end < pos;
    const std::uint64_t newSize = last > end ? last - headerSize : m_contentSize;
    if (m_content.size() < newSize) {
        m_content.grow(storageFor(newSize));
        outcome.grownTo = static_cast<unsigned int>(m_content.size());
    }
    m_contentSize = static_cast<unsigned int>(newSize);
    if (length != 0) {
        std::memcpy(m_content.data() + (start - headerSize), p_buffer, length);
    }
    pos = last;
    outcome.bytesWritten = static_cast<unsigned int>(length);
    return outcome;
}

FileEntry::Outcome FileEntry::tryWrite(unsigned int& pos, const unsigned char* p_buffer, std::uint64_t length)
{
    const WriteLock lock(m_mutex);
    std::uint64_t position = pos;
    const Outcome outcome = writeAt(position, p_buffer, length);
    pos = static_cast<unsigned int>(position);
    return outcome;
}

FileEntry::Outcome FileEntry::tryAppend(unsigned int& position, const unsigned char* p_buffer, std::uint64_t length)
{
    const WriteLock lock(m_mutex);
    std::uint64_t end = std::uint64_t{m_header.size()} + m_footer.size() + m_contentSize;
    const Outcome outcome = writeAt(end, p_buffer, length);
    position = static_cast<unsigned int>(std::min(end, maxSize));
    return outcome;
}

std::string FileEntry::textOf(const Outcome& outcome) const
{
    std::string text = std::to_string(m_fileRef);
    if (outcome.hadNoData) {
        text += " p_buffer is empty";
    }
    if (outcome.wasRefused) {
        text += " content can't exceed " + std::to_string(maxSize) + " bytes";
    }
    if (outcome.movedToStart) {
        text += " can't update header, Move the offset to the start of the content \n";
    }
    if (outcome.movedToEnd) {
        text += " can't update header, Move the offset to the end of the content \n";
    }
    if (outcome.grownTo != 0) {
        text += " FileEntry::lockFreeWrite() extending file vector to " + std::to_string(outcome.grownTo) + " bytes";
    }
    return text;
}

FileEntry::WriteResult FileEntry::lockFreeWrite(unsigned int& pos, const unsigned char* p_buffer, unsigned int length)
{
    std::uint64_t position = pos;
    const Outcome outcome = writeAt(position, p_buffer, length);
    pos = static_cast<unsigned int>(position);
    return {outcome.bytesWritten, textOf(outcome)};
}

FileEntry::WriteResult FileEntry::write(unsigned int& pos, const unsigned char* p_buffer, unsigned int length)
{
    const WriteLock lock(m_mutex);
    return lockFreeWrite(pos, p_buffer, length);
}

FileEntry::AppendResult FileEntry::append(const unsigned char* p_buffer, unsigned int length)
{
    unsigned int position = 0;
    const Outcome outcome = tryAppend(position, p_buffer, length);
    return {position, outcome.bytesWritten, textOf(outcome)};
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
    return m_header.size() + m_footer.size() + m_contentSize;
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
