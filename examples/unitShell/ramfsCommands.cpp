/// The command "ramfs": the in-memory files of this process.
///
/// Files are opened for one command each. "list" and "stat" look at all files at once instead: opening a file that is
/// marked for delayed deletion would take it out of the directory.
#include <algorithm>
#include <charconv>
#include <ctime>
#include <iomanip>
#include <limits>
#include <memory>
#include <optional>
#include <ostream>
#include <string>

#include <command/cmdTableHelperIf.h>
#include <ramfs/fileManagerIf.h>

#include "arguments.h"
#include "commands.h"
#include "textEscapes.h"

namespace UnitShell {

namespace {

using Corvane::RamFs::V1::FileHandleIf;
using Corvane::RamFs::V1::FileManagerIf;
using Words = std::vector<std::string>;
using Handle = std::shared_ptr<FileHandleIf>;

constexpr unsigned int largest = std::numeric_limits<unsigned int>::max();

FileManagerIf& files()
{
    return FileManagerIf::getInstance();
}

std::optional<unsigned int> readSize(const std::string& word, const char* what, std::ostream& out)
{
    return readWhole(word, what, 0, largest, out);
}

std::optional<int> readRef(const std::string& word, std::ostream& out)
{
    int ref = 0;
    const char* const end = word.c_str() + word.size();
    const auto [ptr, error] = std::from_chars(word.c_str(), end, ref);
    if (error != std::errc() || ptr != end) {
        out << "a file's number is a whole number, not '" << word << "'\n";
        return std::nullopt;
    }
    return ref;
}

/// Opens the file that the third word names. Says so and returns nothing if there is none, or if the line is too long.
Handle openFile(const Words& words, std::size_t mostWords, std::ostream& out)
{
    if (goesOn(words.size(), mostWords, out)) {
        return nullptr;
    }
    Handle file = files().open(words[2]);
    if (!file) {
        out << "there is no file '" << words[2] << "'\n";
    }
    return file;
}

int list(const Words& words, std::ostream& out)
{
    if (goesOn(words.size(), 2, out)) {
        return failed;
    }
    auto all = files().openAll(); // in no particular order
    std::sort(all.begin(), all.end(),
              [](const Handle& a, const Handle& b) { return a->getFileName() < b->getFileName(); });
    for (const Handle& file : all) {
        out << file->getFileName() << ": number " << file->getFileRef() << ", " << file->getFileSize() << " bytes\n";
    }
    if (all.empty()) {
        out << "no files\n";
    }
    return done;
}

int stat(const Words& words, std::ostream& out)
{
    if (goesOn(words.size(), 3, out)) {
        return failed;
    }
    for (const Handle& file : files().openAll()) {
        if (file->getFileName() == words[2]) {
            const std::time_t created = file->getCreationTime();
            std::tm local = {};
            localtime_r(&created, &local);
            out << words[2] << ": number " << file->getFileRef() << ", " << file->getFileSize() << " bytes, created "
                << std::put_time(&local, "%F %T") << ", " << file->getUserCount() << " owners\n";
            return done;
        }
    }
    out << "there is no file '" << words[2] << "'\n";
    return failed;
}

int create(const Words& words, std::ostream& out)
{
    unsigned int size = 0;
    int ref = 0;
    std::size_t next = 3;
    if (next + 1 < words.size() && words[next] == "size") {
        const auto given = readSize(words[next + 1], "a size", out);
        if (!given) {
            return failed;
        }
        size = *given;
        next += 2;
    }
    if (next + 1 < words.size() && words[next] == "number") {
        const auto given = readRef(words[next + 1], out);
        if (!given) {
            return failed;
        }
        ref = *given;
        next += 2;
    }
    if (goesOn(words.size(), next, out)) {
        return failed;
    }
    const Handle file = files().create(words[2], size, ref);
    if (!file) {
        out << "there is a file '" << words[2] << "' already\n";
        return failed;
    }
    out << file->getFileName() << ": number " << file->getFileRef() << "\n";
    return done;
}

int write(const Words& words, std::ostream& out)
{
    const bool hasPosition = words.size() > 5 && words[3] == "at";
    const auto position = hasPosition ? readSize(words[4], "a position", out) : 0;
    const Handle file = position ? openFile(words, hasPosition ? 6 : 4, out) : nullptr;
    if (!file) {
        return failed;
    }
    file->setPos(*position);
    out << file->write(unescape(words[hasPosition ? 5 : 3])) << " bytes written\n";
    return done;
}

int append(const Words& words, std::ostream& out)
{
    const Handle file = openFile(words, 4, out);
    if (!file) {
        return failed;
    }
    out << file->append(unescape(words[3])) << " bytes appended\n";
    return done;
}

int read(const Words& words, std::ostream& out)
{
    const auto position = words.size() > 3 ? readSize(words[3], "a position", out) : 0;
    const auto length = words.size() > 4 ? readSize(words[4], "a length", out) : largest;
    const Handle file = position && length ? openFile(words, 5, out) : nullptr;
    if (!file) {
        return failed;
    }
    file->setPos(*position);
    std::string bytes(std::min<std::size_t>(*length, file->getFileSize()), '\0');
    bytes.resize(file->read(reinterpret_cast<unsigned char*>(bytes.data()), static_cast<unsigned int>(bytes.size())));
    out << bytes << "\n";
    return done;
}

int dump(const Words& words, std::ostream& out)
{
    const Handle file = openFile(words, 3, out);
    if (!file) {
        return failed;
    }
    file->dump(out);
    return done;
}

int readable(const Words& words, std::ostream& out)
{
    const auto limit = readSize(words[3], "a limit", out);
    const Handle file = limit ? openFile(words, 4, out) : nullptr;
    if (!file) {
        return failed;
    }
    const bool isCut = file->readReadable(out, *limit) == largest;
    out << (isCut ? "...\n" : "\n");
    return done;
}

int header(const Words& words, std::ostream& out)
{
    const Handle file = openFile(words, 4, out);
    if (!file) {
        return failed;
    }
    if (words.size() == 4) {
        file->insertHeader(unescape(words[3]));
    } else {
        const auto bytes = file->readHeader();
        out << std::string(bytes.begin(), bytes.end()) << "\n";
    }
    return done;
}

int footer(const Words& words, std::ostream& out)
{
    const Handle file = openFile(words, 4, out);
    if (!file) {
        return failed;
    }
    if (words.size() == 4) {
        const std::string text = unescape(words[3]);
        file->appendFooter(reinterpret_cast<const unsigned char*>(text.data()), static_cast<unsigned int>(text.size()));
    } else {
        const auto bytes = file->readFooter();
        out << std::string(bytes.begin(), bytes.end()) << "\n";
    }
    return done;
}

int removeNamed(const Words& words, std::ostream& out)
{
    if (goesOn(words.size(), 3, out)) {
        return failed;
    }
    const bool removed = files().remove(words[2], out, true);
    out << "\n"; // the report has no line end
    return removed ? done : failed;
}

int removeNumbered(const Words& words, std::ostream& out)
{
    const auto ref = readRef(words[3], out);
    if (!ref || goesOn(words.size(), 4, out)) {
        return failed;
    }
    return files().remove(*ref, out, true) ? done : failed;
}

int removeAll(const Words& words, std::ostream& out)
{
    if (goesOn(words.size(), 3, out)) {
        return failed;
    }
    files().removeAll();
    return done;
}

int delayedDelete(const Words& words, std::ostream& out)
{
    const auto ref = readRef(words[2], out);
    if (!ref || goesOn(words.size(), 3, out)) {
        return failed;
    }
    if (!files().setDelayedDelete(*ref)) {
        out << "there is no file with the number " << *ref << "\n";
        return failed;
    }
    return done;
}

/// Runs the rest of the line and streams its answer into a new file.
int tee(const Words& words, std::ostream& out)
{
    if (words.size() > 4 && words[3] == "ramfs" && words[4] == "tee") { // a long line of them would need a deep stack
        out << "a tee can't run another one\n";
        return failed;
    }
    const auto buffer = files().getFileStreamBuf();
    if (!buffer->create(words[2], 0, 0)) {
        out << "there is a file '" << words[2] << "' already\n";
        return failed;
    }
    const Handle file = files().open(buffer->getFileName()); // now: the command may remove the file
    std::ostream stream(buffer.get());
    const int result = Corvane::CmdTableHelper::V2::CmdTableHelperIf::getInstance().executeCmd(
        Words(words.begin() + 3, words.end()), stream);
    buffer->close();
    std::string answer(file->getFileSize(), '\0');
    file->read(reinterpret_cast<unsigned char*>(answer.data()), static_cast<unsigned int>(answer.size()));
    out << answer;
    return result;
}

} // namespace

std::vector<Corvane::CmdTableHelper::CmdDefinitionCpp> ramfsTable()
{
    constexpr const char* escapes = R"(In <text> \n, \t, \\ and \x41 stand for bytes.)";
    return {
        {"ramfs list", list, "Shows all in-memory files."},
        {"ramfs stat <name>", stat,
         "Shows a file's number, size, creation time and owners: the directory, this command and the count itself are "
         "three."},
        {"ramfs create <name> [ size <bytes> ] [ number <ref> ]", create,
         "Creates a file. In its name <date> becomes the time.\nsize    reserves storage\nnumber  instead of the next "
         "automatic one"},
        {"ramfs write <name> [ at <position> ] <text>", write, escapes},
        {"ramfs append <name> <text>", append, escapes},
        {"ramfs read <name> [ <position> [ <length> ] ]", read, "Shows a file's bytes: header, content and footer."},
        {"ramfs dump <name>", dump, "Shows a file as text and hexadecimal digits."},
        {"ramfs readable <name> <limit>", readable, "The same, cut where the limit is near."},
        {"ramfs header <name> [ <text> ]", header, "Shows or replaces a file's header."},
        {"ramfs footer <name> [ <text> ]", footer, "Shows or replaces a file's footer."},
        {"ramfs remove <name>", removeNamed,
         "Removes a file, or else all whose names begin like that, or fit it with any time for <date>."},
        {"ramfs remove number <ref>", removeNumbered, "Removes all files with a number."},
        {"ramfs remove all", removeAll, "Removes all files."},
        {"ramfs delayed-delete <ref>", delayedDelete, "Removes a file when it is opened the next time."},
        {"ramfs tee <name> <command>", tee, "Runs a command, with its words, and keeps its answer in a new file."},
    };
}

} // namespace UnitShell
