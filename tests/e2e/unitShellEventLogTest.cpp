/// What the example shell writes to the event log, as a real engine receives it: the unit's alarms and typed entries.
#include <csignal>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/e2e/shellSession.h"
#include "tests/elog/testEngine.h"
#include "tests/support/childProcess.h"
#include "tests/support/runtimeFolder.h"

namespace {

using Corvane::Testing::Companion;
using Corvane::Testing::runShell;
using Corvane::Testing::RuntimeFolder;
using Corvane::Testing::ShellSession;
using Corvane::Testing::Stdin;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

class UnitShellEventLog : public testing::Test
{
protected:
    void SetUp() override { Corvane::Testing::waitForEngine(); } // the shell doesn't wait

    /// Runs the shell on `input`, whose answers must be `answers`.
    void type(const std::string& input, const std::string& answers)
    {
        const auto shell = runShell({}, input);
        EXPECT_EQ(shell.out, answers);
        EXPECT_EQ(shell.err, "");
    }

    /// Ends the engine.
    ///
    /// Returns  the lines that it has printed, each from `start` on.
    std::vector<std::string> received(const std::string& start = "event ")
    {
        kill(m_engine.pid(), SIGTERM);
        std::vector<std::string> entries;
        for (std::string line; !(line = m_engine.readLine()).empty();) {
            const std::size_t begin = line.find(start);
            entries.push_back(begin == std::string::npos ? line : line.substr(begin));
        }
        EXPECT_EQ(m_engine.finish(), 0);
        return entries;
    }

private:
    const RuntimeFolder m_folder;
    Companion m_engine{{ELOG_ENGINE}, {}};
};

TEST_F(UnitShellEventLog, TellsEachStateOfAnAlarm)
{
    type("set temperature 90\n"
         "set alarm 1 ack\n"
         "set temperature 20\n"
         "set alarm 1 clear\n",
         "");
    EXPECT_THAT(received(), ElementsAre(R"(event 1001 [1] "temperature too high raised")",
                                        R"(event 1002 [1] "temperature too high acknowledged")",
                                        R"(event 1003 [1] "temperature too high cleared")"));
}

TEST_F(UnitShellEventLog, TellsEachAlarmApart)
{
    type("set temperature 90\n"
         "set temperature -30\n"
         "set alarm 1 clear\n"
         "pelm limit 20\n"
         "set temperature 20.5\n",
         "");
    EXPECT_THAT(received(), ElementsAre(R"(event 1001 [1] "temperature too high raised")",
                                        R"(event 1001 [2] "temperature too low raised")",
                                        R"(event 1003 [1] "temperature too high cleared")",
                                        R"(event 1001 [3] "temperature too high raised")"));
}

TEST_F(UnitShellEventLog, TellsNothingIfNothingHasChanged)
{
    type("set temperature 90\n"
         "set temperature 95\n"
         "set alarm 1 clear\n"
         "set alarm 2 ack\n"
         "set alarm 1 ack\n"
         "set alarm 1 ack\n"
         "show alarms\n",
         "alarm 1 can't be cleared: temperature too high\n"
         "there is no alarm '2'\n"
         "alarm 1 is acknowledged already\n"
         "alarm 1: temperature too high (90.0 C), acknowledged\n");
    EXPECT_THAT(received(), ElementsAre(R"(event 1001 [1] "temperature too high raised")",
                                        R"(event 1002 [1] "temperature too high acknowledged")"));
}

TEST_F(UnitShellEventLog, TakesTypedEntriesWithUpToFourParameters)
{
    type("elog 0 ''\n"
         "elog 1 one 4294967295\n"
         "elog 2 \"two words\" 1 2\n"
         "elog 3 'three\\t\\x41\\\\' 1 2 3\n"
         "elog 4294967295 four 0 0 0 4\n",
         "");
    EXPECT_THAT(received(),
                ElementsAre(R"(event 0 [] "")", R"(event 1 [4294967295] "one")", R"(event 2 [1,2] "two words")",
                            R"(event 3 [1,2,3] "three\u0009A\\")", R"(event 4294967295 [0,0,0,4] "four")"));
}

TEST_F(UnitShellEventLog, TakesTheEntriesOfTwoShellsAtOnce)
{
    ShellSession first(Stdin::pipe, {});
    ShellSession second(Stdin::pipe, {});
    const auto log = [](ShellSession& shell, const std::string& entry) {
        shell.type("elog " + entry + "\nshow carrier 1\n");
        shell.waitFor("carrier 1: ");
        return "unitShell[" + std::to_string(shell.pid()) + "] event ";
    };
    const std::string ofFirst = log(first, "1 text 2 3");
    const std::string ofSecond = log(second, "11 text 5");
    log(first, "2 text");
    for (ShellSession* const shell : {&first, &second}) { // both wait until their entries are sent
        shell->endInput();
        EXPECT_EQ(shell->waitForEnd(), 0);
    }
    EXPECT_THAT(received("unitShell["), UnorderedElementsAre(ofFirst + "1 [2,3] \"text\"", ofFirst + "2 [] \"text\"",
                                                             ofSecond + "11 [5] \"text\""));
}

TEST_F(UnitShellEventLog, RefusesAnEntryWithMoreParameters)
{
    type("elog 1 text 1 2 3 4 5\n"
         "elog 2 text 1 2 3 4\n",
         "too many words: the command takes 7\n");
    EXPECT_THAT(received(), ElementsAre(R"(event 2 [1,2,3,4] "text")"));
}

TEST_F(UnitShellEventLog, RefusesEventIdsAndParametersThatAreNotWholeNumbersOf32Bits)
{
    std::string input;
    std::string answers;
    for (const std::string wrong : {"4294967296", "-1", "+1", "1.0", "0x10", "1e3", "one", "", " 1", "1 "}) {
        const std::string range = " is a whole number from 0 to 4294967295, not '" + wrong + "'\n";
        input += "elog '" + wrong + "' text 1\n";
        answers += "an event id" + range;
        input += "elog 1 text 1 '" + wrong + "' 3\n";
        answers += "a parameter" + range;
    }
    type(input + "elog 1 text 1\n", answers);
    EXPECT_THAT(received(), ElementsAre(R"(event 1 [1] "text")"));
}

TEST_F(UnitShellEventLog, AnswersAnIncompleteEntryWithItsUsage)
{
    const std::string usage = "Usage: elog <eventId> <text> <p1> <p2> <p3> [ <p4> ] \n\n";
    type("elog\nelog 1\n", usage + usage);
    EXPECT_THAT(received(), ElementsAre());
}

TEST_F(UnitShellEventLog, HasAStatusForEachAnswer)
{
    EXPECT_EQ(runShell({"-c", "elog 1 text 1 2 3 4"}).status, 0);
    EXPECT_EQ(runShell({"-c", "elog 1 text 1 2 3 4 5"}).status, 1);
    EXPECT_EQ(runShell({"-c", "elog many text"}).status, 1);
    EXPECT_EQ(runShell({"-c", "elog 1"}).status, 20);
    EXPECT_THAT(received(), ElementsAre(R"(event 1 [1,2,3,4] "text")"));
}

} // namespace
