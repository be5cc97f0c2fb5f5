#include <command/cmdTableHelperIf.h>
#include <gmock/gmock.h>
#include <ramfs/fileManagerIf.h>
#include <testing/commandSession.h>
#include <testing/entryRecorder.h>
#include <testing/eventRecorder.h>
#include <testing/files.h>
#include <testing/synopses.h>

#include "carriers.h"

using namespace Corvane::Testing;
struct Carriers : testing::Test
{
    Carriers()
    {
        resetFiles();
        Corvane::CmdTableHelper::V2::CmdTableHelperIf::getInstance().registerCmdTable("carrier", carrierTable());
    }
    EntryRecorder entries;
    EventRecorder events{{EventName::Error}};
    CommandSession session;
};

TEST_F(Carriers, AreSwitchedAndLogged)
{
    EXPECT_EQ(session.run("carrier on west").result, 0);
    EXPECT_EQ(session.run("carrier off 'far east'").output, "carrier far east is off\n");
    std::ostringstream log;
    Corvane::RamFs::V1::FileManagerIf::getInstance().open("carriers.log")->dump(log);
    EXPECT_EQ(log.str(), "west on\nfar east off\n");
    EXPECT_THAT(events.take(), testing::IsEmpty()); // the library has reported nothing wrong
}

TEST_F(Carriers, TellTheEventLogThatTheyAreOff)
{
    EXPECT_TRUE(session.run("carrier dim west").isUsage);
    session.run("carrier off west");
    EXPECT_EQ(entries.take(1), std::vector<Entry>({{1007, "carrier west is off", {}, getpid()}}));
}

TEST_F(Carriers, HaveSynopsesWithoutAFlaw)
{
    EXPECT_EQ(checkSynopses("carrier", carrierTable()).text(), "");
}
