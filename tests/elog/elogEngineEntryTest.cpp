/// How the event-log process reads a message, and how it writes an entry as a line.
#include <chrono>
#include <cstring>
#include <string>
#include <utility>
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
    std::string line;
    appendLine(line, arrival, entry, false);
    return line;
}

std::string asJson(const Arrival& arrival, const Entry& entry)
{
    std::string line;
    appendLine(line, arrival, entry, true);
    return line;
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

Arrival arrivalOf(const std::string& program)
{
    return {std::chrono::system_clock::time_point(std::chrono::microseconds(1700000000000042)), 5, {4711, program}};
}

TEST(ElogEngineEntry, IsWrittenAsALineOfText)
{
    EXPECT_EQ(asText(arrivalOf("unitShell"), {1007, {11, 4294967295}, "carrier \"3\" down"}),
              "2023-11-14T22:13:20.000042Z #5 unitShell[4711] event 1007 [11,4294967295] \"carrier \\\"3\\\" down\"\n");
    EXPECT_EQ(asText(arrivalOf("\"a\n\xFF"), {0, {}, ""}),
              R"(2023-11-14T22:13:20.000042Z #5 \"a\n\ufffd[4711] event 0 [] "")"
              "\n");
}

TEST(ElogEngineEntry, IsWrittenAsALineOfJson)
{
    using namespace std::string_literals;
    EXPECT_EQ(asJson(arrivalOf("\"a\n\xFF"), {1007, {11}, "a\"\\\n\t\0\x7F"s}),
              R"({"time":"2023-11-14T22:13:20.000042Z","sequence":5,"pid":4711,"program":"\"a\n\ufffd",)"
              R"("eventId":1007,"params":[11],"text":"a\"\\\n\u0009\u0000\u007f"})"
              "\n");
}

TEST(ElogEngineEntry, IsAppendedToTheLinesBefore)
{
    std::string lines = "before\n";
    ElogEngine::appendLine(lines, {}, {1, {}, "text"}, false);
    ElogEngine::appendLine(lines, {}, {1, {}, "json"}, true);
    EXPECT_EQ(lines, "before\n" + asText({}, {1, {}, "text"}) + asJson({}, {1, {}, "json"}));
}

/// Returns  a text as it stands in a line, which is the same in both forms.
std::string written(const std::string& text)
{
    const auto quoted = [](const std::string& line, const std::string& start, std::size_t behind) {
        const std::size_t begin = line.find(start) + start.size();
        return line.substr(begin, line.size() - begin - behind);
    };
    const std::string result = quoted(asJson({}, {0, {}, text}), "\"text\":\"", 3);
    EXPECT_EQ(quoted(asText({}, {0, {}, text}), "[] \"", 2), result);
    return result;
}

TEST(ElogEngineEntry, KeepsCharactersInUtf8)
{
    for (const char* const text :
         {"\xC2\xA0", "\xC3\xA4", "\xE2\x82\xAC", "\xED\x9F\xBF", "\xF0\x9F\x93\xA1", "\xF4\x8F\xBF\xBF",
          "\xE2\x80\xA7", "\xE2\x80\xAF", "\xE2\x81\xA5", "\xE2\x81\xAA"}) { // beside those that are escaped
        EXPECT_EQ(written(text), text);
    }
}

TEST(ElogEngineEntry, ReplacesBytesThatAreNotUtf8)
{
    const std::vector<std::pair<std::string, std::string>> rows = {
        {"\x80", "\\ufffd"},
        {"\xC0\x80", "\\ufffd\\ufffd"},                         // longer than needed
        {"\xE0\x9F\xBF", "\\ufffd\\ufffd\\ufffd"},              // likewise
        {"\xF0\x8F\xBF\xBF", "\\ufffd\\ufffd\\ufffd\\ufffd"},   // likewise
        {"\xED\xA0\x80", "\\ufffd\\ufffd\\ufffd"},              // half a surrogate pair
        {"\xF4\x90\x80\x80.", "\\ufffd\\ufffd\\ufffd\\ufffd."}, // beyond the last character
        {"\xE2\x82", "\\ufffd\\ufffd"},                         // cut off
        {"\xE2x", "\\ufffdx"},
        {"\xF8\xFF", "\\ufffd\\ufffd"}};
    for (const auto& [text, expected] : rows) {
        EXPECT_EQ(written(text), expected);
    }
}

TEST(ElogEngineEntry, EscapesCharactersThatSteerATerminalOrReorderALine)
{
    const std::vector<std::pair<std::string, std::string>> rows = {
        {"\x1B[31m", "\\u001b[31m"},       {"\xC2\x80", "\\u0080"},     {"\xC2\x9B\x33m", "\\u009b3m"},
        {"\xC2\x9F", "\\u009f"},           {"\xE2\x80\xA8", "\\u2028"}, {"\xE2\x80\xA9", "\\u2029"},
        {"\xE2\x80\xAA", "\\u202a"},       {"\xE2\x80\xAE", "\\u202e"}, {"\xE2\x81\xA6", "\\u2066"},
        {"a\xE2\x81\xA9\x62", "a\\u2069b"}};
    for (const auto& [text, expected] : rows) {
        EXPECT_EQ(written(text), expected);
    }
}

} // namespace
