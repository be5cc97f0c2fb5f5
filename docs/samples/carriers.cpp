/// The commands of a small daemon: it switches carriers, and keeps a log of that in an in-memory file.
#include "carriers.h"

#include <ostream>
#include <string>

#include <elog/elogIf.h>
#include <ramfs/fileManagerIf.h>

namespace {

int switchCarrier(const std::vector<std::string>& words, std::ostream& out)
{
    auto& files = Corvane::RamFs::V1::FileManagerIf::getInstance();
    const auto log = files.exists("carriers.log") ? files.open("carriers.log") : files.create("carriers.log", 0, 0);
    log->append(words[2] + " " + words[1] + "\n");
    if (words[1] == "off") {
        Corvane::Elog::V2::ElogIf::getInstance().elogWrite(1007, "carrier " + words[2] + " is off", {});
    }
    out << "carrier " << words[2] << " is " << words[1] << "\n";
    return 0;
}

} // namespace

std::vector<Corvane::CmdTableHelper::CmdDefinitionCpp> carrierTable()
{
    return {{"carrier { on | off } <name>", switchCarrier, "Switches a carrier."}};
}
