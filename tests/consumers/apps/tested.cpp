/// A test of an application, without a test framework: what Corvane::testing offers, through its installed headers.
#include <iostream>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include <command/cmdTableHelperIf.h>
#include <console/words.h>
#include <elog/elogIf.h>
#include <ramfs/fileManagerIf.h>
#include <testing/commandSession.h>
#include <testing/entryRecorder.h>
#include <testing/files.h>

namespace {

using namespace Corvane::Testing;
using Corvane::RamFs::V1::FileManagerIf;

// The application.
int note(const std::vector<std::string>& words, std::ostream& out)
{
    const auto file = FileManagerIf::getInstance().create(words.at(1), 0, 0);
    if (!file) {
        Corvane::Elog::V2::ElogIf::getInstance().elogWrite(7, "no file " + words[1], {1, 2});
        return 20;
    }
    out << file->write(words.at(2)) << " bytes\n";
    return 0;
}

void show(const CommandResult& result)
{
    std::cout << (result.isUsage ? "usage " : "result ") << result.result << ": " << result.output << "\n";
}

} // namespace

int main()
{
    EntryRecorder entries;
    Corvane::CmdTableHelper::V2::CmdTableHelperIf::getInstance().registerCmdTable(
        "note", std::vector<Corvane::CmdTableHelper::CmdDefinitionCpp>{{"note <file> <text>", note, nullptr}});
    CommandSession session;
    show(session.run("note first 'some text' # a comment"));
    show(session.run("note first again"));
    show(session.run("note first"));
    for (const Entry& entry : entries.take(1)) {
        std::cout << entry.eventId << " " << entry.text << " " << entry.params.size() << "\n";
    }
    resetFiles();
    std::cout << (FileManagerIf::getInstance().exists("first") ? "kept" : "gone") << "\n";
    try {
        session.run("note \"first");
    } catch (const Corvane::Console::BadLine& error) {
        std::cout << error.what() << "\n";
    }
    return 0;
}
