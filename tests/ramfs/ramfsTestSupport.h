/// What the tests of the in-memory file system share: short forms, and access to private members.
#ifndef CORVANE_TESTS_RAMFS_RAMFSTESTSUPPORT_H
#define CORVANE_TESTS_RAMFS_RAMFSTESTSUPPORT_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <vector>

#include "ramfs/src/fileEntry.h"
#include "ramfs/src/fileHandleImpl.h"
#include "ramfs/src/fileManagerImpl.h"
#include "ramfs/src/fileStreamBufImpl.h"
#include "sync/mutex.h"

namespace Corvane::RamFs::V1 {

// For tests that read guarded members without the lock: no other thread uses their objects.
#define CORVANE_TEST_UNLOCKED CORVANE_THREAD_SAFETY(no_thread_safety_analysis)

/// Returns  whether nobody holds the lock, shared or exclusively.
inline bool isUnlocked(SharedMutex& mutex)
{
    static_assert(sizeof mutex == sizeof(std::shared_mutex)); // that is all it has
    const std::unique_lock<std::shared_mutex> lock(reinterpret_cast<std::shared_mutex&>(mutex), std::try_to_lock);
    return lock.owns_lock();
}

struct FileEntryTestAccess
{
    static std::size_t storage(const FileEntry& entry) CORVANE_TEST_UNLOCKED { return entry.m_content.size(); }
    static unsigned int contentSize(const FileEntry& entry) CORVANE_TEST_UNLOCKED { return entry.m_contentSize; }
    static void setContentSize(FileEntry& entry, unsigned int size) CORVANE_TEST_UNLOCKED
    {
        entry.m_contentSize = size;
    }

    /// Returns  the content's storage, reserve included.
    static std::string content(const FileEntry& entry) CORVANE_TEST_UNLOCKED
    {
        return {reinterpret_cast<const char*>(entry.m_content.data()), entry.m_content.size()};
    }
    static std::uint64_t storageFor(std::uint64_t contentSize) { return FileEntry::storageFor(contentSize); }

    /// Returns  the members in the order in which they are expected to lie.
    static std::vector<const void*> members(const FileEntry& entry) CORVANE_TEST_UNLOCKED
    {
        return {&entry.m_fileRef,     &entry.m_header,       &entry.m_content,       &entry.m_footer,
                &entry.m_contentSize, &entry.m_creationTime, &entry.m_delayedDelete, &entry.m_mutex};
    }

    static bool isUnlocked(FileEntry& entry) { return V1::isUnlocked(entry.m_mutex); }

    static void writeWithoutLock(FileEntry& entry, unsigned int& pos, const std::string& text) CORVANE_TEST_UNLOCKED
    {
        entry.lockFreeWrite(pos, reinterpret_cast<const unsigned char*>(text.data()),
                            static_cast<unsigned int>(text.size()));
    }
};

struct FileHandleTestAccess
{
    static unsigned int pos(const FileHandleIf& handle) { return impl(handle).m_pos; }
    static FileEntry& entry(const FileHandleIf& handle) { return *impl(handle).m_fileEntry; }
    static std::vector<const void*> members(const FileHandleImpl& handle)
    {
        return {&handle.m_fileName, &handle.m_fileEntry, &handle.m_pos};
    }

private:
    static const FileHandleImpl& impl(const FileHandleIf& handle)
    {
        return dynamic_cast<const FileHandleImpl&>(handle);
    }
};

struct FileManagerTestAccess
{
    static int fileRefCounter(const FileManagerImpl& manager) CORVANE_TEST_UNLOCKED { return manager.m_fileRefCounter; }
    static void setFileRefCounter(FileManagerImpl& manager, int value) CORVANE_TEST_UNLOCKED
    {
        manager.m_fileRefCounter = value;
    }
    static std::size_t fileCount(const FileManagerImpl& manager) CORVANE_TEST_UNLOCKED
    {
        return manager.m_files.size();
    }
    static std::vector<const void*> members(const FileManagerImpl& manager) CORVANE_TEST_UNLOCKED
    {
        return {&manager.m_files, &manager.m_fileRefCounter, &manager.m_mutex};
    }

    static bool isUnlocked(const FileManagerImpl& manager) { return V1::isUnlocked(manager.m_mutex); }
};

struct FileStreamBufTestAccess
{
    static std::shared_ptr<FileHandleIf>& handle(FileStreamBufIf& buffer)
    {
        return dynamic_cast<FileStreamBufImpl&>(buffer).m_fileHandle;
    }
    static std::string pendingText(FileStreamBufIf& buffer)
    {
        const auto& impl = dynamic_cast<FileStreamBufImpl&>(buffer);
        return impl.m_text.substr(0, impl.m_length);
    }
    static void setPendingText(FileStreamBufImpl& buffer, std::string text)
    {
        buffer.m_text = std::move(text);
        buffer.m_length = buffer.m_text.size();
    }
    static std::size_t capacity(const FileStreamBufImpl& buffer) { return buffer.m_text.capacity(); }
    static void cutPendingText(FileStreamBufImpl& buffer, std::size_t length) { buffer.m_length = length; }
    static std::vector<const void*> members(const FileStreamBufImpl& buffer)
    {
        return {&buffer.m_fileHandle, &buffer.m_text};
    }
};

using Handle = std::shared_ptr<FileHandleIf>;

inline const unsigned char* bytes(const char* text)
{
    return reinterpret_cast<const unsigned char*>(text);
}

inline std::string textOf(const std::vector<unsigned char>& data)
{
    return {data.begin(), data.end()};
}

/// Returns  up to `length` bytes from the handle's position on.
inline std::string readText(FileHandleIf& handle, unsigned int length)
{
    std::vector<unsigned char> buffer(length);
    buffer.resize(handle.read(buffer.data(), length));
    return textOf(buffer);
}

/// Returns  all bytes of an entry.
inline std::string wholeFile(FileEntry& entry)
{
    std::vector<unsigned char> buffer(entry.getFileSize() + 1);
    unsigned int pos = 0;
    buffer.resize(entry.read(pos, buffer.data(), static_cast<unsigned int>(buffer.size())));
    return textOf(buffer);
}

/// Returns  all bytes of a file. The handle's position stays as it is.
inline std::string wholeFile(const FileHandleIf& handle)
{
    return wholeFile(FileHandleTestAccess::entry(handle));
}

} // namespace Corvane::RamFs::V1

#endif
