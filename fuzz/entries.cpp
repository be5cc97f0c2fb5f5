/// Messages into the event-log process's parser, and their entries onto lines.
///
/// The first byte of an input chooses whether the rest is a message as it is, or parameters and text of an entry whose
/// message then gets one wrong word or is cut.
#include <chrono>
#include <cstring>
#include <numeric>
#include <optional>
#include <string>
#include <vector>

#include "examples/elogEngine/entry.h"
#include "fuzz/fuzzing.h"

namespace {

using namespace Corvane::Fuzz;
using namespace ElogEngine;

std::uint32_t wordAt(const std::string& message, std::size_t index)
{
    std::uint32_t word = 0;
    for (std::size_t byte = 4; byte > 0; --byte) {
        word = word * 256 + static_cast<unsigned char>(message[index * 4 + byte - 1]);
    }
    return word;
}

std::string bytesOf(std::uint32_t word)
{
    std::string bytes;
    for (int count = 0; count < 4; ++count, word /= 256) {
        bytes += static_cast<char>(word % 256);
    }
    return bytes;
}

/// Returns  what is wrong with a message, or reads it.
std::string modelRead(const std::string& message, Entry& entry)
{
    if (message.size() < 4 || wordAt(message, 0) != 0x17070D1) {
        return "it has another message number";
    }
    if (message.size() < 20) {
        return "it is shorter than an entry";
    }
    const unsigned long params = wordAt(message, 2);
    const unsigned long length = wordAt(message, 3);
    if (message.size() != 20 + params * 4 + length) {
        return "it announces " + std::to_string(params) + " parameters and a text of " + std::to_string(length) +
               " bytes";
    }
    entry = {wordAt(message, 1), {}, message.substr(16 + params * 4, length)};
    for (std::size_t index = 0; index < params; ++index) {
        entry.params.push_back(wordAt(message, 4 + index));
    }
    return message[16 + params * 4 + length] == '\0' ? "" : "its text doesn't end in NUL";
}

std::string utf8(std::uint32_t code)
{
    const auto tail = [&](unsigned int shift) { return static_cast<char>(0x80 + code / (1U << shift) % 64); };
    if (code < 0x80) {
        return {static_cast<char>(code)};
    }
    if (code < 0x800) {
        return {static_cast<char>(0xC0 + code / 64), tail(0)};
    }
    if (code < 0x10000) {
        return {static_cast<char>(0xE0 + code / 4096), tail(6), tail(0)};
    }
    return {static_cast<char>(0xF0 + code / 262144), tail(12), tail(6), tail(0)};
}

/// Returns  the character with which `text` begins; none if these bytes are no UTF-8.
std::optional<std::uint32_t> firstCharacter(const std::string& text)
{
    const auto byteAt = [&](std::size_t index) {
        return index < text.size() ? static_cast<unsigned char>(text[index]) : 0U;
    };
    const unsigned int first = byteAt(0);
    const std::size_t length = first < 0x80 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    std::uint32_t code = length == 1 ? first : length == 2 ? first % 32 : length == 3 ? first % 16 : first % 8;
    for (std::size_t index = 1; index < length; ++index) {
        code = code * 64 + byteAt(index) % 64;
    }
    const bool isSurrogate = code >= 0xD800 && code < 0xE000;
    if (isSurrogate || code > 0x10FFFF || utf8(code) != text.substr(0, length)) {
        return std::nullopt;
    }
    return code;
}

std::string modelEscaped(const std::string& text)
{
    static const std::vector<std::pair<std::uint32_t, std::uint32_t>> harmful = {
        {0, 0x1F}, {0x7F, 0x9F}, {0x2028, 0x202E}, {0x2066, 0x2069}};
    std::string escaped;
    for (std::size_t at = 0; at < text.size();) {
        const auto code = firstCharacter(text.substr(at, 4));
        const std::string character = code ? utf8(*code) : "?";
        const bool isHarmful = code && std::any_of(harmful.begin(), harmful.end(), [&](const auto& range) {
                                   return *code >= range.first && *code <= range.second;
                               });
        char number[8] = {};
        static_cast<void>(std::snprintf(number, sizeof number, "\\u%04x", code.value_or(0xFFFD) % 0x10000));
        escaped += character == "\n"                        ? "\\n"
                   : isHarmful || !code                     ? number
                   : character == "\"" || character == "\\" ? "\\" + character
                                                            : character;
        at += character.size();
    }
    return escaped;
}

/// Returns  the date of a day that is counted from 1970-01-01 on.
std::string dateOf(unsigned long day)
{
    unsigned int year = 1970;
    const auto isLeap = [&] { return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0; };
    for (; day >= (isLeap() ? 366U : 365U); ++year) {
        day -= isLeap() ? 366U : 365U;
    }
    const unsigned int lengths[] = {31, isLeap() ? 29U : 28U, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    unsigned int month = 0;
    for (; day >= lengths[month]; ++month) {
        day -= lengths[month];
    }
    char text[32] = {};
    static_cast<void>(
        std::snprintf(text, sizeof text, "%u-%02u-%02u", year, month + 1, static_cast<unsigned>(day) + 1));
    return text;
}

std::string timeOf(unsigned long microseconds)
{
    const unsigned long second = microseconds / 1000000 % 86400;
    char text[32] = {};
    static_cast<void>(std::snprintf(text, sizeof text, "T%02lu:%02lu:%02lu.%06luZ", second / 3600, second / 60 % 60,
                                    second % 60, microseconds % 1000000));
    return dateOf(microseconds / 1000000 / 86400) + text;
}

std::string modelLine(unsigned long microseconds, const Arrival& arrival, const Entry& entry, bool asJson)
{
    std::string params;
    for (const std::uint32_t param : entry.params) {
        params += (params.empty() ? "" : ",") + std::to_string(param);
    }
    const std::string sequence = std::to_string(arrival.sequence);
    const std::string process = std::to_string(arrival.writer.process);
    const std::string program = modelEscaped(arrival.writer.program);
    const std::string event = std::to_string(entry.eventId);
    const std::string text = modelEscaped(entry.text);
    return asJson ? "{\"time\":\"" + timeOf(microseconds) + "\",\"sequence\":" + sequence + ",\"pid\":" + process +
                        ",\"program\":\"" + program + "\",\"eventId\":" + event + ",\"params\":[" + params +
                        "],\"text\":\"" + text + "\"}\n"
                  : timeOf(microseconds) + " #" + sequence + " " + program + "[" + process + "] event " + event + " [" +
                        params + "] \"" + text + "\"\n";
}

std::string messageFrom(Input& input)
{
    if (input.below(2) == 0) {
        return input.rest();
    }
    const unsigned int numParams = input.below(4);
    const unsigned int wrongWord = input.below(8);
    const std::uint32_t difference = input.below(3) == 1 ? input.below(65536) : 0;
    const unsigned int cut = input.below(3) == 1 ? input.below(24) : 0;
    const std::string params = input.bytes(numParams * std::size_t{4});
    const std::string text = input.rest();
    std::vector<std::uint32_t> words = {0x17070D1, difference, static_cast<std::uint32_t>(params.size() / 4),
                                        static_cast<std::uint32_t>(text.size())};
    if (wrongWord < words.size()) {
        words[wrongWord] += difference;
    }
    std::string message;
    for (const std::uint32_t word : words) {
        message += bytesOf(word);
    }
    message += params.substr(0, params.size() / 4 * 4) + text;
    message += std::string(1, static_cast<char>(wrongWord == 7)) + "\xEE\xEE\xEE"; // the last three bytes mean nothing
    return message.substr(0, message.size() - std::min<std::size_t>(cut, message.size()));
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Input input(data, size);
    const unsigned long microseconds = input.below(1U << 30U) * 1000003UL + input.below(256);
    const std::chrono::microseconds sinceEpoch(microseconds);
    const auto process = static_cast<int>(input.below(65536));
    const std::string program = input.bytes(input.below(16));
    const Arrival arrival = {std::chrono::system_clock::time_point(sinceEpoch), input.below(256), {process, program}};
    const std::string message = messageFrom(input);
    Report report;
    report.add("program " + quoted(program) + ", message " + quoted(message));

    Entry entry;
    Entry expected;
    const std::string flaw = readEntry(reinterpret_cast<const unsigned char*>(message.data()), message.size(), entry);
    report.expectSame("flaw", flaw, modelRead(message, expected));
    report.expectSame("writer", textOf(arrival.writer), modelEscaped(program) + "[" + std::to_string(process) + "]");
    if (!flaw.empty()) {
        return 0;
    }
    for (const bool asJson : {false, true}) {
        std::string lines = "before\n";
        appendLine(lines, arrival, entry, asJson);
        report.expectSame("line", lines, "before\n" + modelLine(microseconds, arrival, expected, asJson));
    }
    return 0;
}
