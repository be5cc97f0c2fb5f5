// SPDX-License-Identifier: MIT
/// The directory: naming, numbering, opening and removal of files.
#include "ramfs/src/fileManagerImpl.h"

#include <algorithm>
#include <climits>
#include <ctime>
#include <iostream>
#include <memory>
#include <new>
#include <string_view>

#include <unistd.h>

#include "ramfs/src/fileHandleImpl.h"
#include "ramfs/src/fileStreamBufImpl.h"
#include "trace/emit.h"

namespace Corvane::RamFs::V1 {

namespace {

using WriteLock = ExclusiveLock<SharedMutex>;

namespace TraceLine {
constexpr unsigned int create = 47, created = 91, nameTaken = 95, openByName = 104, openByRef = 126, removeByName = 180,
                       removeByRef = 269, removeAll = 303, setDelayedDelete = 310;
}

constexpr std::string_view datePlaceholder = "<date>";

/// Returns  `fileName` with its first "<date>", which is at `position`, replaced by the time.
std::string withDate(const std::string& fileName, std::size_t position, std::time_t time)
{
    char text[100];
    std::tm local{};
    if (localtime_r(&time, &local) == nullptr) {
        return fileName;
    }
    const std::size_t length = std::strftime(text, sizeof text, "%Y%h%d-%H_%M_%S", &local);
    if (length == 0) {
        return fileName;
    }
    return std::string(fileName).replace(position, datePlaceholder.size(), text, length);
}

/// Writes a report as it is, whatever width or number format the stream was left with.
void writeTo(std::ostream& out, const std::string& report)
{
    out.write(report.data(), static_cast<std::streamsize>(report.size()));
}

/// Tells which files to remove if none has exactly the given name. The name must outlive the pattern.
class NamePattern
{
public:
    explicit NamePattern(const std::string& fileName) : m_prefix(fileName)
    {
        const std::size_t position = fileName.find(datePlaceholder);
        if (position != std::string::npos) {
            m_hasDate = true;
            m_prefix = m_prefix.substr(0, position);
            m_suffix = fileName.c_str() + fileName.find('>') + 1; // a C string: it ends at the first NUL
        }
    }

    /// Returns  what a report says between the name of a removed file and the pattern.
    const char* reason() const
    {
        return m_hasDate ? "' deleted - it contains entered pattern '" : "' deleted - it starts with entered pattern '";
    }

    /// The suffix may be anywhere in the name, even inside the prefix.
    bool matches(const std::string& name) const
    {
        return name.compare(0, m_prefix.size(), m_prefix) == 0 && name.find(m_suffix) != std::string::npos;
    }

private:
    bool m_hasDate = false;
    std::string_view m_prefix;
    std::string_view m_suffix; // empty without a date, and so in every name
};

} // namespace

FileManagerIf::~FileManagerIf() = default;

FileManagerIf& FileManagerIf::getInstance()
{
    // Never destroyed: threads may go on using it while the process's static objects are destroyed, and after.
    alignas(FileManagerImpl) static unsigned char storage[sizeof(FileManagerImpl)];
    static FileManagerImpl& instance = *new (storage) FileManagerImpl;
    static const pid_t process = ::getpid();
    static const std::unique_ptr<FileManagerImpl, void (*)(FileManagerImpl*)> ending(
        &instance, [](FileManagerImpl* manager) { manager->releaseAll(::getpid() != process); });
    return instance;
}

std::shared_ptr<FileHandleIf> FileManagerImpl::create(const std::string& fileName, unsigned int initialSize,
                                                      int fileRef)
{
    Trace::trace1(__FILE__, TraceLine::create, [&](std::ostream& msg) {
        msg << "create: fileName=" << fileName << ",initialSize=" << initialSize << ",fileRef=" << fileRef << ")";
    });
    int reference = fileRef;
    std::string finalName;
    std::shared_ptr<FileEntry> entry; // stays empty if the name is taken
    std::shared_ptr<FileEntry> replaced;
    {
        const WriteLock lock(m_mutex);
        if (m_files.find(fileName) == m_files.end()) {
            if (reference == 0) {
                reference = nextFileRef();
            }
            entry = FileEntry::create(reference, initialSize);
            replaced = entry;
            finalName = store(fileName, replaced);
        }
    }
    Trace::trace1(__FILE__, TraceLine::created, [&](std::ostream& msg) {
        msg << "create: " << fileRef << ",fileName=" << fileName << ",fileReference=" << reference;
    });
    if (!entry) {
        Trace::error(__FILE__, TraceLine::nameTaken,
                     [&](std::ostream& msg) { msg << "file (" << fileName << ") already exists"; });
        return nullptr;
    }
    return std::make_shared<FileHandleImpl>(finalName, entry->getPtr());
}

int FileManagerImpl::nextFileRef()
{
    m_fileRefCounter = m_fileRefCounter == INT_MAX ? 1 : m_fileRefCounter + 1;
    return m_fileRefCounter;
}

/// Lists `entry` under its final name and returns the name. `entry` becomes the one that it replaces, if any.
std::string FileManagerImpl::store(const std::string& fileName, std::shared_ptr<FileEntry>& entry)
{
    const std::size_t position = fileName.find(datePlaceholder);
    std::string finalName =
        position == std::string::npos ? fileName : withDate(fileName, position, entry->getCreationTime());
    m_files[finalName].swap(entry); // a final name with a date may be taken
    return finalName;
}

std::shared_ptr<FileHandleIf> FileManagerImpl::open(const std::string& fileName)
{
    Trace::trace1(__FILE__, TraceLine::openByName,
                  [&](std::ostream& msg) { msg << "open: fileName(" << fileName << ")"; });
    const WriteLock lock(m_mutex);
    return openFound(m_files.find(fileName));
}

std::shared_ptr<FileHandleIf> FileManagerImpl::open(int fileRef)
{
    Trace::trace1(__FILE__, TraceLine::openByRef,
                  [&](std::ostream& msg) { msg << "open: fileRef(" << fileRef << ")"; });
    const WriteLock lock(m_mutex);
    return openFound(findByRef(fileRef));
}

std::shared_ptr<FileHandleIf> FileManagerImpl::openFound(Files::const_iterator file)
{
    if (file == m_files.end()) {
        return nullptr;
    }
    const auto& [name, entry] = *file;
    auto handle = std::make_shared<FileHandleImpl>(name, entry->getPtr());
    if (entry->getDelayedDelete()) {
        m_files.erase(file); // the handle keeps the entry
    }
    return handle;
}

FileManagerImpl::Files::const_iterator FileManagerImpl::findByRef(int fileRef) const
{
    return std::find_if(m_files.begin(), m_files.end(),
                        [&](const Files::value_type& file) { return file.second->getFileRef() == fileRef; });
}

void FileManagerImpl::close(std::shared_ptr<FileHandleIf>& handle)
{
    handle.reset();
}

/// Moves every file that is meant to `taken`, which the caller destroys after it has released the lock.
///
/// Returns  whether there was one.
template <typename Predicate>
bool FileManagerImpl::takeOut(Nodes& taken, const Predicate& isMeant)
{
    bool found = false;
    for (auto file = m_files.cbegin(); file != m_files.cend();) {
        const auto current = file++;
        if (isMeant(*current)) {
            found = true;
            Files::node_type node = m_files.extract(current);
            try {
                taken.push_back(std::move(node));
            } catch (const std::bad_alloc&) {
                // The node is destroyed here: a removal must not fail because there is no memory.
            }
        }
    }
    return found;
}

bool FileManagerImpl::remove(const std::string& fileName, std::ostream& out, bool verbose)
{
    Trace::trace1(__FILE__, TraceLine::removeByName,
                  [&](std::ostream& msg) { msg << "remove: filename(" << fileName << ")"; });
    std::string report = "File '";
    bool isExact = false;
    bool removed = false;
    {
        Files::node_type exact; // the files are freed after the lock, and before the report
        Nodes taken;
        const WriteLock lock(m_mutex);
        exact = m_files.extract(fileName);
        isExact = !exact.empty();
        removed = isExact;
        if (!isExact) {
            const NamePattern pattern(fileName);
            removed = takeOut(taken, [&](const Files::value_type& file) {
                const bool matches = pattern.matches(file.first);
                if (matches && verbose) {
                    report += file.first + pattern.reason() + fileName + "'";
                }
                return matches;
            });
        }
    }
    if (verbose) {
        if (isExact) {
            report += fileName + "' deleted";
        }
        writeTo(out, report);
    }
    return removed;
}

bool FileManagerImpl::remove(const std::string& fileName, bool verbose)
{
    return remove(fileName, std::cout, verbose);
}

bool FileManagerImpl::remove(int fileRef, std::ostream& out, bool verbose)
{
    Trace::trace1(__FILE__, TraceLine::removeByRef,
                  [&](std::ostream& msg) { msg << "remove fileRef(" << fileRef << ")"; });
    bool removed = false;
    {
        Nodes taken;
        const WriteLock lock(m_mutex);
        removed = takeOut(taken, [&](const Files::value_type& file) { return file.second->getFileRef() == fileRef; });
    }
    if (verbose && removed) {
        writeTo(out, "File with reference number " + std::to_string(fileRef) + " was deleted");
        out << std::endl;
    }
    return removed;
}

bool FileManagerImpl::remove(int fileRef, bool verbose)
{
    return remove(fileRef, std::cout, verbose);
}

void FileManagerImpl::removeAll()
{
    Trace::trace1(__FILE__, TraceLine::removeAll, [](std::ostream& msg) { msg << "removeAll"; });
    Nodes taken; // a swapped map would take the array of buckets with it, which later files need again
    const WriteLock lock(m_mutex);
    takeOut(taken, [](const Files::value_type&) { return true; });
}

void FileManagerImpl::releaseAll(bool isForkedChild)
{
    Files files;
    if (lockAtEnd(m_mutex, isForkedChild)) {
        m_files.swap(files);
        m_mutex.unlock();
    }
}

bool FileManagerImpl::exists(int fileRef) const
{
    const SharedLock lock(m_mutex);
    return findByRef(fileRef) != m_files.end();
}

bool FileManagerImpl::exists(const std::string& fileName) const
{
    const SharedLock lock(m_mutex);
    return m_files.find(fileName) != m_files.end();
}

bool FileManagerImpl::setDelayedDelete(int fileRef)
{
    Trace::trace1(__FILE__, TraceLine::setDelayedDelete,
                  [&](std::ostream& msg) { msg << "setDelayedDelete fileRef(" << fileRef << ")"; });
    const WriteLock lock(m_mutex);
    const auto file = findByRef(fileRef);
    if (file == m_files.end()) {
        return false;
    }
    file->second->setDelayedDelete();
    return true;
}

std::vector<std::shared_ptr<FileHandleIf>> FileManagerImpl::openAll()
{
    std::vector<std::shared_ptr<FileHandleIf>> handles;
    const SharedLock lock(m_mutex);
    handles.reserve(m_files.size());
    for (const auto& [name, entry] : m_files) {
        handles.push_back(std::make_shared<FileHandleImpl>(name, entry->getPtr()));
    }
    return handles;
}

std::shared_ptr<FileStreamBufIf> FileManagerImpl::getFileStreamBuf()
{
    return std::make_shared<FileStreamBufImpl>();
}

} // namespace Corvane::RamFs::V1
