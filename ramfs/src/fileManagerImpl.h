/// The directory of the in-memory file system.
#ifndef CORVANE_RAMFS_FILEMANAGERIMPL_H
#define CORVANE_RAMFS_FILEMANAGERIMPL_H

#include <memory>
#include <shared_mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include <ramfs/fileManagerIf.h>

#include "ramfs/src/fileEntry.h"

namespace Corvane::RamFs::V1 {

/// The operations are those of FileManagerIf, with the same contracts.
///
/// The directory's lock is taken before an entry's, never the other way round. The directory's own trace events and
/// its reports are written while it isn't held.
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

private:
    friend struct FileManagerTestAccess;

    using Files = std::unordered_map<std::string, std::shared_ptr<FileEntry>>;

    // These need the lock: exclusively, but for findByRef(), which changes nothing.
    int nextFileRef();
    std::string store(const std::string& fileName, const std::shared_ptr<FileEntry>& entry);
    std::shared_ptr<FileHandleIf> openFound(Files::const_iterator file);
    Files::const_iterator findByRef(int fileRef) const;

    // The order of the members is relied upon. m_mutex guards the other two.
    Files m_files;
    int m_fileRefCounter = 0; // the automatic number given last
    mutable std::shared_mutex m_mutex;
};

} // namespace Corvane::RamFs::V1

#endif
