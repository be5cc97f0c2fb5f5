// SPDX-License-Identifier: MIT
/// What handlers have in common, as far as it depends on no type.
#include "arguments.h"

#include <iomanip>

namespace UnitShell {

void refuseMoreWords(std::size_t words, std::size_t most)
{
    if (words > most) {
        throw Refusal("too many words: the command takes " + std::to_string(most));
    }
}

bool readOption(const Words& words, const char* option)
{
    if (words.size() > 2 && words[2] != option) {
        throw Refusal("there is no option '" + words[2] + "'");
    }
    return words.size() > 2;
}

std::string oneDecimal(double number)
{
    std::ostringstream text;
    text << std::fixed << std::setprecision(1) << number;
    return text.str();
}

} // namespace UnitShell
