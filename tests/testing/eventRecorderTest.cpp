/// Events as a test of an application records them.
#include <testing/eventRecorder.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <trace/corvaneTracepoints.h>

namespace {

using Corvane::Testing::Event;
using Corvane::Testing::EventName;
using Corvane::Testing::EventRecorder;
using testing::ElementsAre;

TEST(EventRecorder, RecordsOnlyItsEvents)
{
    EventRecorder recorder({EventName::Info});
    tracepoint(com_brimlow_kelpsys_corvane, INFO, "app.cpp", 12, "link is up");
    tracepoint(com_brimlow_kelpsys_corvane, ERROR, "app.cpp", 13, "link is down");
    EXPECT_THAT(recorder.take(), ElementsAre(Event{EventName::Info, "app.cpp", 12, "", "link is up"}));
}

} // namespace
