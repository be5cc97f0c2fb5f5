// SPDX-License-Identifier: MIT
/// The directory of the in-memory file system: where files get a name and a number, are found, opened and removed.
///
/// There is one directory in a process, reached through getInstance(). A file lives in process memory. The directory
/// lists it under its name and holds one owner of it; every open adds a handle, which holds another. Taking a file out
/// of the directory never waits for handles and never disturbs them: they go on with the same bytes, and the file's
/// memory is freed with its last owner.
///
/// Besides its name a file has a reference number. The directory keeps names unique, numbers only as far as callers
/// do: where several files have one number, open() and setDelayedDelete() take any one of them and remove() takes all.
/// Numbers are found by a walk through all files, names by a hash.
///
/// Threads  every operation may be called by any thread at any time, even while the process ends. exists() and
///          openAll() run side by side; every other operation on files excludes all others while it runs. Reports are
///          written, and the memory of removed files is freed, after that: a slow stream or a large file holds up
///          nobody else.
/// Errors   the service throws nothing of its own: std::bad_alloc, what an output stream throws, and std::system_error
///          if a lock can't be taken. Failures are empty handles and false.
/// Since    0.1.0
#ifndef CORVANE_RAMFS_FILEMANAGERIF_H
#define CORVANE_RAMFS_FILEMANAGERIF_H

#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include <ramfs/fileHandleIf.h>
#include <ramfs/fileStreamBufIf.h>

namespace Corvane::RamFs::V1 {

class [[gnu::visibility("default")]] FileManagerIf
{
public:
    /// Returns  the one directory of this process, made empty on the first call. When static objects are destroyed it
    ///          releases its files, as removeAll() does. It is never destroyed itself: from then on it is empty and
    ///          takes files, and handles and stream buffers that exist keep working.
    static FileManagerIf& getInstance();

    /// Creates a file and opens it.
    ///
    /// The first "<date>" in the name is replaced by the creation time, as in "log_2024Mar05-14_03_59" for
    /// "log_<date>". Only the name as it is given must be free: a file that already has the name with the time in it is
    /// replaced, as if it had been removed.
    ///
    /// Requires  `fileRef` is the reference number, or 0 for the next automatic one: 1, 2, 3, ..., and 1 again after
    ///           2147483647. Neither a given number nor an automatic one is checked against those in use.
    /// Returns   a handle at position 0, with the file's final name; empty if a file with the given name exists.
    /// Errors    std::bad_alloc, also if there is no memory for `initialSize`. The file is then not listed, unless only
    ///           its handle or the text of the last trace event found no memory. An automatic number may be used up.
    /// Units     `initialSize` is the storage, in bytes, that is reserved for the content; the file is empty.
    virtual std::shared_ptr<FileHandleIf> create(const std::string& fileName, unsigned int initialSize,
                                                 int fileRef) = 0;

    /// Opens a file by its exact name or by its reference number.
    ///
    /// A file that is marked for delayed deletion is taken out of the directory by this: the handle is the last one
    /// that can be opened on it.
    ///
    /// Returns  a new handle at position 0; empty if there is no such file.
    virtual std::shared_ptr<FileHandleIf> open(const std::string& fileName) = 0;
    virtual std::shared_ptr<FileHandleIf> open(int fileRef) = 0;

    /// Releases a handle: `handle` becomes empty. The file stays in the directory. An empty handle is ignored.
    virtual void close(std::shared_ptr<FileHandleIf> & handle) = 0;

    /// Takes a file out of the directory by its exact name. If there is no such file, takes out every file whose name
    /// fits `fileName` as a pattern:
    ///   - With "<date>" in it: names that begin with the characters before the first "<date>" and contain, anywhere,
    ///     the characters after the first ">" (up to a NUL, if there is one).
    ///   - Without: names that begin with `fileName`. An empty one takes out all files.
    ///
    /// If `verbose` is true, reports on `out` as "File '", then for each removed file its name and the reason, one
    /// after the other in no particular order, without a line end and without a flush. The form without a stream
    /// reports on std::cout.
    ///
    /// Errors   a removal needs no memory unless it is traced, but a report does: std::bad_alloc, and some of the files
    ///          may be removed.
    /// Returns  true if at least one file was removed.
    virtual bool remove(const std::string& fileName, std::ostream& out, bool verbose) = 0;
    virtual bool remove(const std::string& fileName, bool verbose) = 0;

    /// Takes every file with a reference number out of the directory.
    ///
    /// If `verbose` is true and something was removed, writes one line to `out` and flushes it. The form without a
    /// stream reports on std::cout.
    ///
    /// Returns  true if at least one file was removed.
    virtual bool remove(int fileRef, std::ostream& out, bool verbose) = 0;
    virtual bool remove(int fileRef, bool verbose) = 0;

    /// Takes all files out of the directory. Automatic numbers continue.
    virtual void removeAll() = 0;

    /// Returns  true if the directory lists a file with this reference number, or with exactly this name.
    virtual bool exists(int fileRef) const = 0;
    virtual bool exists(const std::string& fileName) const = 0;

    /// Marks a file for delayed deletion: the next open() of it, by name or by number, still returns a handle and takes
    /// the file out of the directory. Until then it is listed and works as before. The mark can't be removed.
    ///
    /// Returns  true if a file with this reference number was found and marked.
    virtual bool setDelayedDelete(int fileRef) = 0;

    /// Opens every file. Marks for delayed deletion are left alone.
    ///
    /// Returns  one new handle at position 0 for each file, in no particular order.
    virtual std::vector<std::shared_ptr<FileHandleIf>> openAll() = 0;

    /// Returns  a new stream buffer, closed, with which any std::ostream can write into a file.
    virtual std::shared_ptr<FileStreamBufIf> getFileStreamBuf() = 0;

    virtual ~FileManagerIf();

    FileManagerIf(const FileManagerIf&) = delete;
    FileManagerIf& operator=(const FileManagerIf&) = delete;

protected:
    FileManagerIf() = default;
};

} // namespace Corvane::RamFs::V1

#endif
