/// Event-log entries as a test of an application receives them.
#include <testing/entryRecorder.h>

#include <thread>

#include <elog/elogIf.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace {

using Corvane::Elog::V2::ElogIf;
using Corvane::Testing::Entry;
using Corvane::Testing::EntryRecorder;
using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

void write(unsigned int eventId, const std::string& text, const std::vector<unsigned int>& params = {})
{
    ElogIf::getInstance().elogWrite(eventId, text, params);
}

TEST(EntryRecorder, GivesAllThatWasWritten)
{
    EntryRecorder recorder;
    const std::string text("a\0b\xff", 4);
    write(4294967295U, text, {0, 4294967295U});
    write(7, "");
    EXPECT_THAT(recorder.take(2),
                ElementsAre(Entry{4294967295U, text, {0, 4294967295U}, ::getpid()}, Entry{7, "", {}, ::getpid()}));
}

} // namespace
