/// The event-log process: what it accepts, what it prints, and how it ends.
#include <array>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <future>
#include <map>
#include <memory>
#include <sstream>
#include <string>
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
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::SizeIs;
using testing::StartsWith;

/// Sends messages to the engine from a mailbox of another thread.
void sendMessages(const std::vector<std::vector<unsigned char>>& messages)
{
    std::async(std::launch::async, [&messages] {
        const std::uint32_t engine = locateEngine("Stranger");
        for (const std::vector<unsigned char>& bytes : messages) {
            zel_msg* message = __zel_alloc(bytes.size(), 0, "", 0);
            std::memcpy(message, bytes.data(), bytes.size());
            __zel_send(&message, engine, ZEL_OWN_MAILBOX, "", 0);
        }
    }).get();
}

/// Returns  the lines up to the engine's end.
std::vector<std::string> remainingLines(Companion& engine)
{
    std::vector<std::string> lines;
    for (std::string line; !(line = engine.readLine()).empty();) {
        lines.push_back(line);
    }
    return lines;
}

class ElogEngineProcess : public testing::Test
{
protected:
    ElogEngineProcess() { std::signal(SIGHUP, SIG_DFL); } // engines inherit what happens on SIGHUP

    static void writeEntries(const std::string& command)
    {
        waitForEngine(); // the writer doesn't
        Companion writer({CORVANE_ELOG_WRITER}, {});
        writer.writeLine(command);
        EXPECT_EQ(writer.readLine(), "written");
        EXPECT_EQ(writer.finish(), 0);
    }

    /// Returns  a command that starts the engine from a shell: `script` goes before, `redirections` behind.
    static std::vector<std::string> engineWith(const std::string& redirections, const std::string& script = "")
    {
        std::vector<std::string> command = {"sh", "-c", script + R"( exec "$@" )" + redirections, "sh"};
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

constexpr const char* timeForm = "[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{6}Z";

TEST_F(ElogEngineProcess, PrintsEntriesInTheirOrderAndNamesTheirWriter)
{
    Companion engine({CORVANE_ELOG_ENGINE}, {});
    Companion writer({CORVANE_ELOG_WRITER}, {});
    writer.writeLine("write 1 2");
    const std::string writerName = " elogWriter\\[" + std::to_string(writer.pid()) + "\\] ";
    EXPECT_THAT(engine.readLine(),
                MatchesRegex(timeForm + (" #1" + writerName) + R"(event 0 \[0\] "entry 0 of thread 0")"));
    EXPECT_THAT(engine.readLine(),
                MatchesRegex(timeForm + (" #2" + writerName) + R"(event 0 \[1\] "entry 1 of thread 0\.")"));
    kill(engine.pid(), SIGTERM);
    EXPECT_EQ(engine.finish(), 0);
}

TEST_F(ElogEngineProcess, PrintsJsonOnRequest)
{
    Companion engine({CORVANE_ELOG_ENGINE, "--json"}, {});
    Companion writer({CORVANE_ELOG_WRITER}, {});
    writer.writeLine("write 1 1");
    EXPECT_THAT(engine.readLine(),
                MatchesRegex(R"(\{"time":")" + std::string(timeForm) + R"(","sequence":1,"pid":)" +
                             std::to_string(writer.pid()) + R"(,"program":"elogWriter","eventId":0,"params":\[0\],)" +
                             R"("text":"entry 0 of thread 0"\})"));
    kill(engine.pid(), SIGTERM);
    EXPECT_EQ(engine.finish(), 0);
}

TEST_F(ElogEngineProcess, PrintsAllEntriesOfFiftyProcessesEachInItsOrder)
{
    Companion engine(engineWith(">'" + (m_folder.path() / "out").string() + "'"), {});
    waitForEngine();
    std::vector<std::unique_ptr<Companion>> writers(50);
    for (auto& writer : writers) {
        writer = std::make_unique<Companion>(std::vector<std::string>{CORVANE_ELOG_WRITER}, std::vector<std::string>());
    }
    for (const auto& writer : writers) {
        writer->writeLine("write 1 1000");
    }
    std::map<std::string, unsigned int> next; // number, by writer
    for (const auto& writer : writers) {
        EXPECT_EQ(writer->readLine(), "written");
        EXPECT_EQ(writer->finish(), 0);
        next["elogWriter[" + std::to_string(writer->pid()) + "]"] = 0;
    }
    kill(engine.pid(), SIGTERM);
    EXPECT_EQ(engine.finish(), 0);
    std::istringstream lines(contentOf("out"));
    for (std::string line; std::getline(lines, line);) {
        std::array<std::string, 6> words; // time, sequence, writer, "event", id, parameters
        std::istringstream(line) >> words[0] >> words[1] >> words[2] >> words[3] >> words[4] >> words[5];
        EXPECT_EQ(words[5], "[" + std::to_string(next[words[2]]++) + "]") << line;
    }
    EXPECT_THAT(next, SizeIs(50));
    EXPECT_THAT(next, testing::Each(testing::Pair(testing::_, 1000U)));
}

TEST_F(ElogEngineProcess, PrintsWhatHadArrivedBeforeASignalEndsIt)
{
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        Companion engine({CORVANE_ELOG_ENGINE}, {});
        {
            Companion writer({CORVANE_ELOG_WRITER}, {});
            writer.writeLine("write 1 1");
            engine.readLine(); // so the writer is connected
            kill(engine.pid(), SIGSTOP);
            writer.writeLine("write 1 5"); // as few as fit into the mailbox of an engine that is stopped
            EXPECT_EQ(writer.finish(), 0);
        }
        kill(engine.pid(), signal);
        kill(engine.pid(), SIGCONT);
        EXPECT_THAT(remainingLines(engine), SizeIs(5)) << signal;
        EXPECT_EQ(engine.finish(), 0) << signal;
    }
}

TEST_F(ElogEngineProcess, EndsOnASignalWhileMoreEntriesKeepArriving)
{
    Companion engine({CORVANE_ELOG_ENGINE}, {});
    Companion writer({CORVANE_ELOG_WRITER}, {});
    writer.writeLine("write 2 50000");
    EXPECT_THAT(engine.readLine(), HasSubstr(" #1 "));
    kill(engine.pid(), SIGTERM);
    EXPECT_LT(remainingLines(engine).size(), 99'999U);
    EXPECT_EQ(engine.finish(), 0);
    EXPECT_EQ(writer.finish(), 0);
}

TEST_F(ElogEngineProcess, OutlivesAHangupThatIsIgnoredFromTheStart)
{
    Companion engine(engineWith("", "trap '' HUP;"), {});
    writeEntries("write 1 1");
    engine.readLine();
    kill(engine.pid(), SIGHUP);
    writeEntries("write 1 1");
    EXPECT_THAT(engine.readLine(), HasSubstr(" #2 "));
    kill(engine.pid(), SIGTERM);
    EXPECT_EQ(engine.finish(), 0);
}

TEST_F(ElogEngineProcess, DropsMessagesThatAreNotEntries)
{
    const std::string errors = m_folder.path() / "errors";
    Companion engine(engineWith("2> '" + errors + "'"), {});
    std::vector<std::vector<unsigned char>> messages;
    for (const std::uint32_t number : {1U, 0x17070D0U, 0x17070D1U}) {
        for (const std::size_t size : {std::size_t{4}, std::size_t{20}, std::size_t{1} << 20U}) {
            messages.emplace_back(size, 0xAA);
            std::memcpy(messages.back().data(), &number, sizeof number);
        }
    }
    messages.push_back(messageOf(7, "an entry", {}));
    sendMessages(messages);
    EXPECT_THAT(engine.readLine(), HasSubstr(" #1 "));
    kill(engine.pid(), SIGTERM);
    EXPECT_EQ(engine.finish(), 0);
    const std::string report = "elogEngine: dropped a message of [0-9]+ bytes from elog_engine_tes.*\\[" +
                               std::to_string(getpid()) + "\\]: it [^\n]+\n";
    EXPECT_THAT(contentOf("errors"), MatchesRegex("elogEngine: ready\n(" + report + "){9}"));
}

TEST_F(ElogEngineProcess, DropsAnEntryForWhichThereIsNoMemoryAndGoesOn)
{
#ifdef CORVANE_TEST_SANITIZED
    GTEST_SKIP() << "a sanitizer needs more memory than the limit leaves";
#endif
    if (isEmulated()) {
        GTEST_SKIP() << "the limit would apply to the emulator";
    }
    const std::string errors = m_folder.path() / "errors";
    Companion engine(engineWith("2> '" + errors + "'"), {});
    waitForEngine();
    const rlimit limit = {600U << 20U, 600U << 20U};
    EXPECT_EQ(::prlimit(engine.pid(), RLIMIT_AS, &limit, nullptr), 0);
    const std::size_t largestText = (64U << 20U) - messageOf(0, "", {}).size();
    sendMessages(
        {messageOf(7, "before", {}), messageOf(7, std::string(largestText, '\x80'), {}), messageOf(7, "after", {})});
    EXPECT_THAT(engine.readLine(), EndsWith("event 7 [] \"before\""));
    EXPECT_THAT(engine.readLine(), MatchesRegex(".* #2 .*event 7 \\[\\] \"after\""));
    kill(engine.pid(), SIGTERM);
    EXPECT_EQ(engine.finish(), 0);
    EXPECT_THAT(contentOf("errors"), HasSubstr("dropped a message of 67108864 bytes from "));
    EXPECT_THAT(contentOf("errors"), EndsWith("]: no memory\n"));
}

TEST_F(ElogEngineProcess, EndsOnASignalThoughItsOutputIsBlocked)
{
    for (const std::string redirections : {"", "2>&1"}) { // with the second, the last message finds no place either
        Companion engine(engineWith(redirections), {});
        writeEntries("big 1"); // a line that is longer than a pipe holds
        kill(engine.pid(), SIGTERM);
        EXPECT_EQ(engine.finish(), 1) << redirections;
    }
}

TEST_F(ElogEngineProcess, EndsWhenALineCanNotBeWritten)
{
    for (const std::string redirections : {">/dev/full", ">&-", "<&- >&-", "<&- >&- 2>&-"}) {
        Companion engine(engineWith(redirections), {});
        writeEntries("write 1 1");
        EXPECT_EQ(engine.finish(), 1) << redirections;
    }
}

TEST_F(ElogEngineProcess, EndsWhenItsOutputFileReachesTheLargestSize)
{
    const std::string log = m_folder.path() / "log";
    Companion engine(engineWith(">> '" + log + "'", "ulimit -f 256;"), {}); // 128 or 256 KiB: shells differ
    writeEntries("write 1 5000");
    EXPECT_EQ(engine.finish(), 1);
}

TEST_F(ElogEngineProcess, RefusesToRunBesideAnotherEngine)
{
    Companion first({CORVANE_ELOG_ENGINE}, {});
    waitForEngine();
    const ProgramResult second = runProgram({CORVANE_ELOG_ENGINE});
    EXPECT_EQ(second.status, 1);
    EXPECT_EQ(second.err, "elogEngine: another engine is running: process " + std::to_string(first.pid()) + "\n");
    writeEntries("write 1 1");
    EXPECT_THAT(first.readLine(), HasSubstr(" #1 "));
    kill(first.pid(), SIGKILL);
    EXPECT_EQ(first.finish(), -SIGKILL);
    Companion third({CORVANE_ELOG_ENGINE}, {});
    writeEntries("write 1 1");
    EXPECT_THAT(third.readLine(), HasSubstr(" #1 "));
    kill(third.pid(), SIGTERM);
    EXPECT_EQ(third.finish(), 0);
}

TEST_F(ElogEngineProcess, RunsBesideAnEngineThatUsesAnotherFolder)
{
    Companion first({CORVANE_ELOG_ENGINE}, {});
    waitForEngine();
    const RuntimeFolder other;
    Companion second({CORVANE_ELOG_ENGINE}, {});
    writeEntries("write 1 1");
    EXPECT_THAT(second.readLine(), HasSubstr(" #1 "));
    for (Companion* engine : {&first, &second}) {
        kill(engine->pid(), SIGTERM);
        EXPECT_EQ(engine->finish(), 0);
    }
}

TEST_F(ElogEngineProcess, SaysWhyItCanNotStart)
{
    const std::filesystem::path folder = m_folder.path() / ("zel-" + std::to_string(geteuid()));
    std::filesystem::create_directory(folder);
    std::filesystem::permissions(folder, std::filesystem::perms{0755});
    const ProgramResult noMailbox = runProgram({CORVANE_ELOG_ENGINE});
    EXPECT_EQ(noMailbox.status, 1);
    EXPECT_THAT(noMailbox.err, StartsWith("zel: "));
    EXPECT_THAT(noMailbox.err, EndsWith("elogEngine: can't create the mailbox ElogEngine\n"));
    const std::string absent = m_folder.path() / "absent";
    const ProgramResult noLock = runProgram({CORVANE_ELOG_ENGINE}, {"XDG_RUNTIME_DIR=" + absent});
    EXPECT_EQ(noLock.status, 1);
    EXPECT_EQ(noLock.err, "elogEngine: can't lock " + absent + "/" + folder.filename().string() +
                              "/elogEngine.lock: No such file or directory\n");
}

TEST_F(ElogEngineProcess, ExplainsItself)
{
    const ProgramResult help = runProgram({CORVANE_ELOG_ENGINE, "--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_THAT(help.out, StartsWith("Usage: elogEngine [--json]\n"));
    EXPECT_THAT(help.out, HasSubstr("standard output is blocked during\nshutdown"));
    EXPECT_THAT(help.err, IsEmpty());
    for (const std::string wrong : {"--wrong", "--append", "word", "--json=1"}) {
        const ProgramResult result = runProgram({CORVANE_ELOG_ENGINE, wrong});
        EXPECT_EQ(result.status, 2) << wrong;
        EXPECT_THAT(result.err, EndsWith("Try: elogEngine --help\n"));
    }
}

} // namespace
