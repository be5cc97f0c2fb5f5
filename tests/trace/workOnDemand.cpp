/// An application that uses commands and files while it is traced. It reads lines "work <rounds>" from standard input.
/// It answers each line with "right", or with the first wrong result. It ends when the input ends.
#include <iostream>
#include <sstream>
#include <string>

#include <command/cmdTableHelperIf.h>
#include <ramfs/fileManagerIf.h>

namespace {

using Corvane::CmdTableHelper::CmdDefinition;
using Corvane::CmdTableHelper::V2::CmdTableHelperIf;
using Corvane::RamFs::V1::FileManagerIf;

/// Emits ERROR once, TRACE2 once and TRACE1 a dozen times.
///
/// Returns  what it has seen.
std::string useServices()
{
    CmdTableHelperIf& commands = CmdTableHelperIf::getInstance();
    std::ostringstream out;
    commands.registerCmdTable("show",
                              std::vector<CmdDefinition>{{"show <file> ]",
                                                          [](int argc, const char* const*, std::ostream& answer) {
                                                              answer << "shown ";
                                                              return argc;
                                                          },
                                                          nullptr}});
    out << commands.executeCmd({"show", "a.txt"}, out) << ' ' << commands.executeCmd({"none"}, out) << ' ';
    FileManagerIf& files = FileManagerIf::getInstance();
    const auto file = files.create("a.txt", 0, 7);
    out << file->write(std::string("text")) << ' ' << file->append("more", 4) << ' ';
    file->setPos(0);
    file->dump(out);
    files.remove("a.txt", out, true);
    return out.str();
}

} // namespace

int main()
{
    const std::string expected = "shown 2 Usage: show <file> \n\n20 4 4 textmore\nFile 'a.txt' deleted";
    std::string word;
    for (unsigned long rounds = 0; std::cin >> word >> rounds;) {
        std::string seen = expected;
        for (unsigned long round = 0; round < rounds && seen == expected; ++round) {
            seen = useServices();
        }
        std::cout << (seen == expected ? "right" : seen) << std::endl;
    }
    return 0;
}
