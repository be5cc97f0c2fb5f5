// SPDX-License-Identifier: MIT
/// Splits a typed line into words, with the quoting of a shell. Turns the escapes in a word into bytes.
///
/// Blanks, tabs and carriage returns separate words. Text between single quotes is taken as it is. Outside of quotes, a
/// backslash makes the next character an ordinary one. Between double quotes, it does so only for a double quote and
/// for a backslash. Quoted and unquoted pieces without a blank between them are one word. '' is an empty word. A "#" at
/// the beginning of a word starts a comment.
///
///     commands.executeCmd(Corvane::Console::splitLine("note 'my file' text # for later"), out); // three words
///
/// These are in a static library: with CMake `find_package(Corvane CONFIG REQUIRED COMPONENTS console)` and
/// `Corvane::console`, else `-lcorvane_console`.
///
/// Threads  any.
/// Since    0.1.0
#ifndef CORVANE_CONSOLE_WORDS_H
#define CORVANE_CONSOLE_WORDS_H

#include <stdexcept>
#include <string>
#include <vector>

namespace Corvane::Console {

/// Says what is wrong with a line.
struct BadLine : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

/// Returns  the words of a line; none if it is blank or a comment.
/// Errors   BadLine; std::bad_alloc.
std::vector<std::string> splitLine(const std::string& line);

/// Returns  the bytes that a word stands for: \n, \t, \\ and \x41 stand for one byte each, all other text for itself.
/// Errors   std::bad_alloc.
std::string unescape(const std::string& word);

} // namespace Corvane::Console

#endif
