/// Turns the escapes in a word into bytes.
#include "textEscapes.h"

#include <charconv>
#include <cstddef>

namespace UnitShell {

namespace {

/// Appends the byte of the escape at `pos`, which is behind the backslash. Returns its length, or 0 if it is none.
std::size_t appendEscape(const std::string& word, std::size_t pos, std::string& bytes)
{
    switch (word[pos]) { // NUL at the end of the word
    case 'n':
        bytes += '\n';
        return 1;
    case 't':
        bytes += '\t';
        return 1;
    case '\\':
        bytes += '\\';
        return 1;
    case 'x': {
        constexpr std::size_t digits = 2;
        unsigned char byte = 0;
        const char* const first = word.c_str() + pos + 1;
        if (word.size() > pos + digits && std::from_chars(first, first + digits, byte, 16).ptr == first + digits) {
            bytes += static_cast<char>(byte);
            return 1 + digits;
        }
        return 0;
    }
    default:
        return 0;
    }
}

} // namespace

std::string unescape(const std::string& word)
{
    std::string bytes;
    for (std::size_t pos = 0; pos < word.size(); ++pos) {
        const std::size_t length = word[pos] == '\\' ? appendEscape(word, pos + 1, bytes) : 0;
        if (length == 0) {
            bytes += word[pos];
        }
        pos += length;
    }
    return bytes;
}

} // namespace UnitShell
