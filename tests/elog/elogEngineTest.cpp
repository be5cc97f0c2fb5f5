/// The event-log process: what it accepts, what it prints, what it keeps, and how it ends.
#include <algorithm>
#include <csignal>
#include <cstring>
#include <deque>
#include <filesystem>
#include <fstream>
#include <future>
#include <iostream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>
#include <zel.h>

#include "tests/elog/testEngine.h"
#include "tests/support/childProcess.h"
#include "tests/support/emulation.h"
#include "tests/support/runtimeFolder.h"

namespace {

using namespace Corvane::Testing;
using testing::EndsWith;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;

/// What the program does when it is started with "--clients <count>": as many threads, each with a mailbox of its own,
/// wait for the engine and send it an entry. It prints "sent" when all have, and ends with standard input.
int runClients(unsigned int count)
{
    std::vector<std::future<void>> sent;
    std::promise<void> end;
    const std::shared_future<void> ended = end.get_future().share();
    std::vector<std::thread> clients;
    for (unsigned int client = 0; client < count; ++client) {
        std::promise<void> hasSent;
        sent.push_back(hasSent.get_future());
        clients.emplace_back([client, ended, hasSent = std::move(hasSent)]() mutable {
            const std::uint32_t id = locateEngine("Client-" + std::to_string(getpid()) + "-" + std::to_string(client));
            const std::vector<unsigned char> bytes = messageOf(client, "one of many", {});
            zel_msg* message = __zel_alloc(bytes.size(), 0, "", 0);
            std::memcpy(message, bytes.data(), bytes.size());
            __zel_send(&message, id, 0xFFF00000, "", 0);
            hasSent.set_value();
            ended.wait();
        });
    }
    for (std::future<void>& one : sent) {
        one.wait();
    }
    std::cout << "sent" << std::endl;
    std::string line;
    while (std::getline(std::cin, line)) {
    }
    end.set_value();
    for (std::thread& client : clients) {
        client.join();
    }
    return 0;
}

/// While it lives, programs that are started can't make a file larger.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit = {bytes, m_before.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() { ::setrlimit(RLIMIT_FSIZE, &m_before); }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit m_before = {};
};

class ElogEngineProcess : public testing::Test
{
protected:
    static void writeEntries(const std::string& command)
    {
        waitForEngine(); // the writer doesn't
        Companion writer({CORVANE_ELOG_WRITER}, {});
        writer.writeLine(command);
        EXPECT_EQ(writer.readLine(), "written");
        EXPECT_EQ(writer.finish(), 0);
    }

    /// Returns  a command that starts the engine with other standard files.
    static std::vector<std::string> engineWith(const std::string& redirections)
    {
        std::vector<std::string> command = {"sh", "-c", R"(exec "$@" )" + redirections, "sh"};
        const std::vector<std::string> program = runnable({CORVANE_ELOG_ENGINE});
        command.insert(command.end(), program.begin(), program.end());
        return command;
    }

    std::string contentOf(const std::string& name) const
    {
        std::ifstream file(m_folder.path() / name);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    const RuntimeFolder m_folder;
};

TEST_F(ElogEngineProcess, PrintsEntriesInTheirOrder)
{
    Companion engine({CORVANE_ELOG_ENGINE}, {});
    writeEntries("write 1 3");
    const std::string time = "[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{6}Z";
    EXPECT_THAT(engine.readLine(), MatchesRegex(time + " #1 sender [0-9]+ event 0 \\[0\\] \"entry 0 of thread 0\""));
    EXPECT_THAT(engine.readLine(), MatchesRegex(time + " #2 sender [0-9]+ event 0 \\[1\\] \"entry 1 of thread 0\\.\""));
    EXPECT_THAT(engine.readLine(),
                MatchesRegex(time + " #3 sender [0-9]+ event 0 \\[2\\] \"entry 2 of thread 0\\.\\.\""));
    kill(engine.pid(), SIGTERM);
    EXPECT_EQ(engine.finish(), 0);
}

TEST_F(ElogEngineProcess, HasALineOnDiskWhenItPrintsIt)
{
    std::ofstream(m_folder.path() / "log") << "cut off";
    const std::string log = m_folder.path() / "log";
    Companion engine({CORVANE_ELOG_ENGINE, "--json", "--append", log}, {});
    writeEntries("write 1 2");
    const std::string first = engine.readLine();
    EXPECT_THAT(contentOf("log"), StartsWith("cut off\n" + first + "\n"));
    const std::string second = engine.readLine();
    EXPECT_THAT(first, HasSubstr(R"("eventId":0,"params":[0],"text":"entry 0 of thread 0"})"));
    EXPECT_EQ(contentOf("log"), "cut off\n" + first + "\n" + second + "\n");
    kill(engine.pid(), SIGINT);
    EXPECT_EQ(engine.finish(), 0);
}

TEST_F(ElogEngineProcess, ReadsWhatHadArrivedBeforeItEnds)
{
    const std::string log = m_folder.path() / "log";
    Companion engine({CORVANE_ELOG_ENGINE, "--append", log}, {});
    {
        Companion writer({CORVANE_ELOG_WRITER}, {});
        writer.writeLine("write 1 1");
        writer.readLine();
        engine.readLine(); // so the writer is connected
        kill(engine.pid(), SIGSTOP);
        writer.writeLine("write 1 100");
        writer.readLine();
        EXPECT_EQ(writer.finish(), 0);
    }
    kill(engine.pid(), SIGTERM);
    kill(engine.pid(), SIGCONT);
    EXPECT_EQ(engine.finish(), 0);
    const std::string content = contentOf("log");
    EXPECT_EQ(std::count(content.begin(), content.end(), '\n'), 101);
    EXPECT_THAT(content, HasSubstr(" #101 "));
}

TEST_F(ElogEngineProcess, EndsOnASignalThoughMoreClientsAreConnectedThanItHasPlacesFor)
{
    std::deque<Companion> clients; // 520 that wait for the engine, which takes 512 connections
    for (int process = 0; process < 8; ++process) {
        clients.emplace_back(std::vector<std::string>{"/proc/self/exe", "--clients", "65"}, std::vector<std::string>());
    }
    Companion engine({CORVANE_ELOG_ENGINE}, {});
    for (Companion& client : clients) {
        EXPECT_EQ(client.readLine(), "sent");
    }
    EXPECT_THAT(engine.readLine(), HasSubstr(" #1 "));
    kill(engine.pid(), SIGTERM);
    EXPECT_EQ(engine.finish(), 0);
    for (Companion& client : clients) {
        EXPECT_EQ(client.finish(), 0);
    }
}

TEST_F(ElogEngineProcess, SurvivesMessagesThatAreNoEntries)
{
    Companion engine({CORVANE_ELOG_ENGINE}, {});
    std::async(std::launch::async, [] {
        const std::uint32_t id = locateEngine("Stranger");
        for (const std::uint32_t number : {1U, 0x17070D0U, 0x17070D1U}) {
            for (const std::size_t size : {std::size_t{4}, std::size_t{20}, std::size_t{1} << 20U}) {
                zel_msg* message = __zel_alloc(size, number, "", 0);
                std::memset(reinterpret_cast<unsigned char*>(message) + 4, 0xAA, size - 4);
                __zel_send(&message, id, 0xFFF00000, "", 0);
            }
        }
    }).get();
    writeEntries("write 1 1");
    EXPECT_THAT(engine.readLine(), HasSubstr(" #1 "));
    kill(engine.pid(), SIGTERM);
    EXPECT_EQ(engine.finish(), 0);
}

TEST_F(ElogEngineProcess, DropsAnEntryForWhichThereIsNoMemoryAndGoesOn)
{
#ifdef CORVANE_TEST_SANITIZED
    GTEST_SKIP() << "a sanitizer needs more memory than a limit leaves";
#endif
    if (isEmulated()) {
        GTEST_SKIP() << "the limit would be the emulator's";
    }
    const std::string errors = m_folder.path() / "errors";
    Companion engine({"sh", "-c", R"(exec "$0" 2> "$1")", CORVANE_ELOG_ENGINE, errors}, {});
    std::async(std::launch::async, [&engine] {
        const std::uint32_t id = locateEngine("Verbose");
        const rlimit limit = {600U << 20U, 600U << 20U};
        EXPECT_EQ(::prlimit(engine.pid(), RLIMIT_AS, &limit, nullptr), 0);
        const std::size_t largestText = (64U << 20U) - messageOf(0, "", {}).size();
        for (const std::string& text :
             {std::string("before"), std::string(largestText, '\x80'), std::string("after")}) {
            const std::vector<unsigned char> bytes = messageOf(7, text, {});
            zel_msg* message = __zel_alloc(bytes.size(), 0, "", 0);
            std::memcpy(message, bytes.data(), bytes.size());
            __zel_send(&message, id, 0xFFF00000, "", 0);
        }
    }).get();
    EXPECT_THAT(engine.readLine(), EndsWith("event 7 [] \"before\""));
    const std::string after = engine.readLine();
    EXPECT_THAT(after, HasSubstr(" #2 "));
    EXPECT_THAT(after, EndsWith("event 7 [] \"after\""));
    kill(engine.pid(), SIGTERM);
    EXPECT_EQ(engine.finish(), 0);
    EXPECT_THAT(contentOf("errors"), MatchesRegex("elogEngine: ready\n"
                                                  "elogEngine: dropped a message of 67108864 bytes from [0-9]+: "
                                                  "no memory\n"));
}

TEST_F(ElogEngineProcess, EndsOnASignalThoughNobodyReadsItsLines)
{
    Companion engine({CORVANE_ELOG_ENGINE}, {});
    writeEntries("big 1"); // a line that is longer than a pipe holds
    kill(engine.pid(), SIGTERM);
    EXPECT_EQ(engine.finish(), 1);
}

TEST_F(ElogEngineProcess, EndsOnASignalThoughNobodyReadsItsReportsEither)
{
    Companion engine(engineWith("2>&1"), {});
    writeEntries("big 1"); // fills the pipe, in which the report that nobody reads finds no place
    kill(engine.pid(), SIGTERM);
    EXPECT_EQ(engine.finish(), 1);
}

TEST_F(ElogEngineProcess, LeavesTheFileOfAnotherEngineAlone)
{
    const std::string log = m_folder.path() / "log";
    std::ofstream(log) << "being writ";
    std::async(std::launch::async, [&] {
        ASSERT_TRUE(becomeEngine());
        EXPECT_EQ(runProgram({CORVANE_ELOG_ENGINE, "--append", log}).status, 1);
        EXPECT_EQ(runProgram({CORVANE_ELOG_ENGINE, "--append", log + "2"}).status, 1);
    }).get();
    EXPECT_EQ(contentOf("log"), "being writ");
    EXPECT_FALSE(std::filesystem::exists(log + "2"));
}

TEST_F(ElogEngineProcess, EndsWhenThereIsAnotherEngine)
{
    std::async(std::launch::async, [] {
        ASSERT_TRUE(becomeEngine());
        const ProgramResult result = runProgram({CORVANE_ELOG_ENGINE});
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.err, "elogEngine: can't create the mailbox ElogEngine; another engine may have it\n");
    }).get();
}

TEST_F(ElogEngineProcess, EndsWhenItCanNotKeepItsPromise)
{
    const ProgramResult result = runProgram({CORVANE_ELOG_ENGINE, "--append", m_folder.path() / "no" / "log"});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.err, EndsWith("/no/log: No such file or directory\n"));
}

TEST_F(ElogEngineProcess, EndsWhenTheDiskIsFullAndPrintsNothingThatIsNotOnIt)
{
    Companion engine({CORVANE_ELOG_ENGINE, "--append", "/dev/full"}, {});
    writeEntries("write 1 1");
    EXPECT_EQ(engine.readLine(), "");
    EXPECT_EQ(engine.finish(), 1);
}

TEST_F(ElogEngineProcess, LeavesALineCutOffWhereTheFileIsFullAndGoesOnBehindIt)
{
    const std::string log = m_folder.path() / "log";
    std::string printed;
    {
        auto limit = std::make_unique<FileSizeLimit>(1024); // the file takes a part of the lines
        Companion engine({CORVANE_ELOG_ENGINE, "--append", log}, {});
        limit.reset();
        writeEntries("write 1 100");
        for (std::string line; !(line = engine.readLine()).empty();) {
            printed += line + "\n";
        }
        EXPECT_EQ(engine.finish(), 1);
    }
    const std::string full = contentOf("log");
    EXPECT_EQ(full.size(), 1024U);
    EXPECT_NE(full.back(), '\n');
    EXPECT_THAT(full, StartsWith(printed));
    Companion engine({CORVANE_ELOG_ENGINE, "--append", log}, {});
    writeEntries("write 1 1");
    const std::string line = engine.readLine();
    EXPECT_THAT(line, HasSubstr("entry 0 of thread 0"));
    EXPECT_EQ(contentOf("log"), full + "\n" + line + "\n");
    kill(engine.pid(), SIGTERM);
    EXPECT_EQ(engine.finish(), 0);
}

TEST_F(ElogEngineProcess, EndsWhenNobodyTakesItsLines)
{
    Companion writer({CORVANE_ELOG_WRITER}, {});
    writer.writeLine("write 1 3000");
    EXPECT_EQ(writer.readLine(), "written");
    const FileSizeLimit limit(128 * 1024); // standard output is a file here, and a sanitizer makes one as well
    EXPECT_EQ(runProgram({CORVANE_ELOG_ENGINE}).status, 1);
    EXPECT_EQ(writer.finish(), 0);
}

TEST_F(ElogEngineProcess, EndsWhenThereIsNoStandardOutput)
{
    for (const std::string closed : {">&-", "<&- >&-", "<&- >&- 2>&-"}) {
        Companion engine(engineWith(closed), {});
        writeEntries("write 1 1");
        kill(engine.pid(), SIGTERM); // which it has no need of
        EXPECT_EQ(engine.finish(), 1) << closed;
    }
}

TEST_F(ElogEngineProcess, ExplainsItself)
{
    const ProgramResult help = runProgram({CORVANE_ELOG_ENGINE, "--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_THAT(help.out, StartsWith("Usage: elogEngine [--json] [--append FILE]\n"));
    EXPECT_EQ(help.err, "");
    for (const std::vector<std::string>& wrong :
         {std::vector<std::string>{"--wrong"}, {"--append"}, {"word"}, {"--json=1"}}) {
        std::vector<std::string> command = {CORVANE_ELOG_ENGINE};
        command.insert(command.end(), wrong.begin(), wrong.end());
        const ProgramResult result = runProgram(command);
        EXPECT_EQ(result.status, 2) << wrong[0];
        EXPECT_THAT(result.err, HasSubstr("Try: elogEngine --help\n"));
    }
}

} // namespace

int main(int argc, char** argv)
{
    if (argc == 3 && std::string(argv[1]) == "--clients") {
        return runClients(static_cast<unsigned int>(std::stoul(argv[2])));
    }
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
