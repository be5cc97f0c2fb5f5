/// The commands of a small daemon, which the test of docs/testing-applications.md tests.
#ifndef CARRIERS_H
#define CARRIERS_H

#include <vector>

#include <command/cmdDefinitions.h>

std::vector<Corvane::CmdTableHelper::CmdDefinitionCpp> carrierTable();

#endif
