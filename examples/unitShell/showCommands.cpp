/// The command "show": looks at the unit. Its handlers take the words as strings.
#include <ostream>
#include <string>

#include "arguments.h"
#include "commands.h"
#include "unit.h"

namespace UnitShell {

namespace {

using Words = std::vector<std::string>;

void writeCarrier(const Carrier& carrier, std::ostream& out)
{
    out << "carrier " << carrier.id << ": band " << carrier.band << ", " << (carrier.on ? "on" : "off") << ", "
        << oneDecimal(carrier.power) << " dBm\n";
}

int showCarriers(const Words& words, Unit& unit, std::ostream& out)
{
    if (goesOn(words.size(), 2, out)) {
        return failed;
    }
    for (const Carrier& carrier : unit.carriers()) {
        writeCarrier(carrier, out);
    }
    return done;
}

int showCarrier(const Words& words, Unit& unit, std::ostream& out)
{
    const Carrier* const carrier = readCarrier(words[2], unit, out);
    if (carrier == nullptr || goesOn(words.size(), 3, out)) {
        return failed;
    }
    writeCarrier(*carrier, out);
    return done;
}

int showTemperature(const Words& words, const Unit& unit, std::ostream& out)
{
    const auto fahrenheit = readOption(words, "-f", out);
    if (!fahrenheit) {
        return failed;
    }
    const auto write = [&](double celsius) { return oneDecimal(*fahrenheit ? celsius * 9 / 5 + 32 : celsius); };
    out << write(unit.temperature()) << (*fahrenheit ? " F" : " C") << ", limits " << write(unit.low()) << " to "
        << write(unit.high()) << "\n";
    return done;
}

int showAlarms(const Words& words, Unit& unit, std::ostream& out)
{
    const auto all = readOption(words, "-a", out);
    if (!all) {
        return failed;
    }
    bool any = false;
    for (const Alarm& alarm : unit.alarms()) {
        if (*all || alarm.state != AlarmState::cleared) {
            out << "alarm " << alarm.id << ": " << alarm.cause << " (" << oneDecimal(alarm.temperature) << " C), "
                << textOf(alarm.state) << "\n";
            any = true;
        }
    }
    if (!any) {
        out << "no alarms\n";
    }
    return done;
}

} // namespace

std::vector<Corvane::CmdTableHelper::CmdDefinitionCpp> showTable(Unit& unit)
{
    return {
        {"show carriers", [&unit](const Words& words, std::ostream& out) { return showCarriers(words, unit, out); },
         "Shows all carriers."},
        {"show carrier <id>", [&unit](const Words& words, std::ostream& out) { return showCarrier(words, unit, out); },
         "Shows one carrier."},
        {"show temperature [-f]",
         [&unit](const Words& words, std::ostream& out) { return showTemperature(words, unit, out); },
         "Shows the temperature and its limits.\n-f  in degrees Fahrenheit"},
        {"show alarms [-a]", [&unit](const Words& words, std::ostream& out) { return showAlarms(words, unit, out); },
         "Shows the alarms that nobody has cleared yet, oldest first, with the temperature that raised them.\n"
         "-a  the cleared ones too"},
    };
}

} // namespace UnitShell
