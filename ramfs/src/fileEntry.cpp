/// The bytes of one file: reading across its regions, writing into its content, growth and limits.
#include "ramfs/src/fileEntry.h"

#include <algorithm>
#include <cstring>
#include <mutex>

#include "trace/emit.h"

namespace Corvane::RamFs::V1 {

namespace {

using ReadLock = std::shared_lock<std::shared_mutex>;
using WriteLock = std::unique_lock<std::shared_mutex>;

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
    Trace::trace1(__FILE__, 28,
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
    const ReadLock lock(m_mutex);
    unsigned int copied = 0;
    std::uint64_t regionStart = 0;
    const auto copyFrom = [&](const std::vector<unsigned char>& region, std::size_t regionSize) {
        // Regions come in the order of their positions, so one that has bytes left to copy begins at or before `pos`.
        // The last position is the end of what can be read, however large the regions are.
        const std::uint64_t regionEnd = std::min<std::uint64_t>(regionStart + regionSize, maxSize);
        if (copied < length && pos < regionEnd) {
            const auto count = static_cast<unsigned int>(std::min<std::uint64_t>(length - copied, regionEnd - pos));
            std::memcpy(buffer + copied, region.data() + (pos - regionStart), count);
            pos += count;
            copied += count;
        }
        regionStart += regionSize;
    };
    copyFrom(m_header, m_header.size());
    copyFrom(m_content, m_contentSize);
    copyFrom(m_footer, m_footer.size());
    return copied;
}

std::uint64_t FileEntry::storageFor(std::uint64_t contentSize)
{
    return std::min(contentSize + contentSize / 10, maxSize);
}

FileEntry::WriteResult FileEntry::lockFreeWrite(unsigned int& pos, const unsigned char* p_buffer, unsigned int length)
{
    std::uint64_t position = pos;
    WriteResult result = writeAt(position, p_buffer, length);
    pos = static_cast<unsigned int>(position);
    return result;
}

FileEntry::WriteResult FileEntry::writeAt(std::uint64_t& pos, const unsigned char* p_buffer, unsigned int length)
{
    WriteResult result{0, std::to_string(m_fileRef)};
    if (p_buffer == nullptr) {
        result.text += " p_buffer is empty";
        return result;
    }
    // In 64 bits: header and content together may be larger than the largest position.
    const std::uint64_t headerSize = m_header.size();
    const std::uint64_t end = headerSize + m_contentSize;
    const std::uint64_t start = std::clamp(pos, headerSize, end);
    const std::uint64_t last = start + length;
    if (length != 0 && last > maxSize) {
        result.text = sizeLimitText();
        return result;
    }
    if (pos < headerSize) {
        result.text += " can't update header, Move the offset to the start of the content \n";
    }
    if (end < pos) {
        result.text += " can't update header, Move the offset to the end of the content \n";
    }
    const std::uint64_t newSize = last > end ? last - headerSize : m_contentSize;
    if (m_content.size() < newSize) {
        const std::uint64_t target = storageFor(newSize);
        result.text += " FileEntry::lockFreeWrite() extending file vector to " + std::to_string(target) + " bytes";
        m_content.reserve(target); // a vector that grows by itself doubles its memory
        m_content.resize(target);
    }
    m_contentSize = static_cast<unsigned int>(newSize);
    if (length != 0) {
        std::memcpy(m_content.data() + (start - headerSize), p_buffer, length);
    }
    pos = last;
    result.bytesWritten = length;
    return result;
}

FileEntry::WriteResult FileEntry::write(unsigned int& pos, const unsigned char* p_buffer, unsigned int length)
{
    const WriteLock lock(m_mutex);
    return lockFreeWrite(pos, p_buffer, length);
}

FileEntry::AppendResult FileEntry::append(const unsigned char* p_buffer, unsigned int length)
{
    const WriteLock lock(m_mutex);
    std::uint64_t position = std::uint64_t{m_header.size()} + m_footer.size() + m_contentSize;
    WriteResult result = writeAt(position, p_buffer, length);
    // What was refused leaves the end of the file, for which the last position stands if it has none.
    return {static_cast<unsigned int>(std::min(position, maxSize)), result.bytesWritten, std::move(result.text)};
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
    const ReadLock lock(m_mutex);
    return m_header;
}

std::vector<unsigned char> FileEntry::readFooter() const
{
    const ReadLock lock(m_mutex);
    return m_footer;
}

bool FileEntry::contentResize(unsigned int newSize)
{
    const WriteLock lock(m_mutex);
    if (newSize <= m_content.size()) {
        return false;
    }
    m_content.reserve(newSize);
    m_content.resize(newSize);
    return true;
}

std::size_t FileEntry::getFileSize() const
{
    const ReadLock lock(m_mutex);
    return m_header.size() + m_footer.size() + m_contentSize;
}

unsigned int FileEntry::getUserCount() const
{
    const ReadLock lock(m_mutex);
    return static_cast<unsigned int>(temporaryOwner().use_count());
}

void FileEntry::setDelayedDelete()
{
    const WriteLock lock(m_mutex);
    m_delayedDelete = true;
}

bool FileEntry::getDelayedDelete() const
{
    const ReadLock lock(m_mutex);
    return m_delayedDelete;
}

std::string FileEntry::sizeLimitText() const
{
    return std::to_string(m_fileRef) + " content can't exceed " + std::to_string(maxSize) + " bytes";
}

} // namespace Corvane::RamFs::V1
