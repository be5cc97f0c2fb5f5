/// A runtime folder of a test's own: its mailboxes, and those of the programs that it starts, stay apart from all
/// others.
///
/// Threads  construct it before the test starts a thread, because it changes the environment.
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
        std::error_code ignored; // files that are left do no harm
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
