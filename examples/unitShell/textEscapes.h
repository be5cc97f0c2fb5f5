/// Bytes that can't be typed: "\n", "\t", "\\" and "\x41" in a word stand for them.
#ifndef UNITSHELL_TEXTESCAPES_H
#define UNITSHELL_TEXTESCAPES_H

#include <string>

namespace UnitShell {

/// Returns the bytes that the word stands for. What is no escape stands for itself.
std::string unescape(const std::string& word);

} // namespace UnitShell

#endif
