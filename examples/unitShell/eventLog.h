/// What the shell writes to the event log by itself: what becomes of the unit's alarms.
#ifndef UNITSHELL_EVENTLOG_H
#define UNITSHELL_EVENTLOG_H

namespace UnitShell {

struct Alarm;

/// Writes an entry that tells the alarm's number, cause and state. Never waits, whether an event-log engine runs or
/// not.
void logAlarm(const Alarm& alarm);

} // namespace UnitShell

#endif
