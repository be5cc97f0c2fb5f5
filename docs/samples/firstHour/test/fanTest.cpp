#include <command/cmdTableHelperIf.h>
#include <gtest/gtest.h>
#include <testing/commandSession.h>
#include <testing/entryRecorder.h>
#include <testing/eventRecorder.h>
#include <testing/files.h>
#include <testing/synopses.h>

#include "fan.h"

using Corvane::CmdTableHelper::V2::CmdTableHelperIf;
using namespace Corvane::Testing;

class FanTest : public testing::Test
{
protected:
    FanTest()
    {
        resetFiles();
        CmdTableHelperIf::getInstance().registerCmdTable("fan", fanTable());
    }

    CommandSession session;
};

TEST_F(FanTest, answersASpeed)
{
    EXPECT_EQ(session.run("fan speed 40").output, "The fan runs at 40 %.\n");
    EXPECT_TRUE(session.run("fan speed").isUsage);
}

TEST_F(FanTest, savesTheSpeedToANewFile)
{
    session.run("fan speed 40");
    session.run("fan save now");
    EXPECT_EQ(session.run("fan show now").output, "speed 40\n");
    EXPECT_EQ(session.run("fan save now").result, 1);
}

TEST_F(FanTest, reportsAnAlarmToTheEventLog)
{
    EntryRecorder recorder; // stands in for the engine
    session.run("fan alarm on");
    const std::vector<Entry> entries = recorder.take(1); // waits for the entry
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_EQ(entries[0].eventId, 1007U);
    EXPECT_EQ(entries[0].params, std::vector<unsigned int>{1});
}

TEST_F(FanTest, marksAPlaceInTheTrace)
{
    EventRecorder recorder({EventName::Info}); // records without a session daemon
    session.run("fan mark begin");
    const std::vector<Event> events = recorder.take();
    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(events[0].msg, "begin");
}

TEST_F(FanTest, hasSynopsesWithoutAFlaw)
{
    EXPECT_EQ(checkSynopses("fan", fanTable()).text(), "");
}
