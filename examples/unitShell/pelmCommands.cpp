// SPDX-License-Identifier: MIT
/// The command "pelm": measures the unit and sets its limits.
///
/// The service prints the usage of a command of this name in a format of its own, which also shows the placeholders
/// that may be left out: "pelm measure" alone is answered with "Usage: pelm measure <id> [<samples>] ".
#include <algorithm>

#include "arguments.h"
#include "commands.h"
#include "unit.h"

namespace UnitShell {

namespace {

constexpr unsigned int mostSamples = 10;

void report(const Words& words, Unit& unit, std::ostream& out)
{
    const bool isVerbose = readOption(words, "-v");
    const auto& carriers = unit.carriers();
    const auto& alarms = unit.alarms();
    const auto on = std::count_if(carriers.begin(), carriers.end(), [](const Carrier& carrier) { return carrier.on; });
    const auto open = std::count_if(alarms.begin(), alarms.end(),
                                    [](const Alarm& alarm) { return alarm.state != AlarmState::cleared; });
    out << on << " of " << carriers.size() << " carriers on, " << oneDecimal(unit.temperature()) << " C, " << open
        << " of " << alarms.size() << " alarms open\n";
    if (isVerbose) {
        for (const Carrier& carrier : carriers) {
            out << "  carrier " << carrier.id << ": " << (carrier.on ? oneDecimal(carrier.power) + " dBm" : "off")
                << "\n";
        }
    }
}

void measure(const Words& words, Unit& unit, std::ostream& out)
{
    const Carrier& carrier = readPart(words[2], "carrier", unit.carriers());
    const unsigned int samples = words.size() > 3 ? readNumber(words[3], "the number of samples", 1U, mostSamples) : 1;
    if (!carrier.on) {
        throw Refusal("carrier " + std::to_string(carrier.id) + " is off");
    }
    for (unsigned int sample = 0; sample < samples; ++sample) {
        const double ripple = 0.1 * (sample % 3) - 0.1; // like that of a real power meter
        out << "sample " << sample + 1 << ": " << oneDecimal(carrier.power + ripple) << " dBm\n";
    }
}

void setLimits(const Words& words, Unit& unit, std::ostream& /*out*/)
{
    // One word is the high limit; two words are the low limit and the high limit.
    const double high = readNumber(words.back(), "the high limit", coldest, hottest);
    const double low = words.size() > 3 ? readNumber(words[2], "the low limit", coldest, hottest) : unit.low();
    if (low >= high) {
        throw Refusal("the low limit " + oneDecimal(low) + " is not below the high limit " + oneDecimal(high));
    }
    unit.setLimits(low, high);
}

} // namespace

std::vector<Corvane::CmdTableHelper::CmdDefinitionCpp> pelmTable(Unit& unit)
{
    return {
        {"pelm report [-v]", handler(3, report, unit),
         "Sums up the unit's state.\n-v  with the output of every carrier"},
        {"pelm measure <id> [<samples>]", handler(4, measure, unit),
         "Measures the output of a carrier that is on, once or up to ten times."},
        {"pelm limit [<low>] <high>", handler(4, setLimits, unit),
         "Sets the temperatures beyond which an alarm is raised. The low limit stays as it is if it is left out."},
    };
}

} // namespace UnitShell
