// SPDX-License-Identifier: MIT
/// The command "ramfs": the in-memory files of this process.
///
/// Each command opens its file anew. "list" and "stat" look at all files at once instead: opening a file that is marked
/// for delayed deletion by its name would take it out of the directory.
#include <algorithm>
#include <ctime>
#include <iomanip>
#include <memory>

#include <command/cmdTableHelperIf.h>
#include <console/words.h>
#include <ramfs/fileManagerIf.h>

#include "arguments.h"
#include "commands.h"

namespace UnitShell {

namespace {

using Corvane::Console::unescape;
using Corvane::RamFs::V1::FileManagerIf;
using Handle = std::shared_ptr<Corvane::RamFs::V1::FileHandleIf>;

constexpr unsigned int largest = std::numeric_limits<unsigned int>::max();

FileManagerIf& files()
{
    return FileManagerIf::getInstance();
}

int readRef(const std::string& word)
{
    return readNumber<int>(word, "a file's number");
}

[[noreturn]] void refuseAbsent(const std::string& name)
{
    throw Refusal("there is no file '" + name + "'");
}

[[noreturn]] void refusePresent(const std::string& name)
{
    throw Refusal("file '" + name + "' already exists");
}

Handle openFile(const std::string& name)
{
    Handle file = files().open(name);
    if (!file) {
        refuseAbsent(name);
    }
    return file;
}

/// Reads from the handle's position on.
std::string readBytes(const Handle& file, unsigned int most = largest)
{
    std::string bytes(std::min<std::size_t>(most, file->getFileSize()), '\0');
    bytes.resize(file->read(reinterpret_cast<unsigned char*>(bytes.data()), static_cast<unsigned int>(bytes.size())));
    return bytes;
}

void list(const Words& /*words*/, std::ostream& out)
{
    auto all = files().openAll(); // in no particular order
    std::sort(all.begin(), all.end(),
              [](const Handle& a, const Handle& b) { return a->getFileName() < b->getFileName(); });
    for (const Handle& file : all) {
        out << file->getFileName() << ": number " << file->getFileRef() << ", " << file->getFileSize() << " bytes\n";
    }
    out << (all.empty() ? "no files\n" : "");
}

void stat(const Words& words, std::ostream& out)
{
    const auto all = files().openAll();
    const auto found =
        std::find_if(all.begin(), all.end(), [&](const Handle& file) { return file->getFileName() == words[2]; });
    if (found == all.end()) {
        refuseAbsent(words[2]);
    }
    const Handle& file = *found;
    const std::time_t created = file->getCreationTime();
    std::tm local = {};
    localtime_r(&created, &local);
    out << words[2] << ": number " << file->getFileRef() << ", " << file->getFileSize() << " bytes, created "
        << std::put_time(&local, "%F %T") << ", " << file->getUserCount() << " owners\n";
}

void create(const Words& words, std::ostream& out)
{
    std::size_t next = 3; // the first word that is not read yet
    const auto takeOption = [&](const char* name) {
        const bool isThere = next + 1 < words.size() && words[next] == name;
        next += isThere ? 2 : 0;
        return isThere ? words[next - 1] : "0";
    };
    const unsigned int size = readNumber(takeOption("size"), "a size");
    const int ref = readRef(takeOption("number"));
    refuseMoreWords(words.size(), next);
    const Handle file = files().create(words[2], size, ref);
    if (!file) {
        refusePresent(words[2]);
    }
    out << file->getFileName() << ": number " << file->getFileRef() << "\n";
}

void write(const Words& words, std::ostream& out)
{
    const bool hasPosition = words.size() > 5 && words[3] == "at";
    refuseMoreWords(words.size(), hasPosition ? 6 : 4);
    const unsigned int position = hasPosition ? readNumber(words[4], "a position") : 0;
    const Handle file = openFile(words[2]);
    file->setPos(position);
    out << file->write(unescape(words.back())) << " bytes written\n";
}

void append(const Words& words, std::ostream& out)
{
    out << openFile(words[2])->append(unescape(words[3])) << " bytes appended\n";
}

void read(const Words& words, std::ostream& out)
{
    const unsigned int position = words.size() > 3 ? readNumber(words[3], "a position") : 0;
    const unsigned int length = words.size() > 4 ? readNumber(words[4], "a length") : largest;
    const Handle file = openFile(words[2]);
    file->setPos(position);
    out << readBytes(file, length) << "\n";
}

void dump(const Words& words, std::ostream& out)
{
    openFile(words[2])->dump(out);
}

void readable(const Words& words, std::ostream& out)
{
    const unsigned int limit = readNumber(words[3], "a limit");
    const bool isCut = openFile(words[2])->readReadable(out, limit) == largest;
    out << (isCut ? "...\n" : "\n");
}

void header(const Words& words, std::ostream& out)
{
    const Handle file = openFile(words[2]);
    if (words.size() == 4) {
        file->insertHeader(unescape(words[3]));
    } else {
        const auto bytes = file->readHeader();
        out << std::string(bytes.begin(), bytes.end()) << "\n";
    }
}

void footer(const Words& words, std::ostream& out)
{
    const Handle file = openFile(words[2]);
    if (words.size() == 4) {
        const std::string text = unescape(words[3]);
        file->appendFooter(reinterpret_cast<const unsigned char*>(text.data()), static_cast<unsigned int>(text.size()));
    } else {
        const auto bytes = file->readFooter();
        out << std::string(bytes.begin(), bytes.end()) << "\n";
    }
}

int removeNamed(const Words& words, std::ostream& out)
{
    const bool isRemoved = files().remove(words[2], out, true);
    out << "\n"; // the report has no line end
    return isRemoved ? done : failed;
}

int removeNumbered(const Words& words, std::ostream& out)
{
    return files().remove(readRef(words[3]), out, true) ? done : failed;
}

void removeAll(const Words& /*words*/, std::ostream& /*out*/)
{
    files().removeAll();
}

void delayedDelete(const Words& words, std::ostream& /*out*/)
{
    const int ref = readRef(words[2]);
    if (!files().setDelayedDelete(ref)) {
        throw Refusal("there is no file with the number " + std::to_string(ref));
    }
}

/// Runs the rest of the line and streams its answer into a new file.
int tee(const Words& words, std::ostream& out)
{
    if (words.size() > 4 && words[3] == "ramfs" && words[4] == "tee") { // a long line of them would need a deep stack
        throw Refusal("a tee can't run another one");
    }
    const auto buffer = files().getFileStreamBuf();
    if (!buffer->create(words[2], 0, 0)) {
        refusePresent(words[2]);
    }
    const Handle file = files().open(buffer->getFileName()); // now: the command may remove the file
    std::ostream stream(buffer.get());
    const int result = Corvane::CmdTableHelper::V2::CmdTableHelperIf::getInstance().executeCmd(
        Words(words.begin() + 3, words.end()), stream);
    buffer->close();
    out << readBytes(file);
    return result;
}

} // namespace

std::vector<Corvane::CmdTableHelper::CmdDefinitionCpp> ramfsTable()
{
    constexpr std::size_t anyNumber = std::numeric_limits<std::size_t>::max();
    constexpr const char* escapes = R"(In <text> \n, \t, \\ and \x41 stand for bytes.)";
    return {
        {"ramfs list", handler(2, list), "Shows all in-memory files."},
        {"ramfs stat <name>", handler(3, stat),
         "Shows a file's number, size, creation time and number of owners. Three are always there: the directory, this "
         "command and the count itself."},
        {"ramfs create <name> [ size <bytes> ] [ number <ref> ]", handler(7, create),
         "Creates a file. In its name <date> becomes the time.\nsize    reserves storage\nnumber  instead of the next "
         "automatic one"},
        {"ramfs write <name> [ at <position> ] <text>", handler(6, write), escapes},
        {"ramfs append <name> <text>", handler(4, append), escapes},
        {"ramfs read <name> [ <position> [ <length> ] ]", handler(5, read),
         "Shows a file's bytes: header, content and footer."},
        {"ramfs dump <name>", handler(3, dump), "Shows a file as text and hexadecimal digits."},
        {"ramfs readable <name> <limit>", handler(4, readable), "The same, but cut near the limit."},
        {"ramfs header <name> [ <text> ]", handler(4, header), "Shows or replaces a file's header."},
        {"ramfs footer <name> [ <text> ]", handler(4, footer), "Shows or replaces a file's footer."},
        {"ramfs remove <name>", handler(3, removeNamed),
         "Removes the file of this name, or else all files whose names begin with it, or match it with any time for "
         "<date>."},
        {"ramfs remove number <ref>", handler(4, removeNumbered), "Removes all files with a number."},
        {"ramfs remove all", handler(3, removeAll), "Removes all files."},
        {"ramfs delayed-delete <ref>", handler(3, delayedDelete), "Removes a file the next time it is opened."},
        {"ramfs tee <name> <command>", handler(anyNumber, tee),
         "Runs a command, which takes the rest of the line, and keeps its answer in a new file."},
    };
}

} // namespace UnitShell
