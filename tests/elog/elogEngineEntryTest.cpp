/// What the event-log process makes of a message: an entry or a flaw, and an entry's line.
#include <chrono>
#include <cstring>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "examples/elogEngine/entry.h"
#include "tests/elog/numberedEntries.h"
#include "tests/elog/testEngine.h"

namespace {

using namespace Corvane::Testing;
using ElogEngine::Arrival;
using ElogEngine::Entry;
using testing::StartsWith;

std::string asText(const Arrival& arrival, const Entry& entry)
{
    std::string lines;
    appendText(lines, arrival, entry);
    return lines;
}

std::string asJson(const Arrival& arrival, const Entry& entry)
{
    std::string lines;
    appendJson(lines, arrival, entry);
    return lines;
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

TEST(ElogEngineEntry, IsAppendedToTheLinesBeforeIt)
{
    std::string lines = "before\n";
    ElogEngine::appendText(lines, {}, {1, {}, "text"});
    EXPECT_EQ(lines, "before\n" + asText({}, {1, {}, "text"}));
    ElogEngine::appendJson(lines, {}, {1, {}, "json"});
    EXPECT_EQ(lines, "before\n" + asText({}, {1, {}, "text"}) + asJson({}, {1, {}, "json"}));
}

TEST(ElogEngineEntry, KeepsUtf8AndReplacesWhatIsNone)
{
    const auto textOf = [](const std::string& text) {
        const std::string line = asJson({}, {0, {}, text});
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

} // namespace
