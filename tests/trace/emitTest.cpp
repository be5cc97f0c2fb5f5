/// How the library emits: nothing at all while an event is off, everything once while it is on.
#include <future>
#include <locale>
#include <new>
#include <ostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <testing/eventRecorder.h>

#include "tests/support/tracepointObjects.h"
#include "tests/trace/countedCosts.h"
#include "trace/emit.h"

namespace {

using Corvane::Testing::allocatedBytes;
using Corvane::Testing::Event;
using Corvane::Testing::EventName;
using Corvane::Testing::EventRecorder;
using Corvane::Testing::shortenedPaths;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

bool isEnabled(EventName event)
{
    return Corvane::Testing::tracepointObjects().at(static_cast<std::size_t>(event))->state != 0;
}

/// Emits one of the four events with a text that is too long for a string's own buffer, and counts the calls.
void emit(EventName event, unsigned int& calls)
{
    const auto writeText = [&](std::ostream& msg) {
        ++calls;
        msg << "a text that doesn't fit into the object of a string: " << 4711;
    };
    const auto site = event == EventName::Trace1   ? &Corvane::Trace::trace1<decltype(writeText)>
                      : event == EventName::Trace2 ? &Corvane::Trace::trace2<decltype(writeText)>
                      : event == EventName::Info   ? &Corvane::Trace::info<decltype(writeText)>
                                                   : &Corvane::Trace::error<decltype(writeText)>;
    site("x/y/z.cpp", 4, writeText);
}

/// The record of an emission by emit().
Event recordOf(EventName event)
{
    const bool isTrace = event == EventName::Trace1 || event == EventName::Trace2;
    return {event, "x/y/z.cpp", 4, isTrace ? "-" : "", "a text that doesn't fit into the object of a string: 4711"};
}

class Emit : public testing::TestWithParam<EventName>
{
};

TEST_P(Emit, DoesNothingWhileTheEventIsOff)
{
    ASSERT_FALSE(isEnabled(GetParam()));
    unsigned int calls = 0;
    const std::size_t bytesBefore = allocatedBytes();
    const unsigned int pathsBefore = shortenedPaths();

    emit(GetParam(), calls);

    EXPECT_EQ(calls, 0U);
    EXPECT_EQ(allocatedBytes(), bytesBefore);
    EXPECT_EQ(shortenedPaths(), pathsBefore);
}

TEST_P(Emit, DoesNothingWhileOnlyOtherEventsAreOn)
{
    std::vector<EventName> others;
    for (const EventName event : {EventName::Trace1, EventName::Trace2, EventName::Info, EventName::Error}) {
        if (event != GetParam()) {
            others.push_back(event);
        }
    }
    EventRecorder recorder(others);
    unsigned int calls = 0;
    const unsigned int pathsBefore = shortenedPaths();

    emit(GetParam(), calls);

    EXPECT_EQ(calls, 0U);
    EXPECT_EQ(shortenedPaths(), pathsBefore);
    EXPECT_THAT(recorder.take(), IsEmpty());
}

TEST_P(Emit, BuildsTheTextOnceWhileTheEventIsOn)
{
    EventRecorder recorder({GetParam()});
    ASSERT_TRUE(isEnabled(GetParam()));
    unsigned int calls = 0;
    const std::size_t bytesBefore = allocatedBytes();
    const unsigned int pathsBefore = shortenedPaths();

    emit(GetParam(), calls);

    EXPECT_EQ(calls, 1U);
    EXPECT_GT(allocatedBytes(), bytesBefore); // so that the test above would see a text that is built
    EXPECT_EQ(shortenedPaths(), pathsBefore + 1);
    EXPECT_THAT(recorder.take(), ElementsAre(recordOf(GetParam())));
}

TEST_P(Emit, BuildsTheTextOnceForSeveralProbes)
{
    EventRecorder first({GetParam()});
    EventRecorder second({GetParam()});
    unsigned int calls = 0;

    emit(GetParam(), calls);

    EXPECT_EQ(calls, 1U);
    EXPECT_THAT(first.take(), ElementsAre(recordOf(GetParam())));
    EXPECT_THAT(second.take(), ElementsAre(recordOf(GetParam())));
}

TEST_P(Emit, IsOffAgainWhenTheProbeIsGone)
{
    {
        const EventRecorder recorder({GetParam()});
        ASSERT_TRUE(isEnabled(GetParam()));
    }
    ASSERT_FALSE(isEnabled(GetParam()));
    unsigned int calls = 0;

    emit(GetParam(), calls);

    EXPECT_EQ(calls, 0U);
}

INSTANTIATE_TEST_SUITE_P(Every, Emit,
                         testing::Values(EventName::Trace1, EventName::Trace2, EventName::Info, EventName::Error),
                         testing::PrintToStringParamName());

TEST(EmitText, ReachesTheCallerOfASiteWhenItThrows)
{
    const auto writeText = [](std::ostream&) { throw std::runtime_error("no text"); };
    EXPECT_NO_THROW(Corvane::Trace::info("x.cpp", 1, writeText));

    EventRecorder recorder({EventName::Info});
    EXPECT_THROW(Corvane::Trace::info("x.cpp", 1, writeText), std::runtime_error);
    EXPECT_THAT(recorder.take(), IsEmpty());
}

TEST(EmitText, IsNotEmittedWhereItsStreamSwallowedAFailedAllocation)
{
    EventRecorder recorder({EventName::Info});
    const auto writeText = [](std::ostream& msg) {
        msg << "the first half";
        msg.setstate(std::ios_base::badbit); // what an insertion leaves behind that finds no memory
    };
    EXPECT_THROW(Corvane::Trace::info("x.cpp", 1, writeText), std::bad_alloc);
    EXPECT_THAT(recorder.take(), IsEmpty());
}

TEST(EmitText, MayBeEmptyOrLong)
{
    const std::string text(1 << 20, 'x');
    EventRecorder recorder({EventName::Info});
    Corvane::Trace::info("x.cpp", 1, [](std::ostream&) {});
    Corvane::Trace::info("x.cpp", 2, [&](std::ostream& msg) { msg << text; });
    EXPECT_THAT(recorder.take(),
                ElementsAre(Event{EventName::Info, "x.cpp", 1, "", ""}, Event{EventName::Info, "x.cpp", 2, "", text}));
}

/// Groups digits, as the locales of many languages do.
class Grouping : public std::numpunct<char>
{
protected:
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(EmitText, ShowsNumbersAlikeWhateverLocaleTheApplicationHasSet)
{
    const std::locale former = std::locale::global(std::locale(std::locale::classic(), new Grouping));
    std::ostringstream grouped;
    grouped << 1234567;
    EventRecorder recorder({EventName::Trace1});
    Corvane::Trace::trace1("x.cpp", 1, [](std::ostream& msg) { msg << 1234567 << ' ' << -1000 << ' ' << 4294967295U; });
    std::locale::global(former);
    ASSERT_EQ(grouped.str(), "1.234.567");
    EXPECT_THAT(recorder.take(), ElementsAre(Event{EventName::Trace1, "x.cpp", 1, "-", "1234567 -1000 4294967295"}));
}

TEST(EmitThreads, EachReachTheProbeWithAllTheirTexts)
{
    constexpr unsigned int threadCount = 4;
    constexpr unsigned int textCount = 1000;
    EventRecorder recorder({EventName::Trace1, EventName::Error});
    std::promise<void> start;
    const std::shared_future<void> started = start.get_future().share();
    std::vector<std::thread> threads;
    for (unsigned int thread = 0; thread < threadCount; ++thread) {
        threads.emplace_back([thread, started] {
            started.wait();
            for (unsigned int i = 0; i < textCount; ++i) {
                const auto writeText = [&](std::ostream& msg) { msg << i; };
                Corvane::Trace::trace1("x.cpp", thread, writeText);
                Corvane::Trace::error("x.cpp", thread, writeText);
                Corvane::Trace::info("x.cpp", thread, writeText); // off
            }
        });
    }
    start.set_value();
    for (std::thread& thread : threads) {
        thread.join();
    }

    std::vector<std::vector<std::string>> texts(threadCount);
    for (const Event& record : recorder.take()) {
        texts.at(record.line).push_back(record.msg);
    }
    std::vector<std::string> expected;
    for (unsigned int i = 0; i < textCount; ++i) {
        expected.insert(expected.end(), 2, std::to_string(i));
    }
    EXPECT_THAT(texts, Each(expected));
}

} // namespace
