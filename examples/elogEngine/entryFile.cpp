/// A file that entries are appended to.
#include "entryFile.h"

#include <cerrno>
#include <filesystem>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ElogEngine {

namespace {

template <typename Result>
Result checked(Result result, const std::string& path)
{
    if (result < 0) {
        throw std::system_error(errno, std::generic_category(), path);
    }
    return result;
}

/// A new file's name is on disk only when its folder is: the one that it is in, to which a link may have led. What is
/// no file (a pipe of another process) may have no place beside that link.
void syncFolderOf(const std::string& path)
{
    const bool isFile = std::filesystem::is_regular_file(path);
    const auto place = isFile ? std::filesystem::canonical(path) : std::filesystem::absolute(path);
    const std::filesystem::path folder = place.parent_path();
    const int fd = checked(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC), folder);
    const int result = ::fsync(fd);
    ::close(fd);
    checked(result, folder);
}

} // namespace

EntryFile::EntryFile(const std::string& path)
    : m_path(path), m_fd(checked(::open(path.c_str(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC, 0644), path))
{
    try {
        syncFolderOf(path);
        char last = '\n';
        const off_t size = ::lseek(m_fd, 0, SEEK_END);
        if (size > 0) {
            checked(::pread(m_fd, &last, 1, size - 1), path);
        }
        if (last != '\n') {
            append("\n");
        }
    } catch (...) {
        ::close(m_fd);
        throw;
    }
}

EntryFile::~EntryFile()
{
    ::close(m_fd);
}

void EntryFile::append(const std::string& lines)
{
    for (std::size_t written = 0; written < lines.size();) {
        const ssize_t result = ::write(m_fd, lines.data() + written, lines.size() - written);
        if (result < 0 && errno == EINTR) {
            continue;
        }
        written += static_cast<std::size_t>(checked(result, m_path));
    }
    if (::fdatasync(m_fd) != 0 && errno != EINVAL) { // invalid for a pipe or a terminal, which has no disk
        checked(-1, m_path);
    }
}

} // namespace ElogEngine
