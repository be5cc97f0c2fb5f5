/// The example shell on a terminal: prompt, line editing, history, and how it ends.
#include <csignal>

#include <gtest/gtest.h>

#include "tests/e2e/shellSession.h"

namespace {

using Corvane::Testing::ShellSession;
using Corvane::Testing::Stdin;

constexpr const char* up = "\x1b[A";
constexpr const char* left = "\x1b[D";
constexpr const char* backspace = "\x7f";
constexpr const char* controlC = "\x03";
constexpr const char* controlD = "\x04";

class UnitShellTerminal : public testing::Test
{
protected:
    /// Waits until the shell reads: the terminal would handle earlier keys in the mode that it had before.
    void SetUp() override { session.waitFor("unit> "); }

    ShellSession session{Stdin::terminal, {}};
};

class UnitShellLineEditing : public UnitShellTerminal
{
protected:
    void SetUp() override
    {
        if (!UNIT_SHELL_EDITS_LINES) {
            GTEST_SKIP() << "unitShell is built without line editing";
        }
        UnitShellTerminal::SetUp();
    }
};

TEST_F(UnitShellTerminal, AnswersEachLineAfterAPrompt)
{
    session.type("show carrier 1\r");
    session.waitFor("carrier 1: band B1, on, 40.0 dBm");
    session.waitFor("unit> ");
    session.type("exit 5\r");
    EXPECT_EQ(session.waitForEnd(), 5);
}

TEST_F(UnitShellTerminal, ControlDEndsItWithTheStatusOfTheLastCommand)
{
    session.type("show carrier 9\r");
    session.waitFor("there is no carrier '9'");
    session.waitFor("unit> ");
    session.type(controlD);
    EXPECT_EQ(session.waitForEnd(), 1);
    EXPECT_TRUE(session.terminalIsAsBefore());
}

TEST_F(UnitShellTerminal, ControlCInTheMiddleOfALineEndsIt)
{
    session.type("show carrier 1");
    session.waitFor("show carrier 1"); // the terminal has shown it
    session.type(controlC);
    EXPECT_EQ(session.waitForEnd(), 128 + SIGINT);
    EXPECT_EQ(session.out().find("band B1"), std::string::npos);
    EXPECT_TRUE(session.terminalIsAsBefore());
}

TEST_F(UnitShellTerminal, SigtermEndsItAndTheTerminalIsAsBefore)
{
    session.signal(SIGTERM);
    EXPECT_EQ(session.waitForEnd(), 128 + SIGTERM);
    EXPECT_TRUE(session.terminalIsAsBefore());
}

TEST_F(UnitShellTerminal, AcceptsCharactersBeyondAscii)
{
    session.type("show carrier \xc3\xa9\xe2\x82\xac\r");
    session.waitFor("there is no carrier '\xc3\xa9\xe2\x82\xac'");
    session.type("exit 0\r");
    EXPECT_EQ(session.waitForEnd(), 0);
}

TEST_F(UnitShellLineEditing, IsReadyForEveryKeyOnceItShowsItsPrompt)
{
    EXPECT_FALSE(session.terminalIsAsBefore());
    session.type("show carrier 1\r");
    session.waitFor("carrier 1: band B1");
    session.waitFor("unit> ");
    EXPECT_FALSE(session.terminalIsAsBefore());
}

TEST_F(UnitShellLineEditing, BackspaceDeletesTheLastCharacter)
{
    session.type(std::string("show carrier 13") + backspace + "\r");
    session.waitFor("carrier 1: band B1, on, 40.0 dBm");
}

TEST_F(UnitShellLineEditing, TheLeftArrowMovesTheCursor)
{
    session.type(std::string("show carrir 2") + left + left + left + "e\r");
    session.waitFor("carrier 2: band B3, off, 37.0 dBm");
}

TEST_F(UnitShellLineEditing, TheUpArrowBringsEarlierLinesBack)
{
    session.type("show carrier 1\r");
    session.waitFor("carrier 1: band B1");
    session.waitFor("unit> ");
    session.type("show carrier 2\r");
    session.waitFor("carrier 2: band B3");
    session.waitFor("unit> ");
    session.type(std::string(up) + up + "\r");
    session.waitFor("carrier 1: band B1");
    session.waitFor("unit> ");
}

TEST_F(UnitShellLineEditing, EmptyLinesAreNotKeptInTheHistory)
{
    session.type("show carrier 1\r");
    session.waitFor("carrier 1: band B1");
    session.waitFor("unit> ");
    session.type("  \r");
    session.waitFor("unit> ");
    session.type(std::string(up) + "\r");
    session.waitFor("carrier 1: band B1");
}

TEST_F(UnitShellLineEditing, BytesThatAreNotACharacterAreSkipped)
{
    session.type("show carrier \xff\x32\r");
    session.waitFor("carrier 2: band B3, off, 37.0 dBm");
}

TEST_F(UnitShellLineEditing, AnIncompleteCharacterSwallowsNoKey)
{
    session.type("show carrier \xc3\x32\r"); // the first byte of two
    session.waitFor("carrier 2: band B3, off, 37.0 dBm");
    session.waitFor("unit> ");
    session.type("show carrier 1\xe2\x82\r"); // the first two of three, and then the end of the line
    session.waitFor("carrier 1: band B1, on, 40.0 dBm");
}

} // namespace
