// SPDX-License-Identifier: MIT
/// The layout of the message that carries an entry, and the two forms of an entry's line.
#include "entry.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <ctime>

namespace ElogEngine {

namespace {

constexpr std::uint32_t writeNo = 0x17070D1;
constexpr std::size_t wordSize = sizeof(std::uint32_t);
constexpr std::size_t headWords = 4; // message number, event id, number of parameters, length of the text
constexpr std::size_t nulWords = 1;  // a whole word for the text's NUL; its other three bytes are never set

std::uint32_t wordAt(const unsigned char* message, std::size_t position)
{
    std::uint32_t word = 0;
    std::memcpy(&word, message + position * wordSize, wordSize);
    return word;
}

struct Character
{
    std::size_t length = 0; // 0 if there is no character at that place
    char32_t code = 0;
};

/// Returns  the UTF-8 character at `position`.
Character characterAt(const std::string& text, std::size_t position)
{
    const auto byteAt = [&](std::size_t index) {
        return index < text.size() ? static_cast<unsigned char>(text[index]) : 0U;
    };
    const unsigned int first = byteAt(position);
    if (first < 0x80) {
        return {1, first};
    }
    const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    char32_t code = first & (0xFFU >> (length + 1));
    for (std::size_t next = 1; next < length; ++next) {
        const unsigned int byte = byteAt(position + next);
        if ((byte & 0xC0U) != 0x80) {
            return {};
        }
        code = code << 6U | (byte & 0x3FU);
    }
    const char32_t smallest = length == 4 ? 0x10000 : length == 3 ? 0x800 : 0x80;
    const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;
    if (first < 0xC0 || first > 0xF4 || code < smallest || code > 0x10FFFF || isSurrogate) {
        return {};
    }
    return {length, code};
}

/// Returns  whether a character could steer a terminal, end a line, or show the rest of it in another order.
bool isHarmful(char32_t code)
{
    return code < 0x20 || (code >= 0x7F && code <= 0x9F) || code == 0x2028 || code == 0x2029 ||
           (code >= 0x202A && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
}

/// Appends a text as it stands in a JSON string, which people can read as well.
void appendEscaped(std::string& lines, const std::string& text)
{
    for (std::size_t position = 0; position < text.size();) {
        const auto [length, code] = characterAt(text, position);
        if (length == 0) {
            lines += "\\ufffd";
        } else if (code == '\n') {
            lines += "\\n";
        } else if (isHarmful(code)) {
            std::array<char, 12> escape = {};
            static_cast<void>(std::snprintf(escape.data(), escape.size(), "\\u%04x", static_cast<unsigned int>(code)));
            lines += escape.data();
        } else {
            lines += code == '"' || code == '\\' ? "\\" : "";
            lines.append(text, position, length);
        }
        position += length == 0 ? 1 : length;
    }
}

void appendQuoted(std::string& lines, const std::string& text)
{
    lines += '"';
    appendEscaped(lines, text);
    lines += '"';
}

std::string utc(std::chrono::system_clock::time_point time)
{
    const auto sinceEpoch = std::chrono::duration_cast<std::chrono::microseconds>(time.time_since_epoch()).count();
    const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
    std::tm parts = {};
    gmtime_r(&seconds, &parts);
    std::array<char, 48> text = {};
    const std::size_t length = std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S", &parts);
    static_cast<void>(
        std::snprintf(text.data() + length, text.size() - length, ".%06dZ", static_cast<int>(sinceEpoch % 1000000)));
    return text.data();
}

void appendList(std::string& lines, const std::vector<std::uint32_t>& params)
{
    lines += '[';
    for (std::size_t index = 0; index < params.size(); ++index) {
        lines += index > 0 ? "," : "";
        lines += std::to_string(params[index]);
    }
    lines += ']';
}

} // namespace

std::string readEntry(const unsigned char* message, std::size_t size, Entry& entry)
{
    if (size < wordSize || wordAt(message, 0) != writeNo) {
        return "it has another message number";
    }
    if (size < (headWords + nulWords) * wordSize) {
        return "it is shorter than an entry";
    }
    const std::uint32_t numParams = wordAt(message, 2);
    const std::uint32_t textLength = wordAt(message, 3);
    const std::uint64_t paramsSize = std::uint64_t{numParams} * wordSize;
    const std::uint64_t announced = (headWords + nulWords) * wordSize + paramsSize + textLength;
    if (announced != size) {
        return "it announces " + std::to_string(numParams) + " parameters and a text of " + std::to_string(textLength) +
               " bytes";
    }
    const unsigned char* const params = message + headWords * wordSize;
    const unsigned char* const text = params + paramsSize;
    if (text[textLength] != 0) {
        return "its text doesn't end in NUL";
    }
    entry.eventId = wordAt(message, 1);
    entry.params.resize(numParams);
    if (numParams > 0) {
        std::memcpy(entry.params.data(), params, paramsSize);
    }
    entry.text.assign(text, text + textLength);
    return "";
}

std::string textOf(const Writer& writer)
{
    std::string text;
    appendEscaped(text, writer.program);
    return text + "[" + std::to_string(writer.process) + "]";
}

void appendLine(std::string& lines, const Arrival& arrival, const Entry& entry, bool asJson)
{
    if (asJson) {
        lines += R"({"time":")" + utc(arrival.time) + R"(","sequence":)" + std::to_string(arrival.sequence) +
                 R"(,"pid":)" + std::to_string(arrival.writer.process) + R"(,"program":)";
        appendQuoted(lines, arrival.writer.program);
        lines += R"(,"eventId":)" + std::to_string(entry.eventId) + R"(,"params":)";
        appendList(lines, entry.params);
        lines += R"(,"text":)";
        appendQuoted(lines, entry.text);
        lines += "}\n";
    } else {
        lines += utc(arrival.time) + " #" + std::to_string(arrival.sequence) + " " + textOf(arrival.writer) +
                 " event " + std::to_string(entry.eventId) + " ";
        appendList(lines, entry.params);
        lines += ' ';
        appendQuoted(lines, entry.text);
        lines += '\n';
    }
}

} // namespace ElogEngine
