// SPDX-License-Identifier: MIT
/// Splits a typed line into words, with the quoting of a shell, and turns the escapes in a word into bytes.
///
/// Blanks, tabs and carriage returns separate words. Text between single quotes is taken as it is. Between double
/// quotes a backslash makes a double quote or a backslash an ordinary character; outside of quotes it does so for any
/// character. Quoted and unquoted pieces without a blank between them make one word; '' is an empty word. A "#" at the
/// beginning of a word starts a comment.
#ifndef UNITSHELL_WORDS_H
#define UNITSHELL_WORDS_H

#include <stdexcept>
#include <string>
#include <vector>

namespace UnitShell {

/// Tells what is wrong with a line.
struct BadLine : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

/// Errors  BadLine
std::vector<std::string> splitLine(const std::string& line);

/// Returns  the bytes that a word stands for: \n, \t, \\ and \x41 stand for one byte each, all else for itself.
std::string unescape(const std::string& word);

} // namespace UnitShell

#endif
