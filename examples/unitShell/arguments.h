/// Reads values out of the words of a command and writes them back: what the handlers have in common.
///
/// A reader that gets a wrong word says on `out` what is wrong with it, and returns nothing.
#ifndef UNITSHELL_ARGUMENTS_H
#define UNITSHELL_ARGUMENTS_H

#include <cstddef>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "unit.h"

namespace UnitShell {

/// Results of handlers.
constexpr int done = 0;
constexpr int failed = 1;

/// Returns whether the line goes on after `most` words, and says so: a handler is called for such a line as well.
bool goesOn(std::size_t words, std::size_t most, std::ostream& out);

/// Reads an option that may be the third and last word of a line; returns whether it is there.
std::optional<bool> readOption(const std::vector<std::string>& words, const char* option, std::ostream& out);

/// Reads a number from `low` to `high`. `what` names it in the answer to a wrong one.
std::optional<double> readNumber(const std::string& word, const char* what, double low, double high, std::ostream& out);

/// The same for a whole number.
std::optional<unsigned int> readWhole(const std::string& word, const char* what, unsigned int low, unsigned int high,
                                      std::ostream& out);

/// Returns the carrier that the word names, or null.
Carrier* readCarrier(const std::string& word, Unit& unit, std::ostream& out);

/// Returns the alarm that the word names, or null.
const Alarm* readAlarm(const std::string& word, const Unit& unit, std::ostream& out);

/// Writes a number with one decimal.
std::string oneDecimal(double number);

} // namespace UnitShell

#endif
