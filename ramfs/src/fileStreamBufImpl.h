/// The stream buffer that writes into a file of the in-memory file system.
#ifndef CORVANE_RAMFS_FILESTREAMBUFIMPL_H
#define CORVANE_RAMFS_FILESTREAMBUFIMPL_H

#include <memory>
#include <sstream>
#include <string>

#include <ramfs/fileHandleIf.h>
#include <ramfs/fileStreamBufIf.h>

namespace Corvane::RamFs::V1 {

/// The operations are those of FileStreamBufIf, with the same contracts. There is no put area: every character arrives
/// in overflow(), and m_stream is the only place where text waits.
class FileStreamBufImpl : public FileStreamBufIf
{
public:
    FileStreamBufImpl() = default;
    ~FileStreamBufImpl() override;

    bool create(const std::string& fileName, unsigned int initialSize, int fileRef) override;
    bool open(int fileRef) override;
    bool isOpen() const override;
    void close() override;
    std::string getFileName() const override;
    int getFileRef() const override;

protected:
    int sync() override;
    int_type overflow(int_type c) override;

private:
    friend struct FileStreamBufTestAccess;

    void writePendingText();

    // The order of the members is relied upon.
    std::shared_ptr<FileHandleIf> m_fileHandle; // empty while the buffer is closed
    std::ostringstream m_stream;                // the text since the last transfer into the file
};

} // namespace Corvane::RamFs::V1

#endif
