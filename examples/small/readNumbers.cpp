// SPDX-License-Identifier: MIT
// Reads the words of a command: how many there are, and numbers between limits. A wrong word gets a clear answer.
#include <charconv>
#include <iostream>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include <command/cmdTableHelperIf.h>

namespace {

using Corvane::CmdTableHelper::CmdDefinitionCpp;
using Corvane::CmdTableHelper::V2::CmdTableHelperIf;
using Words = std::vector<std::string>;

int readNumber(const std::string& word, const std::string& name, int low, int high)
{
    int number = 0;
    const char* const end = word.data() + word.size();
    const auto [stop, error] = std::from_chars(word.data(), end, number);
    if (error != std::errc() || stop != end || number < low || number > high) {
        throw std::invalid_argument(name + " is a number from " + std::to_string(low) + " to " + std::to_string(high) +
                                    ", not '" + word + "'");
    }
    return number;
}

int setPower(const Words& words, std::ostream& out)
{
    try {
        if (words.size() > 3) { // the service doesn't look at words after the end of a synopsis
            throw std::invalid_argument("'" + words[3] + "' is one word too many");
        }
        const int carrier = readNumber(words[1], "<carrier>", 1, 8);
        const int power = readNumber(words[2], "<dBm>", -10, 46);
        out << "carrier " << carrier << " sends with " << power << " dBm\n";
        return 0;
    } catch (const std::invalid_argument& wrong) {
        out << wrong.what() << "\n";
        return 1;
    }
}

} // namespace

int main()
{
    CmdTableHelperIf& service = CmdTableHelperIf::getInstance();
    const std::vector<CmdDefinitionCpp> table = {{"power <carrier> <dBm>", setPower, "Sets the power of a carrier."}};
    service.registerCmdTable("power", table);

    service.executeCmd({"power", "3", "40"}, std::cout);
    service.executeCmd({"power", "9", "40"}, std::cout);
    service.executeCmd({"power", "3", "4O"}, std::cout); // the letter O
    service.executeCmd({"power", "3", "40", "dBm"}, std::cout);
    service.executeCmd({"power", "3"}, std::cout); // incomplete: the service answers with the usage
}
