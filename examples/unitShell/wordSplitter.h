/// Splits a typed line into words, with the quoting of a shell.
///
/// Blanks, tabs and carriage returns separate words. What stands between single quotes is taken as it is. Between
/// double quotes a backslash takes the special meaning from a double quote and from a backslash; outside of quotes it
/// does so for any character. Quoted and unquoted pieces without a blank between them make one word, and '' is an empty
/// one. A "#" where a word would begin starts a comment.
#ifndef UNITSHELL_WORDSPLITTER_H
#define UNITSHELL_WORDSPLITTER_H

#include <string>
#include <vector>

namespace UnitShell {

struct SplitLine
{
    std::vector<std::string> words;
    /// What is wrong with the line; empty for a good one. A line with an error has no words.
    std::string error;
};

SplitLine splitLine(const std::string& line);

} // namespace UnitShell

#endif
