// SPDX-License-Identifier: MIT
/// What the commands' handlers have in common: reading values out of words, and refusing a command.
///
/// Errors  a reader throws Refusal if a word is wrong. Handlers made by handler() then answer with its text.
#ifndef UNITSHELL_ARGUMENTS_H
#define UNITSHELL_ARGUMENTS_H

#include <charconv>
#include <cstddef>
#include <limits>
#include <ostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

namespace UnitShell {

using Words = std::vector<std::string>;

/// Results of handlers.
constexpr int done = 0;
constexpr int failed = 1;

/// Ends a command without any effect; the text tells the user why.
struct Refusal : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

/// Refuses a line of more than `most` words. The service itself ignores the words after a complete command.
void refuseMoreWords(std::size_t words, std::size_t most);

/// Runs what a handler does, and answers if it refuses.
///
/// Returns  the handler's result: that of `action`, if it has one.
template <typename Action>
int answer(std::ostream& out, const Action& action)
{
    try {
        if constexpr (!std::is_void_v<decltype(action())>) {
            return action();
        } else {
            action();
            return done;
        }
    } catch (const Refusal& refusal) {
        out << refusal.what() << "\n";
        return failed;
    }
}

/// Returns  a handler that calls `action` for a line of at most `most` words. `parts` are passed by reference: what the
///          action works on.
template <typename Action, typename... Parts>
auto handler(std::size_t most, Action action, Parts&... parts)
{
    return [most, action, &parts...](const Words& words, std::ostream& out) {
        return answer(out, [&] {
            refuseMoreWords(words.size(), most);
            return action(words, parts..., out);
        });
    };
}

/// Returns  whether the whole word is a number, which is then in `number`.
template <typename Number>
bool toNumber(const std::string& word, Number& number)
{
    if constexpr (std::is_floating_point_v<Number>) { // GCC 10 has no from_chars() for it
        std::istringstream text(word);
        text.imbue(std::locale::classic());
        return word.rfind('+', 0) != 0 && text >> std::noskipws >> number &&
               text.peek() == std::char_traits<char>::eof();
    } else {
        const char* const end = word.data() + word.size();
        const auto [stop, error] = std::from_chars(word.data(), end, number);
        return error == std::errc() && stop == end;
    }
}

/// Returns  the number from `low` to `high` that the word stands for. `what` names it in the answer to a wrong word.
template <typename Number = unsigned int>
Number readNumber(const std::string& word, const char* what, Number low = std::numeric_limits<Number>::lowest(),
                  Number high = std::numeric_limits<Number>::max())
{
    Number number = 0;
    if (toNumber(word, number) && number >= low && number <= high) {
        return number;
    }
    std::ostringstream text;
    text << what << " is a " << (std::is_integral_v<Number> ? "whole number" : "number") << " from " << low << " to "
         << high << ", not '" << word << "'";
    throw Refusal(text.str());
}

/// Returns  whether the line has `option` as its third word. Refuses another third word.
bool readOption(const Words& words, const char* option);

/// Returns  the one of the unit's parts (carriers, alarms) whose number the word is. `what` names it as above.
template <typename Parts>
auto& readPart(const std::string& word, const char* what, Parts& parts)
{
    for (auto& part : parts) {
        if (std::to_string(part.id) == word) {
            return part;
        }
    }
    throw Refusal(std::string("there is no ") + what + " '" + word + "'");
}

/// Returns  a number with one decimal.
std::string oneDecimal(double number);

} // namespace UnitShell

#endif
