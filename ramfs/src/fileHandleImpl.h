// SPDX-License-Identifier: MIT
/// A file handle: a name and a position over a shared file entry.
#ifndef CORVANE_RAMFS_FILEHANDLEIMPL_H
#define CORVANE_RAMFS_FILEHANDLEIMPL_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <ramfs/fileHandleIf.h>

#include "ramfs/src/fileEntry.h"

namespace Corvane::RamFs::V1 {

/// The operations are those of FileHandleIf, with the same contracts. Those that change the file or the position are
/// traced, except read(); so are readHeader(), readFooter() and getCreationTime().
class FileHandleImpl : public FileHandleIf
{
public:
    FileHandleImpl(const std::string& name, const std::shared_ptr<FileEntry>& entry);

    void setPos(unsigned long offset) override;
    unsigned int read(unsigned char* buffer, unsigned int length) override;
    unsigned int dump(std::ostream& os) override;
    unsigned int readReadable(std::ostream& os, unsigned int maxLength) override;
    unsigned int write(const unsigned char* data, unsigned int length) override;
    unsigned int write(const char* data, unsigned int length) override;
    unsigned int write(const std::string& data) override;
    unsigned int append(const unsigned char* data, unsigned int length) override;
    unsigned int append(const char* data, unsigned int length) override;
    unsigned int append(const std::string& data) override;
    void insertHeader(const unsigned char* data, unsigned int length) override;
    void insertHeader(const std::string& data) override;
    void appendFooter(const unsigned char* data, unsigned int length) override;
    std::vector<unsigned char> readHeader() override;
    std::vector<unsigned char> readFooter() override;
    std::string getFileName() const override;
    int getFileRef() const override;
    std::size_t getFileSize() const override;
    std::time_t getCreationTime() const override;
    bool contentResize(unsigned int newSize) override;
    unsigned int getUserCount() const override;

    /// Does what dump() does, and if `limited` what readReadable() does.
    unsigned int dump(std::ostream& os, unsigned int maxLength, bool limited);

private:
    friend struct FileHandleTestAccess;

    struct Transfer;
    static const Transfer writing, appending, appendingString;

    // `length` has 64 bits because a string may be longer than a file can be; the file then refuses it.
    unsigned int writeFrom(const unsigned char* data, std::uint64_t length);
    unsigned int traced(const Transfer& transfer, const unsigned char* data, std::uint64_t length);
    void traceSetPos(unsigned long offset) const;

    // A test pins the order of the members: tools on the unit read these objects.
    std::string m_fileName;
    std::shared_ptr<FileEntry> m_fileEntry;
    unsigned int m_pos = 0;
};

} // namespace Corvane::RamFs::V1

#endif
