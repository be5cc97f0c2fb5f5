#ifndef FAN_H
#define FAN_H

#include <vector>

#include <command/cmdDefinitions.h>

/// The commands of the fan.
const std::vector<Corvane::CmdTableHelper::CmdDefinitionCpp>& fanTable();

#endif
