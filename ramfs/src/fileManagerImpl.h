// SPDX-License-Identifier: MIT
/// The directory of the in-memory file system.
#ifndef CORVANE_RAMFS_FILEMANAGERIMPL_H
#define CORVANE_RAMFS_FILEMANAGERIMPL_H

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include <ramfs/fileManagerIf.h>

#include "ramfs/src/fileEntry.h"
#include "sync/mutex.h"

namespace Corvane::RamFs::V1 {

/// The operations are those of FileManagerIf, with the same contracts.
///
/// The directory's lock is taken before an entry's, never the other way round. The directory writes its reports, frees
/// the memory of files and emits its own trace events without the lock. Entries and handles that it makes while it
/// holds the lock trace their construction then.
class FileManagerImpl : public FileManagerIf
{
public:
    FileManagerImpl() = default;

    std::shared_ptr<FileHandleIf> create(const std::string& fileName, unsigned int initialSize, int fileRef) override;
    std::shared_ptr<FileHandleIf> open(const std::string& fileName) override;
    std::shared_ptr<FileHandleIf> open(int fileRef) override;
    void close(std::shared_ptr<FileHandleIf>& handle) override;
    bool remove(const std::string& fileName, std::ostream& out, bool verbose) override;
    bool remove(const std::string& fileName, bool verbose) override;
    bool remove(int fileRef, std::ostream& out, bool verbose) override;
    bool remove(int fileRef, bool verbose) override;
    void removeAll() override;
    bool exists(int fileRef) const override;
    bool exists(const std::string& fileName) const override;
    bool setDelayedDelete(int fileRef) override;
    std::vector<std::shared_ptr<FileHandleIf>> openAll() override;
    std::shared_ptr<FileStreamBufIf> getFileStreamBuf() override;

    /// Ends the directory's state: releases all files and all memory. It is empty then; the counter goes on.
    ///
    /// In a child made by fork() nothing is released if another thread of the parent may have held the lock.
    void releaseAll(bool isForkedChild);

private:
    friend struct FileManagerTestAccess;

    using Files = std::unordered_map<std::string, std::shared_ptr<FileEntry>>;

    using Nodes = std::vector<Files::node_type>;

    int nextFileRef() CORVANE_REQUIRES(m_mutex);
    std::string store(const std::string& fileName, std::shared_ptr<FileEntry>& entry) CORVANE_REQUIRES(m_mutex);
    std::shared_ptr<FileHandleIf> openFound(Files::const_iterator file) CORVANE_REQUIRES(m_mutex);
    Files::const_iterator findByRef(int fileRef) const CORVANE_REQUIRES_SHARED(m_mutex);
    template <typename Predicate>
    bool takeOut(Nodes& taken, const Predicate& isMeant) CORVANE_REQUIRES(m_mutex);

    // A test pins the order of the members: tools on the unit read these objects.
    Files m_files CORVANE_GUARDED_BY(m_mutex);
    int m_fileRefCounter CORVANE_GUARDED_BY(m_mutex) = 0; // the latest automatic number
    mutable SharedMutex m_mutex;
};

} // namespace Corvane::RamFs::V1

#endif
