// SPDX-License-Identifier: MIT
/// The shell's command tables, and what it writes to the event log by itself.
///
/// The three kinds of records differ in what their handlers get: C strings, C strings and a stream, or strings and a
/// stream. The shell uses each kind somewhere to show them all. A new application needs only the last.
///
/// Handlers keep references to the arguments: these must outlive every line that is executed.
#ifndef UNITSHELL_COMMANDS_H
#define UNITSHELL_COMMANDS_H

#include <vector>

#include <command/cmdDefinitions.h>

namespace UnitShell {

struct Alarm;
class CommandTables;
class Shell;
class Statistics;
class Unit;

std::vector<Corvane::CmdTableHelper::CmdDefinitionCpp> showTable(Unit& unit);
std::vector<Corvane::CmdTableHelper::CmdDefinition> setTable(Unit& unit);
std::vector<Corvane::CmdTableHelper::CmdDefinitionCpp> pelmTable(Unit& unit);
std::vector<Corvane::CmdTableHelper::CmdDefinitionCpp> ramfsTable();
std::vector<Corvane::CmdTableHelper::CmdDefinitionCpp> elogTable();
std::vector<Corvane::CmdTableHelper::CmdDefinitionCpp> helpTable(const CommandTables& tables);
std::vector<Corvane::CmdTableHelper::CmdDefinitionCpp> statisticsTable(const Statistics& statistics);
std::vector<Corvane::CmdTableHelper::CommandDefinitions> exitTable(Shell& shell);

/// Writes an entry with the alarm's number, cause and state. Never waits, whether an event-log engine is running or
/// not.
void logAlarm(const Alarm& alarm);

} // namespace UnitShell

#endif
