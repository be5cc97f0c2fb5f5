/// The event log: entries that are typed ("elog"), and the unit's alarms.
#include "eventLog.h"

#include <limits>
#include <ostream>
#include <string>

#include <elog/elogIf.h>

#include "arguments.h"
#include "commands.h"
#include "textEscapes.h"
#include "unit.h"

namespace UnitShell {

namespace {

using Corvane::Elog::V2::ElogIf;
using Words = std::vector<std::string>;

constexpr unsigned int alarmRaised = 1001;
constexpr unsigned int alarmAcknowledged = 1002;
constexpr unsigned int alarmCleared = 1003;

constexpr std::size_t mostParams = 4; // a synopsis has no repetition: it names each of them

unsigned int eventIdOf(AlarmState state)
{
    switch (state) {
    case AlarmState::raised:
        return alarmRaised;
    case AlarmState::acknowledged:
        return alarmAcknowledged;
    default:
        return alarmCleared;
    }
}

int elog(const Words& words, std::ostream& out)
{
    constexpr unsigned int largest = std::numeric_limits<unsigned int>::max();
    if (goesOn(words.size(), 3 + mostParams, out)) {
        return failed;
    }
    const auto eventId = readWhole(words[1], "an event id", 0, largest, out);
    if (!eventId) {
        return failed;
    }
    std::vector<unsigned int> params;
    for (std::size_t i = 3; i < words.size(); ++i) {
        const auto param = readWhole(words[i], "a parameter", 0, largest, out);
        if (!param) {
            return failed;
        }
        params.push_back(*param);
    }
    ElogIf::getInstance().elogWrite(*eventId, unescape(words[2]), params);
    return done;
}

} // namespace

void logAlarm(const Alarm& alarm)
{
    ElogIf::getInstance().elogWrite(eventIdOf(alarm.state), alarm.cause + " " + textOf(alarm.state), {alarm.id});
}

std::vector<Corvane::CmdTableHelper::CmdDefinitionCpp> elogTable()
{
    return {
        {"elog <eventId> <text> [ <p1> [ <p2> [ <p3> [ <p4> ] ] ] ]", elog,
         "Writes an entry with up to four parameters to the event log. Entries wait until an event-log engine runs.\n"
         "In <text> \\n, \\t, \\\\ and \\x41 stand for bytes."},
    };
}

} // namespace UnitShell
