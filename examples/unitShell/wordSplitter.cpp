/// Splits a typed line into words, with the quoting of a shell.
#include "wordSplitter.h"

namespace UnitShell {

namespace {

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r';
}

/// Returns whether `c` takes `next` as it is, where `quote` is the quote that is open, or NUL.
bool escapes(char c, char next, char quote)
{
    return c == '\\' && (quote == '\0' || (quote == '"' && (next == '"' || next == '\\')));
}

} // namespace

SplitLine splitLine(const std::string& line)
{
    if (line.find('\0') != std::string::npos) {
        return {{}, "the line has a NUL byte in it"}; // to the commands' handlers a word would end there
    }
    SplitLine split;
    bool inWord = false;
    char quote = '\0'; // the one that is open
    std::size_t quoteColumn = 0;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const char c = line[i];
        const char next = i + 1 < line.size() ? line[i + 1] : '\0';
        if (quote == '\0' && isBlank(c)) {
            inWord = false;
            continue;
        }
        if (!inWord && c == '#') {
            break;
        }
        if (!inWord) {
            split.words.emplace_back();
            inWord = true;
        }
        if (escapes(c, next, quote)) {
            if (next == '\0') {
                return {{}, "nothing follows the backslash at the end of the line"};
            }
            split.words.back() += next;
            ++i;
        } else if (quote == '\0' && (c == '\'' || c == '"')) {
            quote = c;
            quoteColumn = i + 1;
        } else if (quote != '\0' && c == quote) {
            quote = '\0';
        } else {
            split.words.back() += c;
        }
    }
    if (quote != '\0') {
        return {{},
                std::string("the quote ") + quote + " in column " + std::to_string(quoteColumn) + " is never closed"};
    }
    return split;
}

} // namespace UnitShell
