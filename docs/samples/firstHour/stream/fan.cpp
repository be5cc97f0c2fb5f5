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

int showHelp(const Words& words, std::ostream& out)
{
    CmdTableHelperIf::getInstance().cmdHelp(words, out, fanTable(), true, true);
    return 0;
}

int saveSpeed(const Words& words, std::ostream& out)
{
    const auto file = FileManagerIf::getInstance().create(words[2], 0, 0);
    if (!file) {
        out << "There is a file '" << words[2] << "' already.\n";
        return 1;
    }
    file->write("speed " + speed + "\n");
    return 0;
}

int showFile(const Words& words, std::ostream& out)
{
    const auto file = FileManagerIf::getInstance().open(words[2]);
    if (!file) {
        out << "There is no file '" << words[2] << "'.\n";
        return 1;
    }
    file->dump(out);
    return 0;
}

int writeReport(const Words&, std::ostream& out)
{
    const auto buffer = FileManagerIf::getInstance().getFileStreamBuf();
    buffer->create("report_<date>", 0, 0);
    std::ostream report(buffer.get());
    report << "The fan runs at " << speed << " %." << std::endl;
    out << "The report is in the file '" << buffer->getFileName() << "'.\n";
    return 0;
}

int listFiles(const Words&, std::ostream& out)
{
    for (const auto& file : FileManagerIf::getInstance().openAll()) {
        out << file->getFileName() << " has " << file->getFileSize() << " bytes.\n";
    }
    return 0;
}

} // namespace

const std::vector<CmdDefinitionCpp>& fanTable()
{
    static const std::vector<CmdDefinitionCpp> table = {
        {"fan speed <percent>", setSpeed, "Sets the speed, from 0 to 100 percent."},
        {"fan help [-l]", showHelp, "Shows the commands.\n-l  with what they do"},
        {"fan save <file>", saveSpeed, "Writes the speed to a new file."},
        {"fan show <file>", showFile, "Shows a file."},
        {"fan report", writeReport, "Writes a report to a new file."},
        {"fan files", listFiles, "Lists the files."},
    };
    return table;
}
