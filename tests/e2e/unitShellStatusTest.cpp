/// The exit statuses of the example shell, and how it ends.
#include <csignal>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <poll.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/e2e/shellSession.h"
#include "tests/support/childProcess.h"
#include "tests/support/emulation.h"

namespace {

using Corvane::Testing::runShell;
using Corvane::Testing::ShellSession;
using Corvane::Testing::Stdin;
using testing::HasSubstr;
using testing::StartsWith;

constexpr const char* usage = "Usage: unitShell [--echo] [FILE]\n"
                              "       unitShell [--echo] -c LINE\n"
                              "       unitShell --help\n";

struct Run
{
    std::vector<std::string> arguments;
    std::string input;
    int status;
    std::string out;
    std::string err;
};

void expect(const std::vector<Run>& runs)
{
    for (const Run& run : runs) {
        const auto result = runShell(run.arguments, run.input);
        const std::string name = run.arguments.empty() ? run.input : run.arguments.back();
        EXPECT_EQ(result.status, run.status) << name;
        EXPECT_EQ(result.out, run.out) << name;
        EXPECT_EQ(result.err, run.err) << name;
    }
}

constexpr const char* carrier1 = "carrier 1: band B1, on, 40.0 dBm\n";
constexpr const char* noCarrier9 = "there is no carrier '9'\n";
constexpr const char* allCommands = "Usage: { show | set | pelm | ramfs | elog | help | exit } \n\n";
constexpr const char* afterShow = "Usage: show { carriers | carrier | temperature | alarms | statistics } \n\n";

TEST(UnitShellStatus, IsTheResultOfTheOneLine)
{
    expect({{{"-c", "show carrier 1"}, "", 0, carrier1, ""},
            {{"-c", "show carrier 9"}, "", 1, noCarrier9, ""},
            {{"-c", "exit 255"}, "", 255, "", ""},
            {{"-c", "exit 0"}, "", 0, "", ""}});
}

TEST(UnitShellStatus, IsTwentyForAnUnknownOrIncompleteCommand)
{
    expect({{{"-c", "frobnicate"}, "", 20, allCommands, ""}, {{"-c", "show"}, "", 20, afterShow, ""}});
}

TEST(UnitShellStatus, IsTwoForALineThatCantBeSplit)
{
    expect({{{"-c", "show carrier '1"}, "", 2, "", "unitShell: the quote ' in column 14 is never closed\n"}});
}

TEST(UnitShellStatus, IsZeroForALineWithNothingInIt)
{
    expect({{{"-c", ""}, "", 0, "", ""}, {{"-c", "   "}, "", 0, "", ""}, {{"-c", "# nothing"}, "", 0, "", ""}});
}

TEST(UnitShellStatus, AtTheEndOfInputIsThatOfTheLastCommand)
{
    using namespace std::string_literals;
    expect({{{}, "", 0, "", ""},
            {{}, "show carrier 9\nshow carrier 1\n", 0, noCarrier9 + ""s + carrier1, ""},
            {{}, "show carrier 1\nshow carrier 9\n", 1, carrier1 + ""s + noCarrier9, ""},
            {{}, "show carrier 9\n\n# a comment\n", 1, noCarrier9, ""},
            {{}, "nothing of the kind\n", 20, allCommands, ""}});
}

TEST(UnitShellStatus, AfterExitIsTheGivenOneOrThatOfTheCommandBefore)
{
    expect({{{}, "exit 3\nshow carriers\n", 3, "", ""},
            {{}, "exit\n", 0, "", ""},
            {{}, "show carrier 9\nexit\n", 1, noCarrier9, ""}});
}

TEST(UnitShellStatus, AWrongExitDoesNotEndTheShell)
{
    for (const char* const line : {"exit 256", "exit -1", "exit soon", "exit 1 2", "exit ''"}) {
        const auto result = runShell({}, std::string(line) + "\nshow carrier 1\n");
        EXPECT_EQ(result.status, 0) << line;
        EXPECT_THAT(result.out, HasSubstr("carrier 1: band B1")) << line;
    }
    EXPECT_EQ(runShell({}, "exit 256\n").status, 1);
}

TEST(UnitShellStatus, HelpIsShownOnRequest)
{
    const auto result = runShell({"--help"});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.out, StartsWith(usage));
    EXPECT_THAT(result.out, HasSubstr("A prompt is shown only on a\nterminal."));
    EXPECT_THAT(result.out, HasSubstr("also if a command threw an exception or output failed\n"));
    EXPECT_THAT(result.out, HasSubstr("130 after SIGINT"));
    EXPECT_EQ(result.err, "");
}

TEST(UnitShellStatus, WrongArgumentsAreAnsweredWithTheUsage)
{
    const std::vector<std::vector<std::string>> wrong = {
        {"--nonsense"}, {"-x"}, {"-c"}, {"one", "two"}, {"-c", "show carriers", "file"}, {"-c", "show\ncarriers"}};
    for (const auto& arguments : wrong) {
        const auto result = runShell(arguments);
        EXPECT_EQ(result.status, 2) << arguments[0];
        EXPECT_EQ(result.out, "") << arguments[0];
        EXPECT_THAT(result.err, HasSubstr(usage)) << arguments[0];
    }
}

TEST(UnitShellStatus, HelpForAnUnknownCommandFails)
{
    for (const std::string name : {"nothing", "show carriers", ""}) {
        const auto result = runShell({"-c", "help '" + name + "'"});
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.out, "there is no command '" + name + "'\n");
    }
    EXPECT_EQ(runShell({"-c", "help exit"}).out, "Command syntax:\n  exit [<status>]\n\n");
}

TEST(UnitShellStatus, AFileThatCantBeReadIsNamed)
{
    const auto absent = runShell({"/no/such/file"});
    EXPECT_EQ(absent.status, 2);
    EXPECT_EQ(absent.err, "unitShell: can't read '/no/such/file': No such file or directory\n");
    const auto folder = runShell({"/"});
    EXPECT_EQ(folder.status, 2);
    EXPECT_EQ(folder.err, "unitShell: can't read '/': Is a directory\n");
    const auto nameless = runShell({""});
    EXPECT_EQ(nameless.status, 2);
    EXPECT_EQ(nameless.err, "unitShell: can't read '': No such file or directory\n");
}

TEST(UnitShellStatus, AClosedStandardStreamStaysClosed)
{
    const auto runWithout = [](const std::string& redirection, const std::string& arguments) {
        std::string command = "exec";
        for (const std::string& word : Corvane::Testing::runnable({UNIT_SHELL})) {
            command += " '" + word + "'";
        }
        return Corvane::Testing::runProgram({"sh", "-c", command + " " + arguments + " " + redirection});
    };
    const auto unread = runWithout("<&-", "");
    EXPECT_EQ(unread.status, 2);
    EXPECT_EQ(unread.err, "unitShell: can't read standard input: Bad file descriptor\n");
    const auto unwritten = runWithout(">&-", "-c 'show carriers'");
    EXPECT_EQ(unwritten.status, 1);
    EXPECT_EQ(unwritten.err, "unitShell: can't write to standard output\n");
    EXPECT_EQ(runWithout("<&- 2>&-", "-c 'show carrier 1'").out, "carrier 1: band B1, on, 40.0 dBm\n");
}

class UnitShellSignal : public testing::TestWithParam<int>
{
};

TEST_P(UnitShellSignal, EndsAShellThatWaitsForInput)
{
    ShellSession session(Stdin::pipe, {});
    session.type("show carrier 1\n");
    session.waitFor("carrier 1: band B1");
    session.signal(GetParam());
    EXPECT_EQ(session.waitForEnd(), 128 + GetParam());
    EXPECT_EQ(session.err(), "");
}

TEST_P(UnitShellSignal, DiscardsALineWithoutItsLineFeed)
{
    ShellSession session(Stdin::pipe, {});
    session.type("show carrier 1\nshow carrier 2");
    session.waitFor("carrier 1: band B1");
    session.signal(GetParam());
    EXPECT_EQ(session.waitForEnd(), 128 + GetParam());
    EXPECT_EQ(session.out(), "carrier 1: band B1, on, 40.0 dBm\n");
}

TEST_P(UnitShellSignal, EndsAShellThatReadsFromAPipeWithoutAWriter)
{
    const std::string path = testing::TempDir() + "unitShell-pipe-" + std::to_string(getpid());
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    pollfd opened = {inotify_init1(IN_CLOEXEC), POLLIN, 0};
    inotify_add_watch(opened.fd, path.c_str(), IN_OPEN);
    ShellSession session(Stdin::pipe, {path});
    EXPECT_EQ(poll(&opened, 1, 60 * 1000), 1);
    close(opened.fd);
    unlink(path.c_str());
    session.signal(GetParam());
    EXPECT_EQ(session.waitForEnd(), 128 + GetParam());
    EXPECT_EQ(session.err(), "");
}

TEST_P(UnitShellSignal, LetsAnAnswerThatIsBeingWrittenBecomeWhole)
{
    ShellSession session(Stdin::pipe, {});
    const std::string word(10'000, '9');
    session.typeUntilOutputIsFull("show carrier " + word + "\nshow carrier 1\n");
    session.signal(GetParam());
    EXPECT_EQ(session.waitForEnd(), 128 + GetParam());
    EXPECT_EQ(session.out(), "there is no carrier '" + word + "'\n");
    EXPECT_EQ(session.err(), "");
}

INSTANTIATE_TEST_SUITE_P(, UnitShellSignal, testing::Values(SIGINT, SIGTERM));

TEST(UnitShellSignals, SigintStaysIgnoredIfItIsIgnoredFromTheStart)
{
    ShellSession session(Stdin::pipe, {}, true);
    session.type("show carrier 1\n");
    session.waitFor("carrier 1: band B1");
    session.signal(SIGINT);
    session.type("show carrier 2\n");
    session.waitFor("carrier 2: band B3");
    session.endInput();
    EXPECT_EQ(session.waitForEnd(), 0);
}

} // namespace
