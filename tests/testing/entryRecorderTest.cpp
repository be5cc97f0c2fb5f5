/// Event-log entries as a test of an application receives them.
#include <testing/entryRecorder.h>

#include <sstream>
#include <stdexcept>
#include <thread>

#include <elog/elogIf.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/support/childProcess.h"
#include "tests/support/runtimeFolder.h"

namespace {

using Corvane::Testing::Entry;
using Corvane::Testing::EntryRecorder;
using Corvane::Testing::ProgramResult;
using Corvane::Testing::runProgram;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

void write(unsigned int eventId, const std::string& text, const std::vector<unsigned int>& params = {})
{
    Corvane::Elog::V2::ElogIf::getInstance().elogWrite(eventId, text, params);
}

TEST(EntryRecorder, GivesAllThatWasWritten)
{
    EntryRecorder recorder;
    const std::string text("a\0b\xff", 4);
    write(4294967295U, text, {0, 4294967295U});
    write(7, "");
    EXPECT_THAT(recorder.take(2),
                ElementsAre(Entry{4294967295U, text, {0, 4294967295U}, ::getpid()}, Entry{7, "", {}, ::getpid()}));
    EXPECT_THAT(recorder.take(), IsEmpty());
}

TEST(EntryRecorder, GivesALongEntry)
{
    EntryRecorder recorder;
    const std::string text(1U << 20U, 'x');
    const std::vector<unsigned int> params(1000, 5);
    write(1, text, params);
    const std::vector<Entry> entries = recorder.take(1);
    ASSERT_THAT(entries, SizeIs(1));
    EXPECT_TRUE(entries[0] == (Entry{1, text, params, ::getpid()}));
}

TEST(EntryRecorder, GivesNothingOfTheTimeBeforeItAndAfterIt)
{
    {
        const EntryRecorder first;
        write(1, "of the first one's time");
    }
    write(2, "between them");
    EntryRecorder second;
    write(3, "of the second one's time");
    EXPECT_THAT(second.take(1), ElementsAre(Entry{3, "of the second one's time", {}, ::getpid()}));
}

TEST(EntryRecorder, GivesEntriesOfPrograms)
{
    EntryRecorder recorder;
    const ProgramResult first = runProgram({CORVANE_NOTE_ENTRY, "1", "from a program"});
    const ProgramResult second = runProgram({CORVANE_NOTE_ENTRY, "2", "from another one"});
    EXPECT_EQ(first.err + second.err, "");
    write(3, "from here");
    EXPECT_THAT(recorder.take(3),
                ElementsAre(Entry{1, "from a program", {}, first.pid}, Entry{2, "from another one", {}, second.pid},
                            Entry{3, "from here", {}, ::getpid()}));
}

TEST(EntryRecorder, KeepsTheOrderOfEachThread)
{
    constexpr unsigned int threadCount = 4;
    constexpr unsigned int entryCount = 500;
    EntryRecorder recorder;
    std::vector<std::thread> threads;
    for (unsigned int thread = 0; thread < threadCount; ++thread) {
        threads.emplace_back([thread] {
            for (unsigned int number = 0; number < entryCount; ++number) {
                write(thread, "", {number});
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    const std::vector<Entry> entries = recorder.take(threadCount * entryCount, std::chrono::minutes(2));
    ASSERT_THAT(entries, SizeIs(threadCount * entryCount));
    std::vector<unsigned int> next(threadCount);
    for (const Entry& entry : entries) {
        EXPECT_THAT(entry.params, ElementsAre(next.at(entry.eventId)++));
    }
}

TEST(EntryRecorder, GivesWhatThereIsWhenTheTimeIsOver)
{
    EntryRecorder recorder;
    write(1, "the only one");
    EXPECT_THAT(recorder.take(1), SizeIs(1));
    EXPECT_THAT(recorder.take(1, std::chrono::milliseconds(1)), IsEmpty());
}

TEST(EntryRecorder, IsTheOnlyOne)
{
    EntryRecorder recorder;
    EXPECT_THROW(EntryRecorder(), std::logic_error);
    write(1, "to the first one");
    EXPECT_THAT(recorder.take(1), SizeIs(1));
}

TEST(EntryRecorder, ShowsAnEntryOnALine)
{
    std::ostringstream out;
    out << Entry{1007, "carrier down", {2, 3}, 4711};
    EXPECT_EQ(out.str(), R"(event 1007 [2,3] "carrier down" from process 4711)");
}

TEST(EntryRecorder, ComparesEachField)
{
    const Entry entry{1, "text", {2}, 3};
    EXPECT_EQ(entry, entry);
    EXPECT_NE(entry, (Entry{0, "text", {2}, 3}));
    EXPECT_NE(entry, (Entry{1, "", {2}, 3}));
    EXPECT_NE(entry, (Entry{1, "text", {}, 3}));
    EXPECT_NE(entry, (Entry{1, "text", {2}, 0}));
}

class ClientBeforeTheRecorder : public testing::Test
{
protected:
    void SetUp() override
    {
#ifdef __SANITIZE_THREAD__
        GTEST_SKIP() << "the client reads the environment while the recorder changes it";
#endif
    }

    const Corvane::Testing::RuntimeFolder m_folder;
};

TEST_F(ClientBeforeTheRecorder, FindsItIfItStillWaitsForAnEngine)
{
    const ProgramResult result = runProgram({CORVANE_CLIENT_FIRST, "waiting"});
    EXPECT_EQ(result.out, "event 2 [] \"late\"\n") << result.err;
}

TEST_F(ClientBeforeTheRecorder, IsReportedIfItHasFoundAnotherEngine)
{
    const ProgramResult result = runProgram({CORVANE_CLIENT_FIRST, "connected"});
    EXPECT_EQ(result.out, "the event-log client of this process doesn't send its entries to the recorder: it has found "
                          "another engine before, or it has no mailbox\n")
        << result.err;
}

TEST_F(ClientBeforeTheRecorder, LeavesNoFolderBehind)
{
    const std::vector<std::string> environment = {"TMPDIR=" + m_folder.path().string()};
    EXPECT_EQ(runProgram({CORVANE_CLIENT_FIRST, "waiting"}, environment).status, 0);
    EXPECT_THAT(std::vector<std::filesystem::path>(std::filesystem::directory_iterator(m_folder.path()), {}),
                testing::Each(testing::ResultOf([](const auto& path) { return path.filename().string(); },
                                                testing::StartsWith("zel-"))));
}

} // namespace
