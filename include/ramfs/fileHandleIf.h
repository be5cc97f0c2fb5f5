// SPDX-License-Identifier: MIT
/// One open of a file of the in-memory file system: a position of its own over bytes that all opens of the file share.
///
/// A file is a header, a content and a footer laid end to end. Positions and sizes count the bytes of all three: 0 is
/// the first header byte, the header's size is the first content byte, and the file size is the sum of the three. Only
/// the content grows by writing; header and footer are each replaced as a whole. A new file has an empty header, an
/// empty content and an empty footer.
///
/// Handles come from FileManagerIf and are passed as std::shared_ptr. A handle keeps its file alive: when the directory
/// no longer lists the file, because it was removed, replaced or marked for delayed deletion and then opened, every
/// operation here works as before, on the same bytes, until the last handle of the file is released.
///
/// Content and positions end at 4294967295 bytes (4 GiB - 1). A write or an append that would pass that position writes
/// nothing, returns 0 and leaves position and content as they were. Header and footer are limited by the type of their
/// length only. Where they make a file longer than that, bytes past the last position can be neither written nor read
/// by position; readFooter() still returns the whole footer.
///
/// Threads  a handle belongs to one thread at a time, because of its position. Several handles of one file may be used
///          by several threads at once: reads run side by side, and each operation that changes bytes excludes every
///          other one on the file while it runs.
/// Errors   std::bad_alloc, with bytes and position as they were. std::system_error if the file's lock can't be taken.
///          A trace event that tells of a finished write is lost if its text finds no memory.
/// Units    positions, lengths and sizes are bytes.
/// Since    0.1.0
#ifndef CORVANE_RAMFS_FILEHANDLEIF_H
#define CORVANE_RAMFS_FILEHANDLEIF_H

#include <cstddef>
#include <ctime>
#include <iosfwd>
#include <string>
#include <vector>

namespace Corvane::RamFs::V1 {

class [[gnu::visibility("default")]] FileHandleIf
{
public:
    /// Closes this open of the file. The file's memory is freed if this was its last owner.
    virtual ~FileHandleIf();

    /// Moves the position, to the end of the file at most.
    virtual void setPos(unsigned long offset) = 0;

    /// Copies bytes from the position on, across header, content and footer, and moves the position past them.
    ///
    /// Requires  `buffer` has room for `length` bytes; null reads nothing.
    /// Returns   the number of bytes copied: fewer than `length` if the file ends before, 0 at its end.
    virtual unsigned int read(unsigned char* buffer, unsigned int length) = 0;

    /// Writes the file from the position to the end in readable form, and moves the position to the end.
    ///
    /// A byte is shown as text (itself) or as two upper-case hexadecimal digits. Bytes that are neither printable nor
    /// white space are always shown in hexadecimal.
    ///   - The header is shown as text up to its first such byte, and in hexadecimal from there on.
    ///   - The content is shown in hexadecimal if there is a header, and otherwise as a header is.
    ///   - The footer is shown as text, with the exception of such bytes themselves.
    /// At the end a line feed is added, unless the last byte was a line feed and a further byte would be shown as text.
    /// So a file that has a header and nothing else always gets one.
    ///
    /// The header "HDR:", the content bytes 01 41 FF and the footer "END\n" give "HDR:0141FFEND\n" and return 11.
    /// The content "ab\0c" alone gives "ab0063\n" and returns 5.
    ///
    /// The sizes of the regions are counted from the start of the call: for the whole file, call setPos(0) first.
    ///
    /// Requires  `os` doesn't write into this very file.
    /// Returns   the number of bytes shown, plus 1 if a line feed was added.
    /// Errors    what `os` throws; the position is then past the last byte read.
    virtual unsigned int dump(std::ostream & os) = 0;

    /// Like dump(), but with a limit on the characters written, and without the added line feed.
    ///
    /// Requires  `os` doesn't write into this very file.
    /// Returns   the number of characters written; 0xFFFFFFFF if the output was cut. It is cut after the byte with
    ///           which `maxLength` - 2 characters are reached, even if that is the last byte of the file. A `maxLength`
    ///           of 0 or 1 cuts no output of fewer than 4294967294 characters.
    /// Errors    what `os` throws; the position is then past the last byte read.
    virtual unsigned int readReadable(std::ostream & os, unsigned int maxLength) = 0;

    /// Writes bytes into the content at the position, over existing bytes and past the content's end, and moves the
    /// position past them.
    ///
    /// A position in the header is first moved to the start of the content, one in the footer or beyond to the end of
    /// the content: writing never touches header or footer and never leaves a gap. A footer follows the grown content.
    /// When the content's storage must grow, it grows by 10 % beyond need. All three forms do the same.
    ///
    /// Requires  `data` has `length` bytes; null writes nothing.
    /// Returns   the number of bytes written: `length`, or 0 if the write was refused.
    /// Owns      copies the bytes.
    virtual unsigned int write(const unsigned char* data, unsigned int length) = 0;
    virtual unsigned int write(const char* data, unsigned int length) = 0;
    virtual unsigned int write(const std::string& data) = 0;

    /// Writes bytes at the end of the content, before a footer, and moves the position past them. The position before
    /// the call doesn't matter. All three forms do the same.
    ///
    /// Requires  `data` has `length` bytes; null writes nothing and moves the position to the end of the file.
    /// Returns   the number of bytes written: `length`, or 0 if the write was refused.
    /// Threads   appends through several handles of a file keep each record whole.
    /// Owns      copies the bytes.
    virtual unsigned int append(const unsigned char* data, unsigned int length) = 0;
    virtual unsigned int append(const char* data, unsigned int length) = 0;
    virtual unsigned int append(const std::string& data) = 0;

    /// Replaces the whole header. Positions stay as they are, so each designates another byte if the header's size
    /// changes.
    /// Both forms do the same.
    ///
    /// Requires  `data` has `length` bytes. Length 0, null or not, removes the header; null with another length, and a
    ///           string that is longer than 4294967295 bytes, change nothing.
    /// Owns      copies the bytes.
    virtual void insertHeader(const unsigned char* data, unsigned int length) = 0;
    virtual void insertHeader(const std::string& data) = 0;

    /// Replaces the whole footer. Positions stay as they are.
    ///
    /// Requires  `data` has `length` bytes. Length 0, null or not, removes the footer; null with another length changes
    ///           nothing.
    /// Owns      copies the bytes.
    virtual void appendFooter(const unsigned char* data, unsigned int length) = 0;

    /// Returns  a copy of the header. The position doesn't move.
    virtual std::vector<unsigned char> readHeader() = 0;

    /// Returns  a copy of the footer. The position doesn't move.
    virtual std::vector<unsigned char> readFooter() = 0;

    /// Returns  the name under which this handle was opened, with "<date>" replaced by the creation time. It stays the
    ///          same when the file is removed.
    virtual std::string getFileName() const = 0;

    /// Returns  the file's reference number, which never changes.
    virtual int getFileRef() const = 0;

    /// Returns  the size of header, content and footer together.
    virtual std::size_t getFileSize() const = 0;

    /// Returns  when the file was created, in seconds since the epoch.
    virtual std::time_t getCreationTime() const = 0;

    /// Reserves storage for a content of `newSize` bytes, so that writes up to that size take no memory. The content
    /// itself doesn't change, and storage never shrinks.
    ///
    /// Returns  true if the storage grew; false if it was large enough.
    virtual bool contentResize(unsigned int newSize) = 0;

    /// Counts who keeps the file alive: the directory, if it still lists the file, every handle on it, and this call.
    ///
    /// Returns  the number of owners plus one: 3 for a listed file with this one handle, 2 for a removed one.
    /// Threads  a snapshot; other threads may open and release handles meanwhile.
    virtual unsigned int getUserCount() const = 0;

    FileHandleIf(const FileHandleIf&) = delete;
    FileHandleIf& operator=(const FileHandleIf&) = delete;

protected:
    FileHandleIf() = default;
};

} // namespace Corvane::RamFs::V1

#endif
