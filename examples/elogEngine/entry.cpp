/// Event-log entries, read and written.
#include "entry.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <ctime>

namespace ElogEngine {

namespace {

constexpr std::uint32_t writeNo = 0x17070D1;
constexpr std::size_t wordSize = sizeof(std::uint32_t);
constexpr std::size_t headWords = 4;   // message number, event id, number of parameters, length of the text
constexpr std::size_t unusedBytes = 3; // the sender allocates a word for the text's NUL

std::uint32_t wordAt(const unsigned char* message, std::size_t position)
{
    std::uint32_t word = 0;
    std::memcpy(&word, message + position * wordSize, wordSize);
    return word;
}

/// Returns  the length of the UTF-8 character at `position`; 0 if there is none.
std::size_t characterLength(const std::string& text, std::size_t position)
{
    const auto byteAt = [&](std::size_t index) {
        return index < text.size() ? static_cast<unsigned char>(text[index]) : 0U;
    };
    const unsigned int first = byteAt(position);
    if (first < 0x80) {
        return 1;
    }
    const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    const unsigned int second = byteAt(position + 1);
    const bool isOverlong = first < 0xC2 || (first == 0xE0 && second < 0xA0) || (first == 0xF0 && second < 0x90);
    const bool isNoCharacter = (first == 0xED && second > 0x9F) || first > 0xF4 || (first == 0xF4 && second > 0x8F);
    if (isOverlong || isNoCharacter) {
        return 0;
    }
    for (std::size_t next = 1; next < length; ++next) {
        if ((byteAt(position + next) & 0xC0U) != 0x80) {
            return 0;
        }
    }
    return length;
}

/// Appends a JSON string, which people can read as well.
void appendQuoted(std::string& lines, const std::string& text)
{
    lines += '"';
    for (std::size_t position = 0; position < text.size();) {
        const char c = text[position];
        const std::size_t length = characterLength(text, position);
        if (length == 0) {
            lines += "\\ufffd";
            ++position;
            continue;
        }
        if (c == '"' || c == '\\') {
            lines += '\\';
            lines += c;
        } else if (c == '\n') {
            lines += "\\n";
        } else if (length == 1 && (static_cast<unsigned char>(c) < 0x20 || c == 0x7F)) {
            std::array<char, 8> escape = {};
            static_cast<void>(std::snprintf(escape.data(), escape.size(), "\\u%04x", static_cast<unsigned int>(c)));
            lines += escape.data();
        } else {
            lines.append(text, position, length);
        }
        position += length;
    }
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
    if (size < headWords * wordSize + 1 + unusedBytes) {
        return "it is shorter than an entry";
    }
    const std::uint32_t numParams = wordAt(message, 2);
    const std::uint32_t textLength = wordAt(message, 3);
    const std::uint64_t paramsSize = std::uint64_t{numParams} * wordSize;
    const std::uint64_t announced = headWords * wordSize + paramsSize + textLength + 1 + unusedBytes;
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

void appendText(std::string& lines, const Arrival& arrival, const Entry& entry)
{
    lines += utc(arrival.time) + " #" + std::to_string(arrival.sequence) + " sender " + std::to_string(arrival.sender) +
             " event " + std::to_string(entry.eventId) + " ";
    appendList(lines, entry.params);
    lines += ' ';
    appendQuoted(lines, entry.text);
}

void appendJson(std::string& lines, const Arrival& arrival, const Entry& entry)
{
    lines += R"({"time":")" + utc(arrival.time) + R"(","sequence":)" + std::to_string(arrival.sequence) +
             R"(,"sender":)" + std::to_string(arrival.sender) + R"(,"eventId":)" + std::to_string(entry.eventId) +
             R"(,"params":)";
    appendList(lines, entry.params);
    lines += R"(,"text":)";
    appendQuoted(lines, entry.text);
    lines += '}';
}

} // namespace ElogEngine
