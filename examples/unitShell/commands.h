/// The shell's command tables, one file for each.
///
/// The three kinds of records differ in what their handlers get: C strings, C strings and a stream, or strings and a
/// stream. A shell would use the last kind throughout; this one uses each somewhere, to show them all.
///
/// What the handlers work on is bound by reference: it outlives every line that is executed.
#ifndef UNITSHELL_COMMANDS_H
#define UNITSHELL_COMMANDS_H

#include <vector>

#include <command/cmdDefinitions.h>

namespace UnitShell {

class CommandTables;
class Shell;
class Unit;

std::vector<Corvane::CmdTableHelper::CmdDefinitionCpp> showTable(Unit& unit);
std::vector<Corvane::CmdTableHelper::CmdDefinition> setTable(Unit& unit);
std::vector<Corvane::CmdTableHelper::CmdDefinitionCpp> pelmTable(Unit& unit);
std::vector<Corvane::CmdTableHelper::CmdDefinitionCpp> ramfsTable();
std::vector<Corvane::CmdTableHelper::CmdDefinitionCpp> elogTable();
std::vector<Corvane::CmdTableHelper::CmdDefinitionCpp> helpTable(const CommandTables& tables);
std::vector<Corvane::CmdTableHelper::CommandDefinitions> exitTable(Shell& shell);

} // namespace UnitShell

#endif
