/// The command "pelm": measures the unit and sets its limits.
///
/// Usage lines of a command of this name have a format of their own, which also shows placeholders that may be left
/// out: "pelm measure" alone is answered with "Usage: pelm measure <id> [<samples>] ".
#include <algorithm>
#include <ostream>
#include <string>

#include "arguments.h"
#include "commands.h"
#include "unit.h"

namespace UnitShell {

namespace {

using Words = std::vector<std::string>;

constexpr unsigned int mostSamples = 10;

int report(const Words& words, Unit& unit, std::ostream& out)
{
    const auto verbose = readOption(words, "-v", out);
    if (!verbose) {
        return failed;
    }
    const auto& carriers = unit.carriers();
    const auto& alarms = unit.alarms();
    const auto on = std::count_if(carriers.begin(), carriers.end(), [](const Carrier& carrier) { return carrier.on; });
    const auto open = std::count_if(alarms.begin(), alarms.end(),
                                    [](const Alarm& alarm) { return alarm.state != AlarmState::cleared; });
    out << on << " of " << carriers.size() << " carriers on, " << oneDecimal(unit.temperature()) << " C, " << open
        << " of " << alarms.size() << " alarms open\n";
    if (*verbose) {
        for (const Carrier& carrier : carriers) {
            out << "  carrier " << carrier.id << ": " << (carrier.on ? oneDecimal(carrier.power) + " dBm" : "off")
                << "\n";
        }
    }
    return done;
}

int measure(const Words& words, Unit& unit, std::ostream& out)
{
    const Carrier* const carrier = readCarrier(words[2], unit, out);
    const auto samples =
        words.size() > 3 ? readWhole(words[3], "the number of samples", 1, mostSamples, out) : std::optional(1U);
    if (carrier == nullptr || !samples || goesOn(words.size(), 4, out)) {
        return failed;
    }
    if (!carrier->on) {
        out << "carrier " << carrier->id << " is off\n";
        return failed;
    }
    for (unsigned int sample = 0; sample < *samples; ++sample) {
        const double ripple = 0.1 * (sample % 3) - 0.1; // what a real power meter would show
        out << "sample " << sample + 1 << ": " << oneDecimal(carrier->power + ripple) << " dBm\n";
    }
    return done;
}

int setLimits(const Words& words, Unit& unit, std::ostream& out)
{
    // One word is the high limit, two are the low one and the high one.
    const std::string& lastWord = words[std::min<std::size_t>(words.size() - 1, 3)];
    const auto high = readNumber(lastWord, "the high limit", coldest, hottest, out);
    const auto low =
        words.size() > 3 ? readNumber(words[2], "the low limit", coldest, hottest, out) : std::optional(unit.low());
    if (!high || !low || goesOn(words.size(), 4, out)) {
        return failed;
    }
    if (*low >= *high) {
        out << "the low limit " << oneDecimal(*low) << " is not below the high limit " << oneDecimal(*high) << "\n";
        return failed;
    }
    unit.setLimits(*low, *high);
    return done;
}

} // namespace

std::vector<Corvane::CmdTableHelper::CmdDefinitionCpp> pelmTable(Unit& unit)
{
    return {
        {"pelm report [-v]", [&unit](const Words& words, std::ostream& out) { return report(words, unit, out); },
         "Sums up the unit's state.\n-v  with the output of every carrier"},
        {"pelm measure <id> [<samples>]",
         [&unit](const Words& words, std::ostream& out) { return measure(words, unit, out); },
         "Measures the output of a carrier that is on, once or up to ten times."},
        {"pelm limit [<low>] <high>",
         [&unit](const Words& words, std::ostream& out) { return setLimits(words, unit, out); },
         "Sets the temperatures beyond which an alarm is raised. The low limit stays as it is if it is left out."},
    };
}

} // namespace UnitShell
