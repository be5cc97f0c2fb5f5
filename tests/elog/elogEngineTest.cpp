/// The event-log process: what it accepts, what it prints, what it keeps, and how it ends.
#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <future>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <zel.h>

#include "examples/elogEngine/entry.h"
#include "tests/elog/numberedEntries.h"
#include "tests/elog/testEngine.h"
#include "tests/support/childProcess.h"
#include "tests/support/runtimeFolder.h"

namespace {

using namespace Corvane::Testing;
using ElogEngine::Arrival;
using ElogEngine::Entry;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;

/// A whole message as a client sends it: with the three bytes behind the text.
std::vector<unsigned char> messageOf(unsigned int eventId, const std::string& text,
                                     const std::vector<unsigned int>& params)
{
    std::vector<unsigned char> message = writtenBytes(eventId, text, params);
    message.insert(message.end(), 3, 0xEE);
    return message;
}

std::string flawOf(const std::vector<unsigned char>& message)
{
    Entry entry;
    return readEntry(message.data(), message.size(), entry);
}

void setWord(std::vector<unsigned char>& message, std::size_t position, std::uint32_t word)
{
    std::memcpy(message.data() + position * sizeof word, &word, sizeof word);
}

TEST(ElogEngineEntry, IsReadFromAMessage)
{
    for (const PlainEntry& expected : edgeEntries()) {
        const std::vector<unsigned char> message = messageOf(expected.eventId, expected.text, expected.params);
        Entry entry;
        ASSERT_EQ(readEntry(message.data(), message.size(), entry), "");
        EXPECT_EQ(entry.eventId, expected.eventId);
        EXPECT_TRUE(entry.text == expected.text);
        EXPECT_EQ(entry.params, expected.params);
    }
}

TEST(ElogEngineEntry, IsNotReadFromAMessageThatAnnouncesOtherLengths)
{
    const std::vector<unsigned char> whole = messageOf(1, "abc", {2, 3});
    for (std::size_t size = 0; size < whole.size(); ++size) {
        EXPECT_NE(flawOf({whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)}), "") << size;
    }
    auto longer = whole;
    longer.push_back(0);
    EXPECT_EQ(flawOf(longer), "it announces 2 parameters and a text of 3 bytes");

    for (const std::uint32_t count : {0U, 1U, 3U, 0x40000002U, 0xFFFFFFFFU}) {
        auto other = whole;
        setWord(other, 2, count);
        EXPECT_THAT(flawOf(other), StartsWith("it announces " + std::to_string(count))) << count;
        other = whole;
        setWord(other, 3, count == 3 ? 4 : count);
        EXPECT_THAT(flawOf(other), StartsWith("it announces 2 parameters")) << count;
    }
}

TEST(ElogEngineEntry, IsNotReadFromAMessageOfAnotherKind)
{
    auto message = messageOf(1, "abc", {});
    setWord(message, 0, 0x17070D0);
    EXPECT_EQ(flawOf(message), "it has another message number");
    EXPECT_EQ(flawOf({}), "it has another message number");
    message = messageOf(1, "abc", {});
    message[19] = 'd';
    EXPECT_EQ(flawOf(message), "its text doesn't end in NUL");
    EXPECT_EQ(flawOf({message.begin(), message.begin() + 19}), "it is shorter than an entry");
}

TEST(ElogEngineEntry, IsWrittenAsALineOfText)
{
    const Arrival arrival = {std::chrono::system_clock::time_point(std::chrono::microseconds(1700000000000042)), 77, 5};
    EXPECT_EQ(asText(arrival, {1007, {11, 4294967295}, "carrier \"3\" down"}),
              "2023-11-14T22:13:20.000042Z #5 sender 77 event 1007 [11,4294967295] \"carrier \\\"3\\\" down\"");
    EXPECT_EQ(asText(arrival, {0, {}, ""}), "2023-11-14T22:13:20.000042Z #5 sender 77 event 0 [] \"\"");
}

TEST(ElogEngineEntry, IsWrittenAsALineOfJson)
{
    using namespace std::string_literals;
    const Arrival arrival = {std::chrono::system_clock::time_point(std::chrono::microseconds(1700000000999999)), 77, 5};
    EXPECT_EQ(asJson(arrival, {1007, {11}, "a\"\\\n\t\0\x7F"s}),
              R"({"time":"2023-11-14T22:13:20.999999Z","sequence":5,"sender":77,"eventId":1007,"params":[11],)"
              R"("text":"a\"\\\n\u0009\u0000\u007f"})");
}

TEST(ElogEngineEntry, KeepsUtf8AndReplacesWhatIsNone)
{
    const auto textOf = [](const std::string& text) {
        const std::string line = ElogEngine::asJson({}, {0, {}, text});
        const std::size_t start = line.find("\"text\":\"") + 8;
        return line.substr(start, line.size() - start - 2);
    };
    const std::string good = "\xC2\x80 \xC3\xA4 \xE2\x82\xAC \xED\x9F\xBF \xF0\x9F\x93\xA1 \xF4\x8F\xBF\xBF";
    EXPECT_EQ(textOf(good), good);
    EXPECT_EQ(textOf("\x80"), "\\ufffd");
    EXPECT_EQ(textOf("\xC0\x80"), "\\ufffd\\ufffd");                         // too long a form
    EXPECT_EQ(textOf("\xE0\x9F\xBF"), "\\ufffd\\ufffd\\ufffd");              // likewise
    EXPECT_EQ(textOf("\xED\xA0\x80"), "\\ufffd\\ufffd\\ufffd");              // half a pair
    EXPECT_EQ(textOf("\xF4\x90\x80\x80."), "\\ufffd\\ufffd\\ufffd\\ufffd."); // past the last character
    EXPECT_EQ(textOf("\xE2\x82"), "\\ufffd\\ufffd");                         // cut off
    EXPECT_EQ(textOf("\xE2x"), "\\ufffdx");
    EXPECT_EQ(textOf("\xFF"), "\\ufffd");
}

class ElogEngineProcess : public testing::Test
{
protected:
    static void writeEntries(const std::string& command)
    {
        Companion writer({CORVANE_ELOG_WRITER}, {});
        writer.writeLine(command);
        EXPECT_EQ(writer.readLine(), "written");
        EXPECT_EQ(writer.finish(), 0);
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

TEST_F(ElogEngineProcess, SurvivesMessagesThatAreNoEntries)
{
    Companion engine({CORVANE_ELOG_ENGINE}, {});
    std::async(std::launch::async, [] {
        __zel_create_mailbox("Stranger", 0, "", 0);
        zel_msg* message = __zel_alloc(4, 1, "", 0);
        __zel_locate_async("ElogEngine", &message, 0xFFF00000, "", 0);
        message = __zel_receive(nullptr, 60000, 0xFFF11111, "", 0);
        const std::uint32_t id = __zel_sender(message, "", 0);
        __zel_free(&message, "", 0);
        for (const std::uint32_t number : {1U, 0x17070D0U, 0x17070D1U}) { // the first is what tells the engine to end
            for (const std::size_t size : {std::size_t{4}, std::size_t{20}, std::size_t{1} << 20U}) {
                message = __zel_alloc(size, number, "", 0);
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
    EXPECT_EQ(runProgram({CORVANE_ELOG_ENGINE, "--append", m_folder.path() / "no" / "log"}).status, 1);
    if (std::filesystem::exists("/dev/full")) {
        Companion engine({CORVANE_ELOG_ENGINE, "--append", "/dev/full"}, {});
        writeEntries("write 1 1");
        EXPECT_EQ(engine.readLine(), "");
        EXPECT_EQ(engine.finish(), 1);
    }
}

TEST_F(ElogEngineProcess, ExplainsItself)
{
    const ProgramResult help = runProgram({CORVANE_ELOG_ENGINE, "--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_THAT(help.out, StartsWith("Usage: elogEngine [--json] [--append FILE]\n"));
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
