// SPDX-License-Identifier: MIT
/// What goes to the event log: entries that are typed ("elog"), and the unit's alarms.
#include <console/words.h>
#include <elog/elogIf.h>

#include "arguments.h"
#include "commands.h"
#include "unit.h"

namespace UnitShell {

namespace {

using Corvane::Elog::V2::ElogIf;

constexpr std::size_t mostParams = 4;      // a synopsis can't repeat a placeholder: it lists each one
constexpr unsigned int alarmEvents = 1001; // the event id of a raised alarm; the ids of the other states follow

void elog(const Words& words, std::ostream& /*out*/)
{
    const unsigned int eventId = readNumber(words[1], "an event id");
    std::vector<unsigned int> params;
    for (std::size_t i = 3; i < words.size(); ++i) {
        params.push_back(readNumber(words[i], "a parameter"));
    }
    ElogIf::getInstance().elogWrite(eventId, Corvane::Console::unescape(words[2]), params);
}

} // namespace

void logAlarm(const Alarm& alarm)
{
    const unsigned int eventId = alarmEvents + static_cast<unsigned int>(alarm.state);
    ElogIf::getInstance().elogWrite(eventId, alarm.cause + " " + textOf(alarm.state), {alarm.id});
}

std::vector<Corvane::CmdTableHelper::CmdDefinitionCpp> elogTable()
{
    return {
        {"elog <eventId> <text> [ <p1> [ <p2> [ <p3> [ <p4> ] ] ] ]", handler(3 + mostParams, elog),
         "Writes an entry with up to four parameters to the event log. Entries wait until an event-log engine runs.\n"
         "In <text> \\n, \\t, \\\\ and \\x41 stand for bytes."},
    };
}

} // namespace UnitShell
