/// The client's reports, recorded live and read back field by field.
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/liveSession.h"
#include "tests/support/runtimeFolder.h"

namespace {

using namespace Corvane::Testing;

RecordedEvent info(const std::string& line, const std::string& msg)
{
    return {"INFO", "TRACE_INFO (6)", {{"file", "src/elogImpl_V2.cpp"}, {"line", line}, {"msg", msg}}};
}

auto areOfThreeThreads()
{
    return testing::UnorderedElementsAre(info("98", "ABN: Discarding elog write for eventId: 0"),
                                         info("98", "ABN: Discarding elog write for eventId: 1"),
                                         info("98", "ABN: Discarding elog write for eventId: 2"));
}

class ElogReports : public testing::Test
{
protected:
    void SetUp() override
    {
#ifdef CORVANE_TEST_SANITIZED
        GTEST_SKIP() << "a live recording is not made under a sanitizer";
#else
        m_session = std::make_unique<LiveSession>();
        if (!m_session->whyNot().empty()) {
            GTEST_SKIP() << m_session->whyNot();
        }
#endif
    }

    /// Runs an application that writes an entry 0 and then, on three threads, entries 0 to 2.
    Recording record(std::vector<std::string> environment = {})
    {
        const std::vector<std::string> forTracing = m_session->environment();
        environment.insert(environment.end(), forTracing.begin(), forTracing.end());
        Companion writer({CORVANE_ELOG_WRITER}, environment);
        writer.writeLine("write 1 1");
        writer.readLine();
        writer.writeLine("write 3 1");
        writer.readLine();
        EXPECT_EQ(writer.finish(), 0);
        m_session->follow(writer.pid());
        return m_session->finish();
    }

private:
    const RuntimeFolder m_folder;
    std::unique_ptr<LiveSession> m_session;
};

TEST_F(ElogReports, SayOnceThatThereIsNoMailboxAndThenThatEachEntryIsDiscarded)
{
    // Mailboxes can't be created in a folder that can't be made.
    const std::vector<RecordedEvent> events = record({"XDG_RUNTIME_DIR=/dev/null"}).events;
    ASSERT_EQ(events.size(), 5U);
    EXPECT_EQ(events[0], info("59", "ABN: Failed to create ZEL mailbox: ElogEngineClient"));
    EXPECT_EQ(events[1], info("98", "ABN: Discarding elog write for eventId: 0"));
    EXPECT_THAT((std::vector<RecordedEvent>(events.begin() + 2, events.end())), areOfThreeThreads());
}

TEST_F(ElogReports, SayAtEachTimeoutThatTheEngineIsMissingAndThatEachEntryIsDiscardedForLackOfMemory)
{
    // The loader takes a list, in which a path must not have blanks.
    const std::vector<RecordedEvent> events =
        record({"LD_PRELOAD=" CORVANE_IMPATIENT_ZEL, "LD_LIBRARY_PATH=" CORVANE_IMPATIENT_ZEL_FOLDER}).events;
    ASSERT_EQ(events.size(), 7U);
    for (std::size_t timeout = 0; timeout < 3; ++timeout) {
        EXPECT_EQ(events[timeout], info("71", "ABN: 'ElogEngine' not available. Still waiting ..."));
    }
    EXPECT_EQ(events[3], info("98", "ABN: Discarding elog write for eventId: 0"));
    EXPECT_THAT((std::vector<RecordedEvent>(events.begin() + 4, events.end())), areOfThreeThreads());
}

} // namespace
