#include "fan.h"

#include <ostream>
#include <string>

#include <command/cmdTableHelperIf.h>
#include <elog/elogIf.h>
#include <ramfs/fileManagerIf.h>
#include <trace/corvaneTracepoints.h>

using Corvane::CmdTableHelper::CmdDefinitionCpp;
using Corvane::CmdTableHelper::V2::CmdTableHelperIf;
using Corvane::Elog::V2::ElogIf;
using Corvane::RamFs::V1::FileManagerIf;
using Words = std::vector<std::string>;

namespace {

std::string speed = "0";

int setSpeed(const Words& words, std::ostream& out)
{
    speed = words[2];
    out << "The fan runs at " << speed << " %.\n";
    return 0;
}

} // namespace

const std::vector<CmdDefinitionCpp>& fanTable()
{
    static const std::vector<CmdDefinitionCpp> table = {
        {"fan speed <percent>", setSpeed, "Sets the speed, from 0 to 100 percent."},
    };
    return table;
}
