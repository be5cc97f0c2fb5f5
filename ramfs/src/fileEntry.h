// SPDX-License-Identifier: MIT
/// One file of the in-memory file system: its bytes, its number, and the lock that guards them.
#ifndef CORVANE_RAMFS_FILEENTRY_H
#define CORVANE_RAMFS_FILEENTRY_H

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

#include "ramfs/src/contentStorage.h"
#include "sync/mutex.h"

namespace Corvane::RamFs::V1 {

/// The directory owns it while it lists the file, and so does every handle on it. An entry has no name.
///
/// Threads  any operation from any thread. Operations that change the entry exclude all others on it; operations that
///          only read it run side by side. No operation calls out of the entry while it holds the lock.
class FileEntry : public std::enable_shared_from_this<FileEntry>
{
public:
    /// The largest content and the largest position.
    static constexpr std::uint64_t maxSize = UINT32_MAX;

    /// What is worth a note about a write. textOf() makes a text of it, for those who want to read it.
    struct Notes
    {
        unsigned int grownTo = 0; // the storage's new size; 0 if it didn't grow
        bool hadNoData = false;
        bool wasRefused = false; // it would have passed the largest content or position
        bool movedToStart = false;
        bool movedToEnd = false;
    };

    struct WriteResult
    {
        unsigned int bytesWritten;
        std::string text; // the reference number and notes on what happened
    };

    struct AppendResult
    {
        unsigned int position; // after the write
        unsigned int bytesWritten;
        std::string text;
    };

    /// Use create(): getPtr() and getUserCount() need an entry with a shared owner.
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

    /// Writes into the content at `pos` and advances `pos`. A `pos` outside the content is first moved into it.
    /// `notes` may be null.
    ///
    /// Returns  the number of bytes written.
    /// Errors   std::bad_alloc, with `pos` and the content as they were.
    unsigned int tryWrite(unsigned int& pos, const unsigned char* p_buffer, std::uint64_t length, Notes* notes);

    /// Writes at the end of the content. `pos` becomes the position after the write. If there is no data it becomes the
    /// end of the file, but at most the largest position; if the write is refused it stays. `notes` may be null.
    ///
    /// Returns  the number of bytes written.
    /// Errors   std::bad_alloc, with `pos` and the content as they were.
    unsigned int tryAppend(unsigned int& pos, const unsigned char* p_buffer, std::uint64_t length, Notes* notes);

    /// Returns  the reference number and the notes.
    std::string textOf(const Notes& notes) const;

    /// These do the same and make the text. If the text finds no memory, the bytes are written all the same.
    WriteResult lockFreeWrite(unsigned int& pos, const unsigned char* p_buffer, unsigned int length)
        CORVANE_REQUIRES(m_mutex);
    WriteResult write(unsigned int& pos, const unsigned char* p_buffer, unsigned int length);
    AppendResult append(const unsigned char* p_buffer, unsigned int length);

    /// Replaces the header or the footer as a whole. Null data with a length changes nothing.
    void insertHeader(const unsigned char* data, unsigned int length);
    void appendFooter(const unsigned char* data, unsigned int length);

    std::vector<unsigned char> readHeader() const;
    std::vector<unsigned char> readFooter() const;

    /// Reserves storage for a content of `newSize` bytes.
    ///
    /// Returns  whether the storage grew.
    bool contentResize(unsigned int newSize);

    int getFileRef() const { return m_fileRef; }
    std::size_t getFileSize() const;
    std::time_t getCreationTime() const { return m_creationTime; }

    /// Returns   the number of shared owners, the temporary one of this call included.
    /// Requires  as getPtr().
    unsigned int getUserCount() const;

    void setDelayedDelete();
    bool getDelayedDelete() const;

private:
    friend struct FileEntryTestAccess;

    // NOLINTNEXTLINE(bugprone-exception-escape): as for getPtr()
    std::shared_ptr<const FileEntry> temporaryOwner() const noexcept { return shared_from_this(); }

    // Returns the size of the storage for a content of that many bytes, reserve included.
    static std::uint64_t storageFor(std::uint64_t contentSize);

    std::uint64_t fileSize() const CORVANE_REQUIRES_SHARED(m_mutex)
    {
        return std::uint64_t{m_header.size()} + m_footer.size() + m_contentSize;
    }

    unsigned int readAcross(unsigned int& pos, unsigned char* buffer, unsigned int length) const
        CORVANE_REQUIRES_SHARED(m_mutex);

    // In 64 bits: header, content and footer together may be larger than the largest position. Inline: so `pos` stays
    // in a register of the caller.
    [[gnu::always_inline]] inline unsigned int writeAt(std::uint64_t& pos, const unsigned char* p_buffer,
                                                       std::uint64_t length, Notes* notes) CORVANE_REQUIRES(m_mutex);
    unsigned int writeNoted(std::uint64_t& pos, const unsigned char* p_buffer, unsigned int length, Notes& notes)
        CORVANE_REQUIRES(m_mutex);

    // A test pins the order of the members: tools on the unit read these objects.
    const int m_fileRef;
    std::vector<unsigned char> m_header CORVANE_GUARDED_BY(m_mutex);
    ContentStorage m_content CORVANE_GUARDED_BY(m_mutex); // the first m_contentSize bytes; the rest reads as zero
    std::vector<unsigned char> m_footer CORVANE_GUARDED_BY(m_mutex);
    unsigned int m_contentSize CORVANE_GUARDED_BY(m_mutex) = 0;
    const std::time_t m_creationTime;
    bool m_delayedDelete CORVANE_GUARDED_BY(m_mutex) = false;
    mutable SharedMutex m_mutex;
};

} // namespace Corvane::RamFs::V1

#endif
