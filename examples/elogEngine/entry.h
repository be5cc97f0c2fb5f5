// SPDX-License-Identifier: MIT
/// An event-log entry: read from a message that isn't trusted, and written as a line.
#ifndef ELOGENGINE_ENTRY_H
#define ELOGENGINE_ENTRY_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace ElogEngine {

struct Entry
{
    std::uint32_t eventId = 0;
    std::vector<std::uint32_t> params;
    std::string text;
};

/// Who wrote an entry.
struct Writer
{
    int process = 0;
    std::string program;
};

/// When an entry arrived, as which one, and from whom.
struct Arrival
{
    std::chrono::system_clock::time_point time;
    std::uint64_t sequence = 0;
    Writer writer;
};

/// Reads the `size` bytes of a message into `entry`.
///
/// Returns  what is wrong with the message; empty if it is an entry.
std::string readEntry(const unsigned char* message, std::size_t size, Entry& entry);

/// Returns  the writer as people read it: program[process].
std::string textOf(const Writer& writer);

/// Appends a line: for people, or a JSON object. Both name time, sequence number, writer, event, parameters and text;
/// bytes that are not UTF-8 become U+FFFD.
///
/// Errors  std::bad_alloc; part of the line may be in `lines` then.
void appendLine(std::string& lines, const Arrival& arrival, const Entry& entry, bool asJson);

} // namespace ElogEngine

#endif
