/// How the example shell reads its input: files and pipes, long lines, and bytes that are not text.
#include <cstdlib>
#include <fstream>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <unistd.h>

#include "tests/e2e/shellSession.h"
#include "tests/support/emulation.h"

namespace {

using Corvane::Testing::runShell;

/// A file with the given content, for as long as the object lives.
class TemporaryFile
{
public:
    explicit TemporaryFile(const std::string& content)
    {
        const int descriptor = mkstemp(m_path.data());
        if (descriptor >= 0) {
            close(descriptor);
        }
        std::ofstream(m_path, std::ios::binary) << content;
    }
    ~TemporaryFile() { unlink(m_path.c_str()); }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    const std::string& path() const { return m_path; }

private:
    std::string m_path = testing::TempDir() + "unitShell-XXXXXX";
};

TEST(UnitShellInput, FromAPipeShowsNoPrompt)
{
    EXPECT_EQ(runShell({}, "show temperature\n").out, "42.5 C, limits -20.0 to 85.0\n");
}

TEST(UnitShellInput, ComesFromAFileInsteadOfStandardInput)
{
    const TemporaryFile file("show temperature\n");
    EXPECT_EQ(runShell({file.path()}, "show carriers\n").out, "42.5 C, limits -20.0 to 85.0\n");
}

TEST(UnitShellInput, IsShownBeforeItsAnswerOnRequest)
{
    EXPECT_EQ(runShell({"--echo"}, "show temperature\n\n# end\n").out,
              "unit> show temperature\n42.5 C, limits -20.0 to 85.0\n\nunit> # end\n");
    EXPECT_EQ(runShell({"--echo", "-c", "show temperature"}).out,
              "unit> show temperature\n42.5 C, limits -20.0 to 85.0\n");
}

TEST(UnitShellInput, MayEndWithoutALineFeed)
{
    EXPECT_EQ(runShell({}, "show temperature").out, "42.5 C, limits -20.0 to 85.0\n");
}

TEST(UnitShellInput, MayHaveACarriageReturnAtTheEndOfALine)
{
    EXPECT_EQ(runShell({}, "show temperature\r\n\r\n").out, "42.5 C, limits -20.0 to 85.0\n");
}

TEST(UnitShellInput, KeepsTheUnitsStateFromLineToLine)
{
    EXPECT_EQ(runShell({}, "set carrier 1 to 3 on\nset temperature -30\npelm report -v\n").out,
              "3 of 3 carriers on, -30.0 C, 1 of 1 alarms open\n"
              "  carrier 1: 40.0 dBm\n"
              "  carrier 2: 37.0 dBm\n"
              "  carrier 3: 43.0 dBm\n");
}

TEST(UnitShellInput, ADecimalNumberHasADigitOrAMinusSignInFrontAndNothingBehind)
{
    EXPECT_EQ(runShell({}, "set temperature -2.5\nshow temperature\n").out, "-2.5 C, limits -20.0 to 85.0\n");
    for (const std::string wrong : {"+2.5", "++2", " 2.5", "2.5C", "2,5", "-", "", "150.1", "nan"}) {
        EXPECT_EQ(runShell({}, "set temperature '" + wrong + "'\n").out,
                  "the temperature is a number from -60 to 150, not '" + wrong + "'\n");
    }
}

TEST(UnitShellInput, ALineThatIsTooLongIsRefusedAndTheNextLineRuns)
{
    const TemporaryFile file("show carrier " + std::string(3 << 20, '9') + "\nshow carrier 1\n");
    const auto result = runShell({file.path()});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, "carrier 1: band B1, on, 40.0 dBm\n");
    EXPECT_EQ(result.err, "unitShell: the line is longer than 1048576 bytes\n");
}

TEST(UnitShellInput, ALineOfTheLargestLengthRuns)
{
    const std::string command = "show carrier ";
    const std::string word((1 << 20) - command.size(), '9');
    const TemporaryFile file(command + word + "\n");
    const auto result = runShell({file.path()});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "there is no carrier '" + word + "'\n");
    EXPECT_EQ(result.err, "");
}

TEST(UnitShellInput, ALineWithANulByteIsRefused)
{
    using namespace std::string_literals;
    const auto result = runShell({}, "show carrier 1\0\nshow carrier 2\n"s);
    EXPECT_EQ(result.out, "carrier 2: band B3, off, 37.0 dBm\n");
    EXPECT_EQ(result.err, "unitShell: the line has a NUL byte in it\n");
}

TEST(UnitShellInput, BytesThatAreNotTextComeBackUnchanged)
{
    EXPECT_EQ(runShell({}, "show carrier \xff\xc3\x28\n").out, "there is no carrier '\xff\xc3\x28'\n");
}

TEST(UnitShellInput, RandomBytesDoNoHarm)
{
    const auto seed = std::random_device{}();
    std::cout << "seed " << seed << "\n";
    std::mt19937 random(seed);
    std::string bytes;
    for (int i = 0; i < 1 << 20; ++i) {
        bytes += static_cast<char>(random());
    }
    const TemporaryFile file(bytes + "\nexit 7\n");
    EXPECT_EQ(runShell({file.path()}).status, 7);
}

TEST(UnitShellInput, OutputThatCantBeWrittenEndsTheShell)
{
    const TemporaryFile file("");
    std::string command = "printf 'show carriers\\nexit 9\\n' |";
    for (const std::string& word : Corvane::Testing::runnable({UNIT_SHELL})) {
        command += " '" + word + "'";
    }
    const int status = std::system((command + " 2>" + file.path() + " >/dev/full").c_str());
    EXPECT_EQ(WEXITSTATUS(status), 1);
    std::string error;
    std::getline(std::ifstream(file.path()), error);
    EXPECT_EQ(error, "unitShell: can't write to standard output");
}

} // namespace
