// SPDX-License-Identifier: MIT
/// The command "set": changes the unit. Its handlers get the words as C strings.
///
/// "set carrier" has two placeholders in the same place: the words after them decide which one is meant.
#include "arguments.h"
#include "commands.h"
#include "unit.h"

namespace UnitShell {

namespace {

constexpr double lowestPower = 0;
constexpr double highestPower = 46;

bool isOn(const std::string& word)
{
    return word == "on"; // the synopses allow only "on" and "off"
}

void setCarrier(const char* const* words, Unit& unit)
{
    readPart(words[2], "carrier", unit.carriers()).on = isOn(words[3]);
}

void setCarriers(const char* const* words, Unit& unit)
{
    const unsigned int from = readPart(words[2], "carrier", unit.carriers()).id;
    const unsigned int to = readPart(words[4], "carrier", unit.carriers()).id;
    if (from > to) {
        throw Refusal("there is no carrier from " + std::to_string(from) + " to " + std::to_string(to));
    }
    for (Carrier& carrier : unit.carriers()) {
        if (carrier.id >= from && carrier.id <= to) {
            carrier.on = isOn(words[5]);
        }
    }
}

void setPower(const char* const* words, Unit& unit)
{
    Carrier& carrier = readPart(words[2], "carrier", unit.carriers());
    carrier.power = readNumber(words[4], "the power", lowestPower, highestPower);
}

void setTemperature(const char* const* words, Unit& unit)
{
    unit.setTemperature(readNumber(words[2], "the temperature", coldest, hottest));
}

void acknowledge(const char* const* words, Unit& unit)
{
    const Alarm& alarm = readPart(words[2], "alarm", unit.alarms());
    if (alarm.state != AlarmState::raised) {
        throw Refusal("alarm " + std::to_string(alarm.id) + " is " + textOf(alarm.state) + " already");
    }
    unit.setState(alarm, AlarmState::acknowledged);
}

void clear(const char* const* words, Unit& unit)
{
    const Alarm& alarm = readPart(words[2], "alarm", unit.alarms());
    if (alarm.state == AlarmState::cleared) {
        throw Refusal("alarm " + std::to_string(alarm.id) + " is cleared already");
    }
    if (unit.persists(alarm)) {
        throw Refusal("alarm " + std::to_string(alarm.id) + " can't be cleared: " + alarm.cause);
    }
    unit.setState(alarm, AlarmState::cleared);
}

} // namespace

std::vector<Corvane::CmdTableHelper::CmdDefinition> setTable(Unit& unit)
{
    const auto set = [&unit](std::size_t most, void (*action)(const char* const* words, Unit& unit)) {
        return [&unit, most, action](int argc, const char* const* argv, std::ostream& out) {
            return answer(out, [&] {
                refuseMoreWords(static_cast<std::size_t>(argc), most);
                action(argv, unit);
            });
        };
    };
    return {
        {"set carrier <id> { on | off }", set(4, setCarrier), "Switches a carrier on or off."},
        {"set carrier <id> power <dBm>", set(5, setPower),
         "Sets the power that a carrier has while it is on: 0 to 46."},
        {"set carrier <from> to <to> { on | off }", set(6, setCarriers), "Switches several carriers on or off."},
        {"set temperature <celsius>", set(3, setTemperature),
         "Sets the temperature, -60 to 150. Beyond the limits, which \"pelm limit\" sets, that raises an alarm."},
        {"set alarm <id> ack", set(4, acknowledge), "Notes that somebody has seen the alarm."},
        {"set alarm <id> clear", set(4, clear), "Clears an alarm whose cause is gone."},
    };
}

} // namespace UnitShell
