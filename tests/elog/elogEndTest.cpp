/// Which entries of a process arrive, for each way in which a process can end.
#include <chrono>
#include <csignal>
#include <future>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <zel.h>

#include "tests/elog/numberedEntries.h"
#include "tests/elog/testEngine.h"
#include "tests/support/childProcess.h"
#include "tests/support/runtimeFolder.h"
#include "tests/support/timeToEnd.h"

namespace {

using namespace Corvane::Testing;

constexpr unsigned int written = 20;

struct Way
{
    std::string name;
    int status;
};

const std::vector<Way> orderly = {{"return", 0}, {"exit", 0}};
const std::vector<Way> abrupt = {{"quick_exit", 0},     {"_exit", 0},          {"abort", -SIGABRT},
                                 {"SIGTERM", -SIGTERM}, {"SIGKILL", -SIGKILL}, {"exec", 0}};

/// Runs the program, and the test as its engine, or as one that starts afterwards.
class ElogEnd : public testing::Test
{
protected:
    /// Starts the program, and waits until it has queued its entries.
    void start()
    {
        m_program =
            std::make_unique<Companion>(std::vector<std::string>{CORVANE_END_WITH_ENTRIES}, std::vector<std::string>());
        EXPECT_EQ(m_program->readLine(), "written");
    }

    /// Returns  its exit status.
    int end(const std::string& way)
    {
        m_program->writeLine(way);
        return m_program->finish();
    }

    /// Waits for the first entry: the program is connected then.
    void takeFirst()
    {
        EXPECT_TRUE(receiveEntry().written == bytesOf(0));
        m_taken = 1;
    }

    /// Takes entries at once, as they come, until the program has ended. An end waits for no engine that takes nothing.
    ///
    /// Returns  its exit status.
    int endWhileEntriesAreTaken(const std::string& way)
    {
        auto status = std::async(std::launch::async, [&] { return end(way); });
        while (status.wait_for(std::chrono::seconds(0)) != std::future_status::ready) {
            keep(__zel_receive(nullptr, 10, ZEL_ANY_SENDER, "", 0));
        }
        return status.get();
    }

    /// Takes what is there. All entries that came must be whole and in their order.
    ///
    /// Returns  how many came.
    unsigned int take()
    {
        while (keep(__zel_receive(nullptr, 0, ZEL_ANY_SENDER, "", 0))) {
        }
        for (zel_msg* const message : m_kept) {
            EXPECT_TRUE(entryOf(message).written == bytesOf(m_taken)) << m_taken;
            ++m_taken;
        }
        m_kept.clear();
        return m_taken;
    }

private:
    static std::vector<unsigned char> bytesOf(unsigned int number)
    {
        return writtenBytes(0, uniformTextOfEntry(number), {number});
    }

    bool keep(zel_msg* message)
    {
        if (message != nullptr) {
            m_kept.push_back(message);
        }
        return message != nullptr;
    }

    const RuntimeFolder m_folder;
    std::unique_ptr<Companion> m_program;
    std::vector<zel_msg*> m_kept; // to be looked at once nobody waits for room
    unsigned int m_taken = 0;
};

TEST_F(ElogEnd, ByReturnOrExitDeliversAllThatWasQueued)
{
    for (const Way& way : orderly) {
        onThread([&] {
            ASSERT_TRUE(becomeEngine());
            start();
            takeFirst();
            EXPECT_EQ(endWhileEntriesAreTaken(way.name), way.status) << way.name;
            EXPECT_EQ(take(), written) << way.name;
        });
    }
}

TEST_F(ElogEnd, ByAnyOtherWayDeliversWhatWasSentBeforeAlone)
{
    for (const Way& way : abrupt) {
        onThread([&] {
            ASSERT_TRUE(becomeEngine());
            start();
            takeFirst();
            EXPECT_EQ(end(way.name), way.status) << way.name;
            EXPECT_LT(take(), written) << way.name;
        });
    }
}

TEST_F(ElogEnd, WithoutAnEngineIsImmediateAndDeliversNothing)
{
    std::vector<Way> ways = orderly;
    ways.insert(ways.end(), abrupt.begin(), abrupt.end());
    for (const Way& way : ways) {
        onThread([&] {
            start();
            const auto begin = std::chrono::steady_clock::now();
            EXPECT_EQ(end(way.name), way.status) << way.name;
            EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(timeToEnd())) << way.name;
            ASSERT_TRUE(becomeEngine());
            EXPECT_EQ(take(), 0U) << way.name;
        });
    }
}

TEST_F(ElogEnd, FromInsideElogWriteWaitsForNobodyForEverAndDeliversWhatWasSentMeanwhile)
{
    onThread([&] {
        ASSERT_TRUE(becomeEngine());
        start();
        takeFirst();
        EXPECT_EQ(endWhileEntriesAreTaken("new_handler"), 3); // or it hangs
        EXPECT_EQ(take(), written) << "the engine took them while the end waited";
    });
}

} // namespace
