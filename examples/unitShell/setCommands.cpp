/// The command "set": changes the unit. Its handlers take the words as C strings.
///
/// "set carrier" has two placeholders in the same place: the words after them decide which one is meant.
#include <cstring>
#include <ostream>

#include "arguments.h"
#include "commands.h"
#include "unit.h"

namespace UnitShell {

namespace {

using Words = const char* const*;

constexpr double lowestPower = 0;
constexpr double highestPower = 46;

bool isOn(const char* word)
{
    return std::strcmp(word, "on") == 0; // the synopses let only "on" and "off" through
}

int setCarrier(std::size_t count, Words words, Unit& unit, std::ostream& out)
{
    Carrier* const carrier = readCarrier(words[2], unit, out);
    if (carrier == nullptr || goesOn(count, 4, out)) {
        return failed;
    }
    carrier->on = isOn(words[3]);
    return done;
}

int setCarriers(std::size_t count, Words words, Unit& unit, std::ostream& out)
{
    const Carrier* const from = readCarrier(words[2], unit, out);
    const Carrier* const to = readCarrier(words[4], unit, out);
    if (from == nullptr || to == nullptr || goesOn(count, 6, out)) {
        return failed;
    }
    if (from->id > to->id) {
        out << "there is no carrier from " << from->id << " to " << to->id << "\n";
        return failed;
    }
    for (Carrier& carrier : unit.carriers()) {
        if (carrier.id >= from->id && carrier.id <= to->id) {
            carrier.on = isOn(words[5]);
        }
    }
    return done;
}

int setPower(std::size_t count, Words words, Unit& unit, std::ostream& out)
{
    Carrier* const carrier = readCarrier(words[2], unit, out);
    const auto power = readNumber(words[4], "the power", lowestPower, highestPower, out);
    if (carrier == nullptr || !power || goesOn(count, 5, out)) {
        return failed;
    }
    carrier->power = *power;
    return done;
}

int setTemperature(std::size_t count, Words words, Unit& unit, std::ostream& out)
{
    const auto celsius = readNumber(words[2], "the temperature", coldest, hottest, out);
    if (!celsius || goesOn(count, 3, out)) {
        return failed;
    }
    unit.setTemperature(*celsius);
    return done;
}

int acknowledge(std::size_t count, Words words, Unit& unit, std::ostream& out)
{
    const Alarm* const alarm = readAlarm(words[2], unit, out);
    if (alarm == nullptr || goesOn(count, 4, out)) {
        return failed;
    }
    if (alarm->state != AlarmState::raised) {
        out << "alarm " << alarm->id << " is " << textOf(alarm->state) << " already\n";
        return failed;
    }
    unit.setState(*alarm, AlarmState::acknowledged);
    return done;
}

int clear(std::size_t count, Words words, Unit& unit, std::ostream& out)
{
    const Alarm* const alarm = readAlarm(words[2], unit, out);
    if (alarm == nullptr || goesOn(count, 4, out)) {
        return failed;
    }
    if (alarm->state == AlarmState::cleared) {
        out << "alarm " << alarm->id << " is cleared already\n";
        return failed;
    }
    if (unit.persists(*alarm)) {
        out << "alarm " << alarm->id << " can't be cleared: " << alarm->cause << "\n";
        return failed;
    }
    unit.setState(*alarm, AlarmState::cleared);
    return done;
}

} // namespace

std::vector<Corvane::CmdTableHelper::CmdDefinition> setTable(Unit& unit)
{
    using Handler = int (*)(std::size_t, Words, Unit&, std::ostream&);
    const auto with = [&unit](Handler handler) {
        return [&unit, handler](int argc, Words argv, std::ostream& out) {
            return handler(static_cast<std::size_t>(argc), argv, unit, out);
        };
    };
    return {
        {"set carrier <id> { on | off }", with(setCarrier), "Switches a carrier on or off."},
        {"set carrier <id> power <dBm>", with(setPower), "Sets the power that a carrier has while it is on: 0 to 46."},
        {"set carrier <from> to <to> { on | off }", with(setCarriers), "Switches several carriers on or off."},
        {"set temperature <celsius>", with(setTemperature),
         "Sets the temperature, -60 to 150. Beyond the limits, which \"pelm limit\" sets, that raises an alarm."},
        {"set alarm <id> ack", with(acknowledge), "Notes that somebody has seen the alarm."},
        {"set alarm <id> clear", with(clear), "Clears an alarm whose cause is gone."},
    };
}

} // namespace UnitShell
