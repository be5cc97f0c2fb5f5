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
/// Threads  every operation may be called by any thread at any time. exists() and openAll() run side by side; every
///          other operation on files excludes all others while it runs. Reports are written to streams afterwards, so a
///          slow stream holds up nobody else.
/// Errors   the service throws nothing of its own: std::bad_alloc, what an output stream throws, and std::system_error
///          if a lock can't be had. Failures are empty handles and false.
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
    /// Returns  the one directory of this process, made empty on the first call. It is destroyed when static objects
    ///          are; a handle that lives longer keeps working, and a stream buffer that does can only be released.
    static FileManagerIf& getInstance();

    /// Creates a file and opens it.
    ///
    /// The first "<date>" in the name is replaced by the creation time, as in "log_2024Mar05-14_03_59" for
    /// "log_<date>". Only the name as it is given must be free: a file that already has the name with the time in it is
    /// replaced, as if it had been removed.
    ///
    /// Requires  `fileRef` is the reference number, or 0 for the next automatic one: 1, 2, 3, ... A given number isn't
    ///           checked against those in use, and automatic numbers don't skip it.
    /// Returns   a handle at position 0, with the file's final name; empty if a file with the given name exists.
    /// Errors    std::bad_alloc, also where `initialSize` can't be had. The file is then not listed, unless only its
    ///           handle could not be made; an automatic number may be used up.
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

    /// Takes a file out of the directory by its exact name. If there is no such file, takes every file whose name fits
    /// the pattern: with "<date>" in `fileName`, names that begin with what stands before it and contain, anywhere,
    /// what stands after the first ">" of `fileName`; without it, names that begin with `fileName`, so that an empty
    /// one takes all.
    ///
    /// If `verbose` is true, reports on `out` as "File '", then for each removed file its name and why it was taken,
    /// one after the other in no particular order, without a line end and without a flush. The form without a stream
    /// reports on std::cout.
    ///
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

    /// Takes all files out of the directory. Automatic numbers go on where they were.
    virtual void removeAll() = 0;

    /// Returns  true if the directory lists a file with this reference number, or with exactly this name.
    virtual bool exists(int fileRef) const = 0;
    virtual bool exists(const std::string& fileName) const = 0;

    /// Marks a file for delayed deletion: the next open() of it, by name or by number, still gets a handle and takes it
    /// out of the directory. Until then it is listed and works as before. The mark can't be taken back.
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
