/// An application that uses all three services through their installed headers.
#include <iostream>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include <command/cmdTableHelperIf.h>
#include <elog/elogIf.h>
#include <ramfs/fileManagerIf.h>
#include <version/corvaneVersion.h>

#if CORVANE_VERSION < CORVANE_VERSION_NUMBER(0, 1, 0) || CORVANE_VERSION > CORVANE_VERSION_NUMBER(0, 1, 999)
#error "this application is written for version 0.1"
#endif

namespace {

using Corvane::CmdTableHelper::CmdDefinitionCpp;
using Corvane::CmdTableHelper::V2::CmdTableHelperIf;
using Corvane::RamFs::V1::FileHandleIf;
using Corvane::RamFs::V1::FileManagerIf;

int note(const std::vector<std::string>& words, std::ostream& out)
{
    FileManagerIf& files = FileManagerIf::getInstance();
    std::shared_ptr<FileHandleIf> file = files.create(words.at(1), 0, 0);
    if (!file) {
        return 1;
    }
    out << "wrote " << file->write(words.at(2)) << " bytes to " << file->getFileName() << "\n";
    files.close(file);
    return 0;
}

} // namespace

int main()
{
    std::cout << "compiled with " << CORVANE_VERSION_MAJOR << "." << CORVANE_VERSION_MINOR << "."
              << CORVANE_VERSION_PATCH << "\n";
    const std::vector<CmdDefinitionCpp> table = {{"note <file> <text>", note, "Keeps a text in a file."}};
    CmdTableHelperIf& commands = CmdTableHelperIf::getInstance();
    commands.registerCmdTable("note", table);
    std::cout << commands.executeCmd({"note", "first", "some text"}, std::cout) << "\n";
    std::cout << commands.executeCmd({"note", "second"}, std::cout) << "\n";
    std::cout << (FileManagerIf::getInstance().exists("first") ? "kept" : "lost") << "\n";
    Corvane::Elog::V2::ElogIf::getInstance().elogWrite(1, "an entry",
                                                       {2, 3}); // no engine runs; it is dropped at the end
    return 0;
}
