/// Events as a test of an application records them: from the library's own tracepoint objects, without a daemon.
#include <testing/eventRecorder.h>

#include <atomic>
#include <functional>
#include <sstream>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <ramfs/fileManagerIf.h>
#include <testing/files.h>
#include <trace/corvaneTracepoints.h>

#include "tests/support/startTogether.h"

namespace {

using Corvane::RamFs::V1::FileManagerIf;
using Corvane::Testing::Event;
using Corvane::Testing::EventName;
using Corvane::Testing::EventRecorder;
using std::chrono::milliseconds;
using std::chrono::minutes;
using testing::ElementsAre;
using testing::Field;
using testing::IsEmpty;
using testing::SizeIs;

void emitInfo(unsigned int line)
{
    tracepoint(com_brimlow_kelpsys_corvane, INFO, "app.cpp", line, "link is up");
}

Event info(unsigned int line)
{
    return {EventName::Info, "app.cpp", line, "", "link is up"};
}

TEST(EventRecorder, RecordsEachKindOfEventWithAllItsFields)
{
    EventRecorder recorder;
    tracepoint(com_brimlow_kelpsys_corvane, TRACE_UTS3, "a.cpp", 1, 2, 3, "process", "text", "by\0es", 5);
    tracepoint(com_brimlow_kelpsys_corvane, DATA, "a.cpp", 2, "object", "text", "bytes", 5);
    tracepoint(com_brimlow_kelpsys_corvane, SEND_SIG, "a.cpp", 3, "object", 4, 5, "text");
    tracepoint(com_brimlow_kelpsys_corvane, REC_SIG, "a.cpp", 4, "object", 6, "text");
    tracepoint(com_brimlow_kelpsys_corvane, TRACE7, "a.cpp", 5, "object", "text");
    tracepoint(com_brimlow_kelpsys_corvane, ERROR, "a.cpp", 6, "text");
    const std::string bytes("by\0es", 5);
    EXPECT_THAT(recorder.take(),
                ElementsAre(Event{EventName::TraceUts3, "a.cpp", 1, "", "text", 2, 3, "process", bytes},
                            Event{EventName::Data, "a.cpp", 2, "object", "text", 0, 0, "", "bytes"},
                            Event{EventName::SendSig, "a.cpp", 3, "object", "text", 0, 0, "", "", 4, 5},
                            Event{EventName::RecSig, "a.cpp", 4, "object", "text", 0, 0, "", "", 6},
                            Event{EventName::Trace7, "a.cpp", 5, "object", "text"},
                            Event{EventName::Error, "a.cpp", 6, "", "text"}));
}

TEST(EventRecorder, GivesANullTextAndNullDataAsARecordingDoes)
{
    EventRecorder recorder;
    tracepoint(com_brimlow_kelpsys_corvane, DATA, nullptr, 1, nullptr, nullptr, nullptr, 5);
    EXPECT_THAT(recorder.take(), ElementsAre(Event{EventName::Data, "(null)", 1, "(null)", "(null)"}));
}

TEST(EventRecorder, RecordsOnlyItsEvents)
{
    EventRecorder recorder({EventName::Info});
    emitInfo(1);
    tracepoint(com_brimlow_kelpsys_corvane, ERROR, "app.cpp", 2, "link is down");
    EXPECT_FALSE(tracepoint_enabled(com_brimlow_kelpsys_corvane, ERROR));
    EXPECT_THAT(recorder.take(), ElementsAre(info(1)));
}

TEST(EventRecorder, RecordsNothingBeforeAndAfterItsLife)
{
    emitInfo(1);
    {
        EventRecorder recorder;
        EXPECT_THAT(recorder.take(), IsEmpty());
        EXPECT_TRUE(tracepoint_enabled(com_brimlow_kelpsys_corvane, INFO));
    }
    EXPECT_FALSE(tracepoint_enabled(com_brimlow_kelpsys_corvane, INFO));
    emitInfo(2);
    EventRecorder next;
    EXPECT_THAT(next.take(), IsEmpty());
}

TEST(EventRecorder, GivesWhatTheLibraryEmits)
{
    Corvane::Testing::resetFiles();
    const auto file = FileManagerIf::getInstance().create("log", 0, 0);
    EventRecorder recorder({EventName::Error});
    EXPECT_EQ(FileManagerIf::getInstance().create("log", 0, 0), nullptr);
    EXPECT_THAT(recorder.take(),
                ElementsAre(Event{EventName::Error, "src/fileManagerImpl.cpp", 95, "", "file (log) already exists"}));
    Corvane::Testing::resetFiles();
    EXPECT_FALSE(FileManagerIf::getInstance().exists("log"));
}

TEST(EventRecorder, MayLiveBesideAnotherOne)
{
    EventRecorder all;
    {
        EventRecorder infos({EventName::Info});
        emitInfo(1);
        EXPECT_THAT(infos.take(), ElementsAre(info(1)));
    }
    emitInfo(2);
    EXPECT_THAT(all.take(), ElementsAre(info(1), info(2)));
    EXPECT_THAT(all.take(), IsEmpty());
}

TEST(EventRecorder, KeepsTheOrderOfEachThread)
{
    constexpr unsigned int threadCount = 4;
    constexpr unsigned int eventCount = 1000;
    EventRecorder recorder({EventName::Info});
    std::vector<std::function<void()>> emitters;
    for (unsigned int thread = 0; thread < threadCount; ++thread) {
        emitters.emplace_back([thread] {
            for (unsigned int number = 0; number < eventCount; ++number) {
                emitInfo(thread * eventCount + number);
            }
        });
    }
    Corvane::Testing::startTogether(emitters);
    std::vector<unsigned int> next = {0, 1000, 2000, 3000};
    const std::vector<Event> events = recorder.take(threadCount * eventCount);
    ASSERT_THAT(events, SizeIs(threadCount * eventCount));
    for (const Event& event : events) {
        EXPECT_EQ(event.line, next.at(event.line / eventCount)++);
    }
}

TEST(EventRecorder, WaitsForTheEventsOfAThread)
{
    EventRecorder recorder({EventName::Info});
    std::thread emitter([] {
        emitInfo(1);
        emitInfo(2);
    });
    EXPECT_THAT(recorder.take(2, minutes(1)), ElementsAre(info(1), info(2)));
    emitter.join();
}

TEST(EventRecorder, GivesWhatThereIsWhenTheTimeIsOver)
{
    EventRecorder recorder({EventName::Info});
    emitInfo(1);
    EXPECT_THAT(recorder.take(2, milliseconds(1)), ElementsAre(info(1)));
}

TEST(EventRecorder, MayEndOnAnyThreadWhileOthersEmit)
{
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "ThreadSanitizer doesn't see how the tracer attaches a probe while a thread emits";
#endif
    std::atomic<bool> isOver{false};
    std::thread emitter([&] {
        for (unsigned int line = 0; !isOver; ++line) {
            emitInfo(line);
        }
    });
    for (int round = 0; round < 50; ++round) {
        std::thread([] {
            EventRecorder recorder({EventName::Info});
            EXPECT_FALSE(recorder.take(1, minutes(1)).empty());
        }).join();
    }
    isOver = true;
    emitter.join();
}

TEST(EventRecorder, ShowsAnEventOnALine)
{
    const auto shown = [](const Event& event) {
        std::ostringstream out;
        out << event;
        return out.str();
    };
    EXPECT_EQ(shown({EventName::Trace1, "a.cpp", 1, "-", "text"}), R"(TRACE1 "a.cpp", 1, "-", "text")");
    EXPECT_EQ(shown({EventName::SendSig, "a.cpp", 1, "x", "text", 0, 0, "", "", 4, 5}),
              R"(SEND_SIG "a.cpp", 1, "x", "text", signal 4, process 5)");
    EXPECT_EQ(shown({EventName::TraceUts1, "a.cpp", 1, "", "text", 2, 3, "app", "bytes"}),
              R"(TRACE_UTS1 "a.cpp", 1, "", "text", 2 s, 3 us, "app", data "bytes")");
}

TEST(EventRecorder, ComparesEachField)
{
    const Event event{EventName::SendSig, "a.cpp", 1, "x", "text", 2, 3, "app", "bytes", 4, 5};
    EXPECT_TRUE(event == event);
    std::vector<Event> others(11, event);
    others[0].name = EventName::RecSig;
    others[1].file = "";
    others[2].line = 0;
    others[3].obj = "";
    others[4].msg = "";
    others[5].sec = 0;
    others[6].usec = 0;
    others[7].process = "";
    others[8].data = "";
    others[9].sigNo = 0;
    others[10].pid = 0;
    EXPECT_THAT(others, testing::Each(testing::Ne(event)));
}

} // namespace
