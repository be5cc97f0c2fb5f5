/// What the example shell answers if a command on in-memory files can't be done, or is at a limit.
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/e2e/shellSession.h"

namespace {

using Corvane::Testing::runShell;

constexpr int failed = 1;

/// Runs a line in a shell that has one file: "a", number 1, with the content "text".
void expectFailure(const std::string& line, const std::string& answer)
{
    const auto shell = runShell({}, "ramfs create a\nramfs write a text\n" + line + "\n");
    EXPECT_EQ(shell.out, "a: number 1\n4 bytes written\n" + answer) << line;
    EXPECT_EQ(shell.err, "") << line;
    EXPECT_EQ(shell.status, failed) << line;
}

TEST(UnitShellRamfs, SaysThatThereIsNoFileOfAName)
{
    for (const char* const line :
         {"stat nothing", "write nothing text", "write nothing at 1 text", "append nothing text", "read nothing",
          "read nothing 1 2", "dump nothing", "readable nothing 1", "header nothing", "header nothing text",
          "footer nothing", "footer nothing text"}) {
        expectFailure(std::string("ramfs ") + line, "there is no file 'nothing'\n");
    }
    expectFailure("ramfs read A", "there is no file 'A'\n");
    expectFailure("ramfs read ''", "there is no file ''\n");
}

TEST(UnitShellRamfs, SaysThatThereIsNoFileToRemove)
{
    expectFailure("ramfs remove nothing", "File '\n"); // the report names the removed files: none
    expectFailure("ramfs remove number 77", "");
    expectFailure("ramfs delayed-delete 77", "there is no file with the number 77\n");
}

TEST(UnitShellRamfs, SaysThatAFileAlreadyExists)
{
    expectFailure("ramfs create a", "file 'a' already exists\n");
    expectFailure("ramfs create a number 7", "file 'a' already exists\n");
    expectFailure("ramfs tee a show carriers", "file 'a' already exists\n");
}

TEST(UnitShellRamfs, RefusesSizesPositionsLengthsAndLimitsThatAreNotWholeNumbersOf32Bits)
{
    for (const std::string wrong : {"4294967296", "-1", "+1", "1.0", "0x10", "x", "", " 1", "1 "}) {
        const std::string range = " is a whole number from 0 to 4294967295, not '" + wrong + "'\n";
        const std::string word = "'" + wrong + "'";
        expectFailure("ramfs create b size " + word, "a size" + range);
        expectFailure("ramfs create b size " + word + " number 5", "a size" + range);
        expectFailure("ramfs write a at " + word + " more", "a position" + range);
        expectFailure("ramfs read a " + word, "a position" + range);
        expectFailure("ramfs read a 0 " + word, "a length" + range);
        expectFailure("ramfs readable a " + word, "a limit" + range);
    }
}

TEST(UnitShellRamfs, RefusesFileNumbersThatAreNotWholeNumbersOf32Bits)
{
    for (const std::string wrong : {"2147483648", "-2147483649", "1.0", "0x10", "x", "", " 1", "+1"}) {
        const std::string answer =
            "a file's number is a whole number from -2147483648 to 2147483647, not '" + wrong + "'\n";
        const std::string word = "'" + wrong + "'";
        expectFailure("ramfs create b number " + word, answer);
        expectFailure("ramfs create b size 5 number " + word, answer);
        expectFailure("ramfs remove number " + word, answer);
        expectFailure("ramfs delayed-delete " + word, answer);
    }
}

TEST(UnitShellRamfs, RefusesWordsBeyondACommandsEnd)
{
    const std::vector<std::pair<std::string, int>> lines = {{"list more", 2},
                                                            {"stat a more", 3},
                                                            {"create b size 5 more", 5},
                                                            {"create b number 5 more", 5},
                                                            {"create b size 5 number 6 more", 7},
                                                            {"write a text more", 4},
                                                            {"write a at 1 text more", 6},
                                                            {"append a text more", 4},
                                                            {"read a 1 2 more", 5},
                                                            {"dump a more", 3},
                                                            {"readable a 1 more", 4},
                                                            {"header a text more", 4},
                                                            {"footer a text more", 4},
                                                            {"remove a more", 3},
                                                            {"remove number 1 more", 4},
                                                            {"remove all more", 3},
                                                            {"delayed-delete 1 more", 3}};
    for (const auto& [line, words] : lines) {
        expectFailure("ramfs " + line, "too many words: the command takes " + std::to_string(words) + "\n");
    }
}

TEST(UnitShellRamfs, LeavesFilesUnchangedIfACommandIsRefused)
{
    const std::vector<std::string> lines = {"create b size x",    "create b number x", "write a at x text",
                                            "write a text more",  "append a b more",   "header a text more",
                                            "footer a text more", "remove a more",     "remove number x",
                                            "remove all more",    "delayed-delete x",  "delayed-delete 1 more"};
    std::string input = "ramfs create a\nramfs write a text\n";
    for (const std::string& line : lines) {
        input += "ramfs " + line + "\n";
    }
    const std::string before = runShell({}, input).out;
    EXPECT_EQ(runShell({}, input + "ramfs list\nramfs read a\n").out, before + "a: number 1, 4 bytes\ntext\n");
}

TEST(UnitShellRamfs, WritesToTheContentIfThePositionIsInTheHeaderOrBeyondTheContent)
{
    const auto shell = runShell({}, "ramfs create a\n"
                                    "ramfs write a content\n"
                                    "ramfs header a HEAD\n"
                                    "ramfs footer a FOOT\n"
                                    "ramfs write a at 0 12\n" // the header is left alone
                                    "ramfs read a\n"
                                    "ramfs write a at 3 34\n"
                                    "ramfs read a\n"
                                    "ramfs write a at 13 56\n" // so is the footer
                                    "ramfs read a\n"
                                    "ramfs write a at 4294967295 78\n" // beyond the file
                                    "ramfs read a\n");
    EXPECT_EQ(shell.out, "a: number 1\n"
                         "7 bytes written\n"
                         "2 bytes written\n"
                         "HEAD12ntentFOOT\n"
                         "2 bytes written\n"
                         "HEAD34ntentFOOT\n"
                         "2 bytes written\n"
                         "HEAD34ntent56FOOT\n"
                         "2 bytes written\n"
                         "HEAD34ntent5678FOOT\n");
    EXPECT_EQ(shell.status, 0);
}

TEST(UnitShellRamfs, ReadsNothingBeyondAFilesEnd)
{
    const auto shell = runShell({}, "ramfs create a\n"
                                    "ramfs write a text\n"
                                    "ramfs read a 2 4294967295\n"
                                    "ramfs read a 4\n"
                                    "ramfs read a 4294967295 1\n"
                                    "ramfs read a 1 0\n");
    EXPECT_EQ(shell.out, "a: number 1\n4 bytes written\nxt\n\n\n\n");
    EXPECT_EQ(shell.status, 0);
}

TEST(UnitShellRamfs, KeepsTheAnswerOfACommandThatFailed)
{
    const auto shell = runShell({}, "ramfs tee b ramfs read nothing\nramfs read b\nramfs tee c nonsense\n");
    EXPECT_EQ(shell.out, "there is no file 'nothing'\n"
                         "there is no file 'nothing'\n\n"
                         "Usage: { show | set | pelm | ramfs | elog | help | exit } \n\n");
    EXPECT_EQ(shell.status, 20);
    expectFailure("ramfs tee b ramfs tee c show carriers", "a tee can't run another one\n");
    expectFailure("ramfs tee b ramfs read nothing", "there is no file 'nothing'\n");
}

} // namespace
