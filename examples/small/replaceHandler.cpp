// SPDX-License-Identifier: MIT
// Replaces the handler of a command at run time: "radio on" works only once the radio has been calibrated.
#include <functional>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include <command/cmdTableHelperIf.h>

namespace {

using Corvane::CmdTableHelper::CmdDefinitionCpp;
using Corvane::CmdTableHelper::V2::CmdTableHelperIf;
using Words = std::vector<std::string>;
using Handler = std::function<int(const Words&, std::ostream&)>;

struct Radio
{
    int level = 0;
};

/// The same synopsis ends where the earlier one did, so its handler takes the place of the earlier one.
void onRadio(const Handler& handler)
{
    const std::vector<CmdDefinitionCpp> table = {{"radio on", handler, "Switches the radio on."}};
    CmdTableHelperIf::getInstance().registerCmdTable("radio", table);
}

int notCalibrated(const Words&, std::ostream& out)
{
    out << "the radio is not calibrated yet\n";
    return 1;
}

void calibrate()
{
    // Nothing unregisters a command. The handler owns the radio, so the radio lives as long as lines can reach it.
    const auto radio = std::make_shared<Radio>();
    radio->level = 7;
    onRadio([radio](const Words&, std::ostream& out) {
        out << "the radio sends at level " << radio->level << "\n";
        return 0;
    });
}

} // namespace

int main()
{
    CmdTableHelperIf& service = CmdTableHelperIf::getInstance();
    onRadio(notCalibrated);
    service.executeCmd({"radio", "on"}, std::cout);
    calibrate();
    service.executeCmd({"radio", "on"}, std::cout);
}
