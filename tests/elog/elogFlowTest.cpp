/// The client as applications use it, between processes: every byte, order, loss, waiting and the end of a process.
#include <array>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <future>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/types.h>
#include <zel.h>

#include "tests/elog/numberedEntries.h"
#include "tests/elog/testEngine.h"
#include "tests/support/childProcess.h"
#include "tests/support/runtimeFolder.h"
#include "tests/support/timeToEnd.h"

namespace {

using namespace Corvane::Testing;

class Writer : public Companion
{
public:
    explicit Writer(const std::vector<std::string>& environment = {}) : Companion({CORVANE_ELOG_WRITER}, environment) {}

    void write(const std::string& command)
    {
        writeLine(command);
        EXPECT_EQ(readLine(), "written");
    }

    long openFiles()
    {
        writeLine("files");
        return std::stol(readLine());
    }

    /// Has it killed unless it ends sooner than if it waited for an engine that has stopped reading.
    void hurry()
    {
        writeLine("hurry " + std::to_string(timeToEnd()));
        EXPECT_EQ(readLine(), "hurrying");
    }
};

class Engine : public Companion
{
public:
    explicit Engine(unsigned long expected, unsigned long pause = 0)
        : Companion({"/proc/self/exe", "--engine", std::to_string(expected), std::to_string(pause)}, {})
    {
        EXPECT_EQ(readLine(), "created");
    }

    void expectFlow() { EXPECT_EQ(readLine(), "flowing"); }
    void expectAll()
    {
        std::string line = readLine();
        EXPECT_EQ(line == "flowing" ? readLine() : line, "complete");
    }
};

/// Mailboxes can't be created in a folder that can't be made.
const std::vector<std::string> withoutMailboxes = {"XDG_RUNTIME_DIR=/dev/null"};

class ElogFlow : public testing::Test
{
    const RuntimeFolder m_folder;
};

TEST_F(ElogFlow, CarriesEveryByteOfTheEntriesAtTheEdges)
{
    onThread([] {
        ASSERT_TRUE(becomeEngine());
        Writer writer;
        writer.write("edges");
        unsigned int sender = 0;
        for (const PlainEntry& expected : edgeEntries()) {
            const ReceivedEntry entry = receiveEntry();
            EXPECT_TRUE(entry.written == writtenBytes(expected.eventId, expected.text, expected.params));
            EXPECT_EQ(entry.size, expected.text.size() + (expected.params.size() + 5) * 4);
            EXPECT_TRUE(expected.text != "abc" || (entry.size == 31 && entry.written.size() == 28));
            EXPECT_TRUE(!expected.text.empty() || entry.size == 20);
            EXPECT_TRUE(sender == 0 || entry.sender == sender);
            sender = entry.sender;
        }
        zel_msg* reply = __zel_alloc(4, 1, "", 0);
        __zel_locate_async("ElogEngineClient", &reply, ZEL_OWN_MAILBOX, "", 0);
        const unsigned int locateReply[] = {1, 1};
        reply = __zel_receive(locateReply, 60000, ZEL_ANY_SENDER, "", 0);
        EXPECT_EQ(__zel_sender(reply, "", 0), sender);
        __zel_free(&reply, "", 0);
        EXPECT_EQ(writer.finish(), 0);
    });
}

TEST_F(ElogFlow, DeliversAllEntriesOfEightThreadsToAnEngineThatStartsLate)
{
    Writer writer;
    writer.write("write 8 100000");
    Engine engine(800000);
    engine.expectAll();
    EXPECT_EQ(writer.finish(), 0);
}

TEST_F(ElogFlow, DeliversAllEntriesToAnEngineThatReadsSlowly)
{
    Engine engine(40000, 50);
    Writer writer;
    writer.writeLine("write 8 5000");
    engine.expectFlow();
    EXPECT_EQ(writer.readLine(), "written"); // though the engine has read no more than a thousand
    engine.writeLine("go on");
    engine.expectAll();
    EXPECT_EQ(writer.finish(), 0);
}

TEST_F(ElogFlow, DeliversAllEntriesToAnEngineThatIsStoppedAndContinued)
{
    Engine engine(800000);
    Writer writer;
    writer.writeLine("write 8 100000");
    engine.expectFlow();
    kill(engine.pid(), SIGSTOP);
    EXPECT_EQ(writer.readLine(), "written"); // though nobody reads
    kill(engine.pid(), SIGCONT);
    engine.expectAll();
    EXPECT_EQ(writer.finish(), 0);
}

TEST_F(ElogFlow, DeliversAllEntriesToTheEngineThatFollowsAKilledOne)
{
    Engine killed(1000);
    Writer early;
    early.write("write 1 1000");
    killed.expectAll();
    kill(killed.pid(), SIGKILL);
    EXPECT_EQ(killed.finish(), -SIGKILL);
    Engine engine(800000);
    Writer late;
    late.write("write 8 100000");
    engine.expectAll();
    early.write("write 1 1"); // it goes on with the killed one
    EXPECT_EQ(early.finish(), 0);
    EXPECT_EQ(late.finish(), 0);
}

TEST_F(ElogFlow, GoesOnWhenTheEngineIsKilled)
{
    Engine engine(1000000000);
    Writer writer;
    writer.writeLine("write 8 20000");
    engine.expectFlow();
    kill(engine.pid(), SIGKILL);
    EXPECT_EQ(writer.readLine(), "written");
    writer.writeLine("settle");
    EXPECT_EQ(writer.readLine(), "settled");
    const long files = writer.openFiles();
    writer.write("bulk 100000");
    writer.writeLine("settle");
    EXPECT_EQ(writer.readLine(), "settled"); // what can't be sent is freed, or this test hangs
    EXPECT_LE(writer.openFiles(), files);
    EXPECT_EQ(writer.finish(), 0);
}

TEST_F(ElogFlow, DeliversWholeEntriesAloneWhenClientsAreKilledWhileSending)
{
    onThread([] {
        ASSERT_TRUE(becomeEngine());
        std::map<unsigned int, unsigned int> next; // number, by client
        std::set<unsigned int> killedClients;
        const auto takeFromLivingClient = [&](unsigned int count) {
            unsigned int client = 0;
            while (count > 0) {
                const ReceivedEntry entry = receiveEntry();
                const unsigned int number = next[entry.sender]++;
                EXPECT_TRUE(entry.written == writtenBytes(0, bigTextOfEntry(number), {number}));
                const bool isAlive = killedClients.count(entry.sender) == 0;
                client = isAlive ? entry.sender : client;
                count -= isAlive ? 1 : 0;
            }
            return client;
        };
        constexpr unsigned int entries = 20;
        for (const unsigned int taken : {1U, 2U, 3U, 5U, 8U}) {
            Writer killed;
            killed.write("big " + std::to_string(entries));
            killedClients.insert(takeFromLivingClient(taken));
            kill(killed.pid(), SIGKILL); // the next entry is on its way: a socket doesn't hold all of it
            EXPECT_EQ(killed.finish(), -SIGKILL);
        }
        Writer other;
        other.write("big " + std::to_string(entries));
        takeFromLivingClient(entries);
        EXPECT_EQ(other.finish(), 0);
        EXPECT_EQ(next.size(), 6U);
        for (const unsigned int client : killedClients) {
            EXPECT_LT(next[client], entries);
        }
    });
}

TEST_F(ElogFlow, NeverBlocksAWriterThoughTheEngineNeverReads)
{
    onThread([] {
        ASSERT_TRUE(becomeEngine());
        Writer writer;
        writer.write("write 8 20000"); // or this test hangs
        kill(writer.pid(), SIGKILL);
        writer.finish();
    });
}

TEST_F(ElogFlow, EndsAtOnceWithoutAnEngine)
{
    Writer writer;
    writer.write("write 8 1000");
    writer.hurry();
    EXPECT_EQ(writer.finish(), 0);
}

TEST_F(ElogFlow, EndsAtOnceWithoutAMailboxOfItsOwn)
{
    Writer writer(withoutMailboxes);
    writer.write("write 8 1000");
    writer.hurry();
    EXPECT_EQ(writer.finish(), 0);
}

TEST_F(ElogFlow, EndsThoughTheEngineNeverReads)
{
    onThread([] {
        ASSERT_TRUE(becomeEngine());
        Writer writer;
        writer.write("write 8 1000");
        EXPECT_EQ(writer.finish(), 0);
    });
}

/// Takes the entries of a process whose threads go on writing while main() returns.
///
/// Expects  every entry that was written before that, each thread's in order, and the end of the process.
void expectOrderlyEnd(const std::string& command, std::chrono::microseconds timeForAnEntry)
{
    Writer writer;
    writer.hurry();
    writer.writeLine(command);
    std::istringstream written(writer.readLine());
    auto status = std::async(std::launch::async, [&] { return writer.finish(); });
    std::map<std::uint32_t, std::uint32_t> next; // number, by thread
    for (bool isOver = false; !isOver;) {
        isOver = status.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
        while (zel_msg* message = __zel_receive(nullptr, isOver ? 0 : 10, ZEL_ANY_SENDER, "", 0)) {
            std::array<std::uint32_t, 5> words{};
            std::memcpy(words.data(), message, sizeof words);
            __zel_free(&message, "", 0);
            EXPECT_EQ(words[4], next[words[1]]++);
            std::this_thread::sleep_for(timeForAnEntry);
        }
    }
    EXPECT_EQ(status.get(), 0);
    std::uint32_t thread = 0;
    for (std::uint32_t count = 0; written >> count; ++thread) {
        EXPECT_GE(next[thread], count) << "of thread " << thread;
    }
    EXPECT_EQ(thread, 8U);
}

TEST_F(ElogFlow, EndsWhileThreadsGoOnWritingOnceASlowEngineHasWhatWasQueued)
{
    onThread([] {
        ASSERT_TRUE(becomeEngine());
        expectOrderlyEnd("go-on 4 4000 70", std::chrono::microseconds(100));
    });
}

TEST_F(ElogFlow, EndsUnharmedWhileThreadsGoOnWriting)
{
    onThread([] {
        ASSERT_TRUE(becomeEngine());
        for (int round = 0; round < 5; ++round) {
            expectOrderlyEnd("go-on 8 2000 0", std::chrono::milliseconds(0));
        }
    });
}

TEST_F(ElogFlow, LetsForkedChildrenExitWhileThreadsAreWriting)
{
#ifdef CORVANE_TEST_SANITIZED
    GTEST_SKIP() << "a sanitizer may leave locks of its own to a child that another thread holds";
#endif
    Writer writer(withoutMailboxes); // what the threads write is discarded at once
    writer.writeLine("go-on 8 8000 0");
    writer.readLine();
    writer.writeLine("fork 20");
    EXPECT_EQ(writer.readLine(), "20");
    EXPECT_EQ(writer.finish(), 0);
}

TEST_F(ElogFlow, DeliversWhatWasWrittenJustBeforeTheEnd)
{
    for (int round = 0; round < 20; ++round) {
        Engine engine(1);
        Writer writer;
        writer.writeLine("write 1 1");
        EXPECT_EQ(writer.finish(), 0);
        engine.expectAll();
    }
}

TEST_F(ElogFlow, KeepsTheLibraryLoadedThatAnApplicationUnloadsAfterStartingTheClient)
{
    Engine engine(1);
    const ProgramResult result = runProgram({CORVANE_ELOG_UNLOADER, CORVANE_LIBRARY, "start"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, "still loaded\n");
    engine.expectAll();
}

TEST_F(ElogFlow, LetsAnApplicationUnloadTheLibraryIfTheClientWasNotStarted)
{
    const ProgramResult result = runProgram({CORVANE_ELOG_UNLOADER, CORVANE_LIBRARY});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, "unloaded\n");
}

TEST_F(ElogFlow, StartsOnOneThreadWhileAnotherLoadsAPluginThatStartsItToo)
{
    onThread([] {
        ASSERT_TRUE(becomeEngine());
        const ProgramResult result = runProgram({CORVANE_ELOG_PLUGIN_HOST, CORVANE_ELOG_PLUGIN}); // or it hangs
        EXPECT_EQ(result.status, 0) << result.err;
        EXPECT_EQ(result.out, "loaded\n");
        EXPECT_THAT((std::vector{receiveEntry().written, receiveEntry().written}),
                    testing::UnorderedElementsAre(writtenBytes(1, "from the application", {}),
                                                  writtenBytes(2, "from the plug-in", {})));
    });
}

} // namespace

int main(int argc, char** argv)
{
    if (argc == 4 && std::string(argv[1]) == "--engine") {
        return runEngine(std::stoul(argv[2]), std::stoul(argv[3]));
    }
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
