/// Entries whose text can be computed from their thread and number, so that a test notices a torn, lost, repeated or
/// misplaced one.
#ifndef CORVANE_TESTS_ELOG_NUMBEREDENTRIES_H
#define CORVANE_TESTS_ELOG_NUMBEREDENTRIES_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Corvane::Testing {

inline std::string textOfEntry(unsigned int thread, unsigned int number)
{
    return "entry " + std::to_string(number) + " of thread " + std::to_string(thread) + std::string(number % 50, '.');
}

/// 1 MiB, more than a socket holds. Its parts differ from each other and from those of other numbers.
inline std::string bigTextOfEntry(unsigned int number)
{
    std::string text(std::size_t{1} << 20U, '\0');
    std::uint32_t state = number * 2U + 1U;
    for (char& c : text) {
        state = state * 1664525U + 1013904223U;
        c = static_cast<char>(state >> 24U);
    }
    return text;
}

/// 1 MiB of one letter: made and compared at once, however slow the machine is.
inline std::string uniformTextOfEntry(unsigned int number)
{
    return std::string(std::size_t{1} << 20U, static_cast<char>('a' + number % 26U));
}

struct PlainEntry
{
    unsigned int eventId;
    std::string text;
    std::vector<unsigned int> params;
};

/// Entries at the limits: empty, with NULs, long, with many parameters.
inline std::vector<PlainEntry> edgeEntries()
{
    std::vector<unsigned int> many(10000);
    for (unsigned int index = 0; index < many.size(); ++index) {
        many[index] = index * 429496U;
    }
    return {{0, "", {}},
            {1007, "abc", {11, 22}},
            {4294967295, std::string("\0a\0\0b\0", 6), {4294967295}},
            {3, std::string(std::size_t{1} << 20U, '\xFF'), {}},
            {4, "many", many}};
}

} // namespace Corvane::Testing

#endif
