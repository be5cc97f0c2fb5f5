// SPDX-License-Identifier: MIT
/// The command "show": looks at the unit. Its handlers get the words as strings.
#include "arguments.h"
#include "commands.h"
#include "unit.h"

namespace UnitShell {

namespace {

void writeCarrier(const Carrier& carrier, std::ostream& out)
{
    out << "carrier " << carrier.id << ": band " << carrier.band << ", " << (carrier.on ? "on" : "off") << ", "
        << oneDecimal(carrier.power) << " dBm\n";
}

void showCarriers(const Words& /*words*/, Unit& unit, std::ostream& out)
{
    for (const Carrier& carrier : unit.carriers()) {
        writeCarrier(carrier, out);
    }
}

void showCarrier(const Words& words, Unit& unit, std::ostream& out)
{
    writeCarrier(readPart(words[2], "carrier", unit.carriers()), out);
}

void showTemperature(const Words& words, const Unit& unit, std::ostream& out)
{
    const bool inFahrenheit = readOption(words, "-f");
    const auto text = [&](double celsius) { return oneDecimal(inFahrenheit ? celsius * 9 / 5 + 32 : celsius); };
    out << text(unit.temperature()) << (inFahrenheit ? " F" : " C") << ", limits " << text(unit.low()) << " to "
        << text(unit.high()) << "\n";
}

void showAlarms(const Words& words, const Unit& unit, std::ostream& out)
{
    const bool all = readOption(words, "-a");
    bool any = false;
    for (const Alarm& alarm : unit.alarms()) {
        if (all || alarm.state != AlarmState::cleared) {
            out << "alarm " << alarm.id << ": " << alarm.cause << " (" << oneDecimal(alarm.temperature) << " C), "
                << textOf(alarm.state) << "\n";
            any = true;
        }
    }
    out << (any ? "" : "no alarms\n");
}

} // namespace

std::vector<Corvane::CmdTableHelper::CmdDefinitionCpp> showTable(Unit& unit)
{
    return {
        {"show carriers", handler(2, showCarriers, unit), "Shows all carriers."},
        {"show carrier <id>", handler(3, showCarrier, unit), "Shows one carrier."},
        {"show temperature [-f]", handler(3, showTemperature, unit),
         "Shows the temperature and its limits.\n-f  in degrees Fahrenheit"},
        {"show alarms [-a]", handler(3, showAlarms, unit),
         "Shows the alarms that are not cleared, oldest first, with the temperature that raised them.\n"
         "-a  the cleared ones too"},
    };
}

} // namespace UnitShell
