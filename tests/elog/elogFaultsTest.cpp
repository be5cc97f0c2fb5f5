/// The client when memory runs out while it reports, and when a thread ends it from inside elogWrite().
#include <functional>
#include <string>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <zel.h>

#include "elog/src/elogImpl_V2.h"
#include "tests/elog/fakePlatform.h"
#include "tests/support/failingAllocation.h"
#include "tests/support/tracingTexts.h"

namespace {

using Corvane::Elog::V2::ElogImpl;
using Corvane::Testing::failEachAllocation;
using Corvane::Testing::Failing;
using Corvane::Testing::FailingAllocation;
using Corvane::Testing::FakePlatform;
using Corvane::Testing::TracingTexts;

using testing::Contains;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

/// Runs a job of the client's thread as often as it makes allocations, with another one failing each time. An
/// exception would end the process there, and ends the test here.
///
/// Returns  how many allocations it makes.
int runWithoutMemory(const std::function<void()>& job)
{
    for (int count = 0;; ++count) {
        for (const Failing which : {Failing::FromThenOn, Failing::Once}) {
            const FailingAllocation failing(count, which);
            job();
            if (!failing.hasFailed()) {
                return count;
            }
        }
    }
}

class ElogClientFaults : public testing::Test
{
protected:
    FakePlatform m_platform;
};

TEST_F(ElogClientFaults, LeaveAClientThatCannotStartForLackOfMemoryUnstarted)
{
    int started = 0;
    EXPECT_GT(failEachAllocation(
                  [&] {
                      const ElogImpl client;
                      ++started;
                  },
                  [&] { EXPECT_FALSE(m_platform.hasActiveObject); }),
              0);
    EXPECT_EQ(started, 1);
}

TEST_F(ElogClientFaults, LoseTheReportThatThereIsNoMailboxIfThereIsNoMemoryForIt)
{
    const TracingTexts tracing;
    m_platform.mailboxId = ZEL_NO_MAILBOX;
    ElogImpl client;
    EXPECT_GT(runWithoutMemory(m_platform.init), 0);
    client.elogWrite(1, "discarded", {});
    m_platform.init = nullptr;
    m_platform.run();
    EXPECT_THAT(m_platform.sent, IsEmpty());
}

TEST_F(ElogClientFaults, LoseTheReportOfATimeoutIfThereIsNoMemoryForIt)
{
    const TracingTexts tracing;
    ElogImpl client;
    EXPECT_GT(runWithoutMemory([&] {
                  m_platform.timeouts = 1;
                  m_platform.init();
              }),
              0);
    m_platform.init = nullptr;
    client.elogWrite(1, "sent", {});
    m_platform.run();
    EXPECT_THAT(m_platform.sent, SizeIs(1));
    EXPECT_EQ(m_platform.messages, 0U);
}

TEST_F(ElogClientFaults, LoseTheReportOfADiscardedEntryIfThereIsNoMemoryForIt)
{
    const TracingTexts tracing;
    ElogImpl client;
    m_platform.run();
    client.elogWrite(1, "discarded", {});
    const std::function<void()> job = std::move(m_platform.jobs.front());
    m_platform.jobs.clear();
    m_platform.refuseAllocation = true;
    EXPECT_GT(runWithoutMemory(job), 0);
    m_platform.refuseAllocation = false;
    client.elogWrite(2, "sent", {});
    m_platform.run();
    EXPECT_THAT(m_platform.sent, SizeIs(1));
}

TEST_F(ElogClientFaults, DoNotLetAThreadThatEndsTheClientInsideElogWriteWaitForEver)
{
    ElogImpl client;
    m_platform.whilePosting = [&] {
        client.end(); // as exit() would, called by a handler of a signal or of missing memory
        EXPECT_TRUE(m_platform.hasActiveObject) << "this thread still uses it";
    };
    client.elogWrite(1, "queued", {});
    EXPECT_THAT(m_platform.jobs, SizeIs(1));
    client.elogWrite(2, "dropped", {});
    EXPECT_THAT(m_platform.jobs, SizeIs(1));
    EXPECT_THAT(m_platform.calls, Not(Contains("release()")));
}

} // namespace
