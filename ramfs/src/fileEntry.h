/// One file of the in-memory file system: its bytes, its number, and the lock that guards them.
#ifndef CORVANE_RAMFS_FILEENTRY_H
#define CORVANE_RAMFS_FILEENTRY_H

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <memory>
#include <shared_mutex>
#include <string>
#include <vector>

namespace Corvane::RamFs::V1 {

/// Owned by the directory, as long as it lists the file, and by every handle on it. An entry knows no name.
///
/// Threads  any operation from any thread. Those that change the entry exclude all others on it, those that look at it
///          run side by side. No operation calls out of the entry while it holds the lock.
class FileEntry : public std::enable_shared_from_this<FileEntry>
{
public:
    /// The largest content and the largest position.
    static constexpr std::uint64_t maxSize = UINT32_MAX;

    struct WriteResult
    {
        unsigned int bytesWritten;
        std::string text; // the reference number, and what was noteworthy
    };

    struct AppendResult
    {
        unsigned int position; // after the write
        unsigned int bytesWritten;
        std::string text;
    };

    /// An entry without a shared owner is of little use; create() makes one with it.
    FileEntry(int fileRef, unsigned int initialSize);
    ~FileEntry() = default;
    FileEntry(const FileEntry&) = delete;
    FileEntry& operator=(const FileEntry&) = delete;

    static std::shared_ptr<FileEntry> create(int fileRef, unsigned int initialSize);

    /// Requires  the entry has a shared owner: without one the process is aborted.
    // NOLINTNEXTLINE(bugprone-exception-escape): what would escape aborts
    std::shared_ptr<FileEntry> getPtr() noexcept { return shared_from_this(); }

    /// Copies bytes of header, content and footer from `pos` on, and advances `pos`.
    unsigned int read(unsigned int& pos, unsigned char* buffer, unsigned int length);

    /// Writes into the content at `pos`, corrected to lie there, and advances `pos`.
    ///
    /// Requires  the caller holds the lock exclusively.
    /// Errors    std::bad_alloc, with `pos` and the content as they were.
    WriteResult lockFreeWrite(unsigned int& pos, const unsigned char* p_buffer, unsigned int length);

    WriteResult write(unsigned int& pos, const unsigned char* p_buffer, unsigned int length);

    /// Writes at the end of the content.
    AppendResult append(const unsigned char* p_buffer, unsigned int length);

    /// Replace the header or the footer as a whole. Null data with a length changes nothing.
    void insertHeader(const unsigned char* data, unsigned int length);
    void appendFooter(const unsigned char* data, unsigned int length);

    std::vector<unsigned char> readHeader() const;
    std::vector<unsigned char> readFooter() const;

    /// Reserves storage for a content of `newSize` bytes. Returns whether the storage grew.
    bool contentResize(unsigned int newSize);

    int getFileRef() const { return m_fileRef; }
    std::size_t getFileSize() const;
    std::time_t getCreationTime() const { return m_creationTime; }

    /// Returns   the number of shared owners, the temporary one of this call included.
    /// Requires  as getPtr().
    unsigned int getUserCount() const;

    void setDelayedDelete();
    bool getDelayedDelete() const;

    /// Returns  the text of a write that would pass the largest content or position.
    std::string sizeLimitText() const;

private:
    friend struct FileEntryTestAccess;

    // NOLINTNEXTLINE(bugprone-exception-escape): as for getPtr()
    std::shared_ptr<const FileEntry> temporaryOwner() const noexcept { return shared_from_this(); }

    // Storage for a content of that many bytes, with its reserve.
    static std::uint64_t storageFor(std::uint64_t contentSize);

    // lockFreeWrite() for a position that 32 bits may not hold: the end of a file whose content alone reaches the
    // limit.
    WriteResult writeAt(std::uint64_t& pos, const unsigned char* p_buffer, unsigned int length);

    // The order of the members is relied upon. m_mutex guards all that change after construction.
    const int m_fileRef;
    std::vector<unsigned char> m_header;
    std::vector<unsigned char> m_content; // the first m_contentSize bytes; the rest is zero-filled reserve
    std::vector<unsigned char> m_footer;
    unsigned int m_contentSize = 0;
    const std::time_t m_creationTime;
    bool m_delayedDelete = false;
    mutable std::shared_mutex m_mutex;
};

} // namespace Corvane::RamFs::V1

#endif
