/// The directory: naming, numbering, opening and removal of files.
#include "ramfs/src/fileManagerImpl.h"

#include <algorithm>
#include <ctime>
#include <iostream>
#include <mutex>
#include <string_view>

#include "ramfs/src/fileHandleImpl.h"
#include "ramfs/src/fileStreamBufImpl.h"
#include "trace/emit.h"

namespace Corvane::RamFs::V1 {

namespace {

using ReadLock = std::shared_lock<std::shared_mutex>;
using WriteLock = std::unique_lock<std::shared_mutex>;

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

bool beginsWith(const std::string& name, const std::string& prefix)
{
    return name.compare(0, prefix.size(), prefix) == 0;
}

/// Decides which names a removal takes that found no file of exactly the given name.
class NamePattern
{
public:
    explicit NamePattern(const std::string& fileName) : m_prefix(fileName)
    {
        const std::size_t position = fileName.find(datePlaceholder);
        if (position != std::string::npos) {
            m_hasDate = true;
            m_prefix.resize(position);
            m_suffix = fileName.c_str() + fileName.find('>') + 1; // up to a NUL, if there is one
        }
    }

    /// Returns  what a report says between the name of a file and the pattern that took it.
    const char* reason() const
    {
        return m_hasDate ? "' deleted - it contains entered pattern '" : "' deleted - it starts with entered pattern '";
    }

    /// The suffix may be anywhere in the name, inside the prefix too.
    bool matches(const std::string& name) const
    {
        return beginsWith(name, m_prefix) && (!m_hasDate || name.find(m_suffix) != std::string::npos);
    }

private:
    bool m_hasDate = false;
    std::string m_prefix;
    std::string m_suffix;
};

} // namespace

FileManagerIf::~FileManagerIf() = default;

FileManagerIf& FileManagerIf::getInstance()
{
    static FileManagerImpl instance;
    return instance;
}

std::shared_ptr<FileHandleIf> FileManagerImpl::create(const std::string& fileName, unsigned int initialSize,
                                                      int fileRef)
{
    Trace::trace1(__FILE__, 47, [&](std::ostream& msg) {
        msg << "create: fileName=" << fileName << ",initialSize=" << initialSize << ",fileRef=" << fileRef << ")";
    });
    int reference = fileRef;
    std::string finalName;
    std::shared_ptr<FileEntry> entry; // stays empty if the name is taken
    {
        const WriteLock lock(m_mutex);
        if (m_files.find(fileName) == m_files.end()) {
            if (reference == 0) {
                reference = nextFileRef();
            }
            entry = FileEntry::create(reference, initialSize);
            finalName = store(fileName, entry);
        }
    }
    Trace::trace1(__FILE__, 91, [&](std::ostream& msg) {
        msg << "create: " << fileRef << ",fileName=" << fileName << ",fileReference=" << reference;
    });
    if (!entry) {
        Trace::error(__FILE__, 95, [&](std::ostream& msg) { msg << "file (" << fileName << ") already exists"; });
        return nullptr;
    }
    return std::make_shared<FileHandleImpl>(finalName, entry->getPtr());
}

int FileManagerImpl::nextFileRef()
{
    // After the largest number comes the smallest: the counter wraps as an unsigned number does.
    m_fileRefCounter = static_cast<int>(static_cast<unsigned int>(m_fileRefCounter) + 1U);
    return m_fileRefCounter;
}

std::string FileManagerImpl::store(const std::string& fileName, const std::shared_ptr<FileEntry>& entry)
{
    const std::size_t position = fileName.find(datePlaceholder);
    if (position == std::string::npos) {
        m_files.emplace(fileName, entry);
        return fileName;
    }
    std::string finalName = withDate(fileName, position, entry->getCreationTime());
    m_files[finalName] = entry; // only the name with the placeholder had to be free
    return finalName;
}

std::shared_ptr<FileHandleIf> FileManagerImpl::open(const std::string& fileName)
{
    Trace::trace1(__FILE__, 104, [&](std::ostream& msg) { msg << "open: fileName(" << fileName << ")"; });
    const WriteLock lock(m_mutex);
    return openFound(m_files.find(fileName));
}

std::shared_ptr<FileHandleIf> FileManagerImpl::open(int fileRef)
{
    Trace::trace1(__FILE__, 126, [&](std::ostream& msg) { msg << "open: fileRef(" << fileRef << ")"; });
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
        m_files.erase(file);
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

bool FileManagerImpl::remove(const std::string& fileName, std::ostream& out, bool verbose)
{
    Trace::trace1(__FILE__, 180, [&](std::ostream& msg) { msg << "remove: filename(" << fileName << ")"; });
    const NamePattern pattern(fileName);
    std::string report = "File '";
    bool removed = false;
    {
        const WriteLock lock(m_mutex);
        if (m_files.erase(fileName) != 0) {
            removed = true;
            if (verbose) {
                report += fileName + "' deleted";
            }
        } else {
            for (auto file = m_files.cbegin(); file != m_files.cend();) {
                if (!pattern.matches(file->first)) {
                    ++file;
                    continue;
                }
                removed = true;
                if (verbose) {
                    report += file->first + pattern.reason() + fileName + "'";
                }
                file = m_files.erase(file);
            }
        }
    }
    if (verbose) {
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
    Trace::trace1(__FILE__, 269, [&](std::ostream& msg) { msg << "remove fileRef(" << fileRef << ")"; });
    bool removed = false;
    {
        const WriteLock lock(m_mutex);
        for (auto file = m_files.cbegin(); file != m_files.cend();) {
            if (file->second->getFileRef() == fileRef) {
                file = m_files.erase(file);
                removed = true;
            } else {
                ++file;
            }
        }
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
    Trace::trace1(__FILE__, 303, [](std::ostream& msg) { msg << "removeAll"; });
    const WriteLock lock(m_mutex);
    m_files.clear();
}

bool FileManagerImpl::exists(int fileRef) const
{
    const ReadLock lock(m_mutex);
    return findByRef(fileRef) != m_files.end();
}

bool FileManagerImpl::exists(const std::string& fileName) const
{
    const ReadLock lock(m_mutex);
    return m_files.find(fileName) != m_files.end();
}

bool FileManagerImpl::setDelayedDelete(int fileRef)
{
    Trace::trace1(__FILE__, 310, [&](std::ostream& msg) { msg << "setDelayedDelete fileRef(" << fileRef << ")"; });
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
    const ReadLock lock(m_mutex);
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
