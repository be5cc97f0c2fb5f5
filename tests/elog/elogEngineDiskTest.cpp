/// The event-log process when the disk under its output is full.
#include <csignal>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/elog/testEngine.h"
#include "tests/support/childProcess.h"
#include "tests/support/emulation.h"
#include "tests/support/runtimeFolder.h"

namespace {

using namespace Corvane::Testing;

class ElogEngineDisk : public testing::Test
{
protected:
    /// Returns  a command that runs a shell script where a small disk can be mounted that nobody else sees.
    static std::vector<std::string> onAMachineOfItsOwn(const std::string& script)
    {
        std::vector<std::string> command = {"unshare", "--mount"};
        if (::geteuid() != 0) {
            command.insert(command.end(), {"--user", "--map-current-user", "--keep-caps"});
        }
        const std::vector<std::string> engine = runnable({CORVANE_ELOG_ENGINE});
        command.insert(command.end(), {"sh", "-c", script, "sh"});
        command.insert(command.end(), engine.begin(), engine.end());
        return command;
    }

    void SetUp() override
    {
        std::filesystem::create_directory(disk);
        const ProgramResult result = runProgram(onAMachineOfItsOwn(mount));
        if (result.status != 0) {
            GTEST_SKIP() << "no disk of 64 KiB can be mounted: " << result.err;
        }
    }

    /// Writes entries from a process that must not be held up by an engine that ends.
    static void writeEntries(const std::string& command)
    {
        waitForEngine();
        Companion writer({CORVANE_ELOG_WRITER}, {});
        writer.writeLine(command);
        EXPECT_EQ(writer.readLine(), "written");
        EXPECT_EQ(writer.finish(), 0);
    }

    std::vector<std::string> linesOf(const std::string& name) const
    {
        std::ifstream file(folder.path() / name);
        std::vector<std::string> lines;
        for (std::string line; std::getline(file, line);) {
            lines.push_back(line);
        }
        return lines;
    }

    const RuntimeFolder folder;
    const std::string disk = folder.path() / "disk";
    const std::string mount = "mount -t tmpfs -o size=64k none '" + disk + "'";
};

TEST_F(ElogEngineDisk, ThatIsFullEndsItWithAMessageAndKeepsTheLinesBefore)
{
    const std::string path = folder.path();
    Companion engine(onAMachineOfItsOwn(mount + R"(; "$@" >> ')" + disk + "/log' 2> '" + path +
                                        "/errors'; status=$?; cat '" + disk + "/log' > '" + path +
                                        "/log'; exit $status"),
                     {});
    writeEntries("write 1 5000");
    EXPECT_EQ(engine.finish(), 1);
    EXPECT_THAT(linesOf("errors"),
                testing::ElementsAre("elogEngine: ready", "elogEngine: can't write to standard output"));
    const std::vector<std::string> lines = linesOf("log");
    ASSERT_GT(lines.size(), 100U);
    for (std::size_t number = 0; number + 1 < lines.size(); ++number) { // the last one may be cut
        EXPECT_THAT(lines[number], testing::HasSubstr(" event 0 [" + std::to_string(number) + "] \"entry "));
    }
}

TEST_F(ElogEngineDisk, ThatHasRoomAgainTakesTheLinesOfTheNextEngine)
{
    const std::string log = "'" + disk + "/log'";
    const std::string append = R"("$@" >> )" + log + " 2> /dev/null";
    Companion engines(onAMachineOfItsOwn(mount + "; " + append + "; : > " + log + "; " + append +
                                         " & echo $!; wait; cat " + log + " > '" + folder.path().string() + "/log'"),
                      {});
    writeEntries("write 1 5000");
    const int second = std::stoi(engines.readLine());
    writeEntries("write 1 2");
    kill(second, SIGTERM);
    EXPECT_EQ(engines.finish(), 0);
    EXPECT_THAT(linesOf("log"), testing::ElementsAre(testing::HasSubstr(" #1 "), testing::HasSubstr(" #2 ")));
}

} // namespace
