// SPDX-License-Identifier: MIT
/// Turns a typed line into words, and a word into bytes.
#include <console/words.h>

#include <charconv>
#include <cstddef>

namespace Corvane::Console {

namespace {

/// Returns  whether `c` makes `next` an ordinary character. `quote` is the open quote, or NUL.
bool escapes(char c, char next, char quote)
{
    return c == '\\' && (quote == '\0' || (quote == '"' && (next == '"' || next == '\\')));
}

} // namespace

std::vector<std::string> splitLine(const std::string& line)
{
    if (line.find('\0') != std::string::npos) {
        throw BadLine("the line has a NUL byte in it"); // in a C string it would end the word
    }
    std::vector<std::string> words;
    bool inWord = false;
    char quote = '\0'; // the open quote
    std::size_t quoteColumn = 0;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const char c = line[i];
        const char next = i + 1 < line.size() ? line[i + 1] : '\0';
        if (quote == '\0' && (c == ' ' || c == '\t' || c == '\r')) {
            inWord = false;
            continue;
        }
        if (!inWord && c == '#') {
            break;
        }
        if (!inWord) {
            words.emplace_back();
            inWord = true;
        }
        if (escapes(c, next, quote)) {
            if (next == '\0') {
                throw BadLine("nothing follows the backslash at the end of the line");
            }
            words.back() += next;
            ++i;
        } else if (quote == '\0' && (c == '\'' || c == '"')) {
            quote = c;
            quoteColumn = i + 1;
        } else if (quote != '\0' && c == quote) {
            quote = '\0';
        } else {
            words.back() += c;
        }
    }
    if (quote != '\0') {
        throw BadLine(std::string("the quote ") + quote + " in column " + std::to_string(quoteColumn) +
                      " is never closed");
    }
    return words;
}

std::string unescape(const std::string& word)
{
    std::string bytes;
    for (std::size_t pos = 0; pos < word.size(); ++pos) {
        const char next = word[pos] == '\\' ? word.c_str()[pos + 1] : '\0';
        const char* const digits = word.c_str() + pos + 2;
        unsigned char byte = 0;
        if (next == 'n' || next == 't' || next == '\\') {
            bytes += next == 'n' ? '\n' : next == 't' ? '\t' : '\\';
            pos += 1;
        } else if (next == 'x' && pos + 3 < word.size() &&
                   std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2) {
            bytes += static_cast<char>(byte);
            pos += 3;
        } else {
            bytes += word[pos];
        }
    }
    return bytes;
}

} // namespace Corvane::Console
