// SPDX-License-Identifier: MIT
/// The stream buffer that writes into a file of the in-memory file system.
#ifndef CORVANE_RAMFS_FILESTREAMBUFIMPL_H
#define CORVANE_RAMFS_FILESTREAMBUFIMPL_H

#include <cstddef>
#include <memory>
#include <string>

#include <ramfs/fileHandleIf.h>
#include <ramfs/fileStreamBufIf.h>

namespace Corvane::RamFs::V1 {

/// The operations are those of FileStreamBufIf, with the same contracts. There is no put area: every character arrives
/// in overflow(), and m_text is the only place where text waits.
class FileStreamBufImpl : public FileStreamBufIf
{
public:
    FileStreamBufImpl() = default;
    FileStreamBufImpl(const FileStreamBufImpl&) = delete;
    FileStreamBufImpl& operator=(const FileStreamBufImpl&) = delete;
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
    void growText();
    void freeText();

    // A test pins the order of the members: tools on the unit read these objects.
    std::shared_ptr<FileHandleIf> m_fileHandle; // empty while the buffer is closed
    std::string m_text;                         // what was streamed since the last flush, and then room
    // The length of what was streamed. To store a character in room that the string has already is half the work of
    // appending one.
    std::size_t m_length = 0;
};

} // namespace Corvane::RamFs::V1

#endif
