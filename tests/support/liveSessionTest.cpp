/// What a live session does on a machine that can't record. The tools are scripts of the test; no daemon runs.
#include "tests/support/liveSession.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <system_error>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;
using Corvane::Testing::LiveSession;
using testing::HasSubstr;

/// Sets a variable and restores it.
class Variable
{
public:
    Variable(const char* name, const std::string& value) : m_name(name)
    {
        const char* const before = std::getenv(name);
        m_wasSet = before != nullptr;
        m_before = m_wasSet ? before : "";
        setenv(name, value.c_str(), 1);
    }

    ~Variable()
    {
        if (m_wasSet) {
            setenv(m_name, m_before.c_str(), 1);
        } else {
            unsetenv(m_name);
        }
    }

    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

private:
    const char* m_name;
    bool m_wasSet;
    std::string m_before;
};

/// Scripts in the place of the tools come first on the path, or are the only programs there. Locks and recordings have
/// a folder of their own.
class LiveSessionOnAMachine : public testing::Test
{
protected:
    LiveSessionOnAMachine() : m_root(makeRoot()), m_temporary("TMPDIR", m_root / "tmp") {}

    ~LiveSessionOnAMachine() override
    {
        std::error_code ignored;
        fs::remove_all(m_root, ignored);
    }

    std::string tools() const { return m_root / "tools"; }

    void install(const std::string& tool, const std::string& script) const
    {
        const fs::path path = m_root / "tools" / tool;
        std::ofstream(path) << "#!/bin/sh\n" << script << "\n";
        fs::permissions(path, fs::perms::owner_all);
    }

    long leftFolders() const
    {
        long folders = 0;
        for (const auto& entry : fs::directory_iterator(m_root / "tmp")) {
            folders += entry.is_directory() ? 1 : 0;
        }
        return folders;
    }

private:
    static fs::path makeRoot()
    {
        std::string path = fs::temp_directory_path() / "corvane-tools-XXXXXX";
        if (mkdtemp(path.data()) == nullptr) {
            throw std::system_error(errno, std::generic_category(), path);
        }
        fs::create_directory(fs::path(path) / "tools");
        fs::create_directory(fs::path(path) / "tmp");
        return path;
    }

    fs::path m_root;
    Variable m_temporary;
};

/// Returns  what the session throws.
std::string failureOfSession()
{
    try {
        const LiveSession session;
        return "no failure, but: " + session.whyNot();
    } catch (const std::runtime_error& error) {
        return error.what();
    }
}

TEST_F(LiveSessionOnAMachine, WithoutAToolNamesTheToolThatIsMissing)
{
    const Variable path("PATH", tools());
    for (const char* const tool : {"lttng", "lttng-sessiond", "babeltrace2"}) {
        EXPECT_EQ(LiveSession().whyNot(),
                  "no live recording on this machine: " + std::string(tool) + " is not installed");
        install(tool, "exit 0");
    }
}

TEST_F(LiveSessionOnAMachine, WithADaemonThatDoesNotStartFails)
{
    install("lttng", "exit 1");
    install("lttng-sessiond", "exit 1");
    install("babeltrace2", "exit 0");
    const Variable path("PATH", tools() + ":" + std::getenv("PATH"));
    EXPECT_EQ(failureOfSession(), "lttng-sessiond doesn't start");
    EXPECT_EQ(leftFolders(), 0);
}

TEST_F(LiveSessionOnAMachine, WithADaemonThatRefusesEventsFailsAndDestroysWhatItCreated)
{
    install("lttng", R"(echo "$2" >>"$0.log"; test "$2" != enable-event || { echo refused; exit 1; })");
    install("lttng-sessiond", "exit 1");
    install("babeltrace2", "exit 0");
    const Variable path("PATH", tools() + ":" + std::getenv("PATH"));
    EXPECT_THAT(failureOfSession(), HasSubstr("lttng enable-event: refused"));
    EXPECT_EQ(leftFolders(), 0);
    std::ifstream log(tools() + "/lttng.log");
    const std::string calls{std::istreambuf_iterator<char>(log), std::istreambuf_iterator<char>()};
    EXPECT_EQ(calls, "list\ncreate\nenable-channel\nenable-event\ndestroy\n");
}

} // namespace
