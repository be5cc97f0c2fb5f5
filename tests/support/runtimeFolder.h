/// A folder of a test's own in which its mailboxes, and those of the programs that it starts, meet nobody else's.
///
/// Threads  to be made before any other thread runs: it changes the environment.
#ifndef CORVANE_TESTS_SUPPORT_RUNTIMEFOLDER_H
#define CORVANE_TESTS_SUPPORT_RUNTIMEFOLDER_H

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

namespace Corvane::Testing {

class RuntimeFolder
{
public:
    RuntimeFolder()
    {
        std::string name = std::filesystem::temp_directory_path() / "corvane-test-XXXXXX";
        if (::mkdtemp(name.data()) == nullptr || ::setenv("XDG_RUNTIME_DIR", name.c_str(), 1) != 0) {
            throw std::system_error(errno, std::generic_category(), name);
        }
        m_path = name;
    }

    ~RuntimeFolder()
    {
        std::error_code ignored; // what is left behind does no harm
        std::filesystem::remove_all(m_path, ignored);
    }

    RuntimeFolder(const RuntimeFolder&) = delete;
    RuntimeFolder& operator=(const RuntimeFolder&) = delete;

    const std::filesystem::path& path() const { return m_path; }

private:
    std::filesystem::path m_path;
};

} // namespace Corvane::Testing

#endif
