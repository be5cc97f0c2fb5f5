// SPDX-License-Identifier: MIT
/// A stream buffer through which any std::ostream writes into a file of the in-memory file system.
///
/// FileManagerIf::getFileStreamBuf() makes one, closed. What is streamed while it is open is collected in memory and
/// moved into the file at each flush (std::flush, std::endl, pubsync()), when the buffer is closed, and when it is
/// destroyed. The first transfer starts at position 0 of the file, each further one where the one before it ended. The
/// buffer is for output only: reading from it meets the end of file at once, and seeking fails.
///
///     const auto buffer = Corvane::RamFs::V1::FileManagerIf::getInstance().getFileStreamBuf();
///     buffer->create("log_<date>", 0, 0);
///     std::ostream(buffer.get()) << "started" << std::endl;
///
/// A transfer that would take the file past 4294967295 bytes writes nothing and drops its text; no error is reported.
/// A flush keeps little memory for the next text and gives the rest back; a closed buffer keeps none.
///
/// Threads  a buffer belongs to one thread at a time. Several buffers may be open on one file, each with a position of
///          its own.
/// Errors   std::bad_alloc, and std::system_error if a lock can't be taken. A stream catches them and becomes bad. The
///          file is then as it was, and the text waits for the next flush. The destructor throws nothing and drops text
///          that it can't transfer.
/// Owns     the buffer holds a handle on its file while it is open; it must outlive the streams that use it.
/// Since    0.1.0
#ifndef CORVANE_RAMFS_FILESTREAMBUFIF_H
#define CORVANE_RAMFS_FILESTREAMBUFIF_H

#include <streambuf>
#include <string>

namespace Corvane::RamFs::V1 {

class [[gnu::visibility("default")]] FileStreamBufIf : public std::streambuf
{
public:
    /// Moves the text that waits into the file and closes the buffer, if it is open.
    ~FileStreamBufIf() override;

    /// Closes the buffer, then creates a file for it, as FileManagerIf::create() does.
    ///
    /// Returns  true if the buffer is open now; false if the name is taken, and then the buffer is closed.
    virtual bool create(const std::string& fileName, unsigned int initialSize, int fileRef) = 0;

    /// Closes the buffer, then opens a file for it by its reference number, as FileManagerIf::open() does.
    ///
    /// Returns  true if the buffer is open now; false if there is no such file, and then the buffer is closed.
    virtual bool open(int fileRef) = 0;

    /// Returns  true while the buffer has a file. While it has none, text is accepted and dropped.
    virtual bool isOpen() const = 0;

    /// Moves the text that waits into the file and releases the file, which stays in the directory.
    virtual void close() = 0;

    /// Returns   the name of the file.
    /// Requires  the buffer is open: this is not checked.
    virtual std::string getFileName() const = 0;

    /// Returns   the reference number of the file.
    /// Requires  the buffer is open: this is not checked.
    virtual int getFileRef() const = 0;

    FileStreamBufIf(const FileStreamBufIf&) = delete;
    FileStreamBufIf& operator=(const FileStreamBufIf&) = delete;

protected:
    FileStreamBufIf() = default;
};

} // namespace Corvane::RamFs::V1

#endif
