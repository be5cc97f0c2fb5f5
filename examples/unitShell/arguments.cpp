/// Reads values out of the words of a command and writes them back.
#include "arguments.h"

#include <charconv>
#include <iomanip>
#include <ostream>
#include <sstream>
#include <type_traits>

namespace UnitShell {

namespace {

template <typename Number>
std::optional<Number> read(const std::string& word, const char* what, Number low, Number high, std::ostream& out)
{
    Number number = 0;
    const char* const end = word.data() + word.size();
    // In the C locale's form, whatever the user's locale is.
    const auto [stop, error] = std::from_chars(word.data(), end, number);
    if (error == std::errc() && stop == end && number >= low && number <= high) { // which keeps out NaN as well
        return number;
    }
    out << what << " is a " << (std::is_integral_v<Number> ? "whole number" : "number") << " from " << low << " to "
        << high << ", not '" << word << "'\n";
    return std::nullopt;
}

template <typename Part>
Part* report(Part* part, const char* what, const std::string& word, std::ostream& out)
{
    if (part == nullptr) {
        out << "there is no " << what << " '" << word << "'\n";
    }
    return part;
}

} // namespace

bool goesOn(std::size_t words, std::size_t most, std::ostream& out)
{
    if (words > most) {
        out << "the command ends after " << most << " words\n";
    }
    return words > most;
}

std::optional<bool> readOption(const std::vector<std::string>& words, const char* option, std::ostream& out)
{
    if (words.size() > 2 && words[2] != option) {
        out << "there is no option '" << words[2] << "'\n";
        return std::nullopt;
    }
    return goesOn(words.size(), 3, out) ? std::nullopt : std::optional(words.size() > 2);
}

std::optional<double> readNumber(const std::string& word, const char* what, double low, double high, std::ostream& out)
{
    return read(word, what, low, high, out);
}

std::optional<unsigned int> readWhole(const std::string& word, const char* what, unsigned int low, unsigned int high,
                                      std::ostream& out)
{
    return read(word, what, low, high, out);
}

Carrier* readCarrier(const std::string& word, Unit& unit, std::ostream& out)
{
    return report(unit.findCarrier(word), "carrier", word, out);
}

const Alarm* readAlarm(const std::string& word, const Unit& unit, std::ostream& out)
{
    return report(unit.findAlarm(word), "alarm", word, out);
}

std::string oneDecimal(double number)
{
    std::ostringstream text;
    text << std::fixed << std::setprecision(1) << number;
    return text.str();
}

} // namespace UnitShell
