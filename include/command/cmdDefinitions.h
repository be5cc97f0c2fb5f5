// SPDX-License-Identifier: MIT
/// The records of which an application makes its command tables, one kind for each form of handler.
///
/// A record pairs a synopsis with the function that runs when a typed line follows the synopsis to its end, and with a
/// text for the help. Tables are usually constant:
///
///     const std::vector<Corvane::CmdTableHelper::CmdDefinition> table = {
///         {"show [-l] <file> { on | off }", showFile, "Shows a file."},
///     };
///
/// A synopsis is made of words with blanks between them. "[ x ]" may be left out, of "{ x | y }" exactly one is taken,
/// and groups nest. A word with "<" and ">" in it, such as "<file>", and the word "..." are placeholders: each stands
/// for one word that the user types. Every other word is a keyword, typed as it is written. Trace texts call this way
/// of writing VELK syntax.
///
/// No synopsis is refused; of a faulty one, what can be read is registered. A "|", "]" or "}" outside every group ends
/// the synopsis: of "a | b" only "a" is registered, and a choice of whole commands is written "{ a | b }" or as two
/// records. Everything between "<" and its ">" belongs to the word, blanks and brackets included, so a "<" that is
/// never closed takes the rest of the synopsis into its word. A ">" with no "<" before it in its word cancels the next
/// "<" of that word: "a><b c>" is the two words "a><b" and "c>". Registration reads a synopsis up to a NUL; help and
/// the check of brackets read all of it.
///
/// Owns     the application; the library copies what it keeps, and keeps no pointer into a record.
/// Threads  plain data: constant tables may be used by several threads.
/// Since    0.1.0
#ifndef CORVANE_COMMAND_CMDDEFINITIONS_H
#define CORVANE_COMMAND_CMDDEFINITIONS_H

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

namespace Corvane::CmdTableHelper {

/// A command whose handler gets the words of the line as C strings.
struct CommandDefinitions
{
    /// What the user may type.
    std::string synopsis;
    /// Runs the command. Gets the number of words and the words, the command's name first; both only for the call.
    std::function<int(int, const char* const*)> handler;
    /// Help text, in which a line feed starts a new line; null or empty for none.
    const char* description;
    /// Not used; leave it out.
    const void* reserved = nullptr;
};

/// A command whose handler also gets the stream to write its answer to.
struct CmdDefinition
{
    /// What the user may type.
    std::string synopsis;
    /// Runs the command. Gets the number of words, the words, the command's name first, and the stream that the line
    /// was executed with; all only for the call.
    std::function<int(int, const char* const*, std::ostream&)> handler;
    /// Help text, in which a line feed starts a new line; null or empty for none.
    const char* description;
    /// Not used; leave it out.
    const void* reserved = nullptr;
};

/// A command whose handler gets the words as strings, and the stream to write its answer to.
struct CmdDefinitionCpp
{
    /// What the user may type.
    std::string synopsis;
    /// Runs the command. Gets the words, the command's name first, and the stream that the line was executed with;
    /// both only for the call.
    std::function<int(const std::vector<std::string>&, std::ostream&)> handler;
    /// Help text, in which a line feed starts a new line; null or empty for none.
    const char* description;
    /// Not used; leave it out.
    const void* reserved = nullptr;
};

} // namespace Corvane::CmdTableHelper

#endif
