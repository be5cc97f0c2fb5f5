/// Directories and files that grow, and the operations on them.
#include <algorithm>
#include <ostream>
#include <streambuf>

#include "ramfs/src/fileManagerImpl.h"
#include "ramfs/src/fileStreamBufImpl.h"
#include "tests/bounds/family.h"

namespace {

using Corvane::RamFs::V1::FileHandleIf;
using Corvane::RamFs::V1::FileManagerIf;
using Corvane::RamFs::V1::FileManagerImpl;
using Corvane::Testing::Cost;
using Corvane::Testing::costOf;
using Bytes = std::vector<unsigned char>;

class NullBuffer : public std::streambuf
{
    std::streamsize xsputn(const char* /*text*/, std::streamsize size) override { return size; }
    int overflow(int c) override { return c; }
};

std::string nameOf(std::size_t i)
{
    return "file" + std::to_string(i);
}

/// Counts `operation` on a directory of n files, whose numbers are 1 to n.
template <typename Operation>
Cost onDirectory(std::size_t n, const Operation& operation)
{
    FileManagerImpl directory;
    for (std::size_t i = 1; i <= n; ++i) {
        directory.create(nameOf(i), 0, 0);
    }
    return costOf([&] { operation(directory); });
}

/// Counts `operation` on a file with a content of n bytes.
template <typename Operation>
Cost onFile(std::size_t n, const Operation& operation)
{
    FileManagerImpl directory;
    const auto file = directory.create("file", 0, 0);
    file->append(std::string(n, 'x'));
    file->setPos(0);
    return costOf([&] { operation(*file); });
}

Cost creation(std::size_t n)
{
    FileManagerImpl directory;
    return costOf([&] {
        for (std::size_t i = 1; i <= n; ++i) {
            directory.create(nameOf(i), 0, 0);
        }
    });
}

Cost appends(std::size_t n)
{
    return onFile(0, [n](FileHandleIf& file) {
        const Bytes bytes(16, 'x');
        for (std::size_t i = 0; i < n; ++i) {
            file.append(bytes.data(), 16);
        }
    });
}

Cost streamed(std::size_t n, std::size_t charactersInALine)
{
    FileManagerIf::getInstance().removeAll();
    Corvane::RamFs::V1::FileStreamBufImpl buffer;
    buffer.create("file", 0, 0);
    std::ostream out(&buffer);
    return costOf([&] {
        for (std::size_t i = 1; i <= n; ++i) {
            out.put('x');
            if (i % charactersInALine == 0) {
                out.flush();
            }
        }
    });
}

std::vector<Corvane::Testing::Family> directoryFamilies()
{
    using Corvane::Testing::Law;
    return {
        {"files", "create n files", 500, Law::linear, Law::linear, creation},
        {"open by name", "open one of n files by its name", 500, Law::constant, Law::constant,
         [](std::size_t n) { return onDirectory(n, [n](auto& directory) { directory.open(nameOf(n)); }); }},
        {"exists by name", "look for one of n files by its name", 500, Law::constant, Law::constant,
         [](std::size_t n) { return onDirectory(n, [n](auto& directory) { directory.exists(nameOf(n)); }); }},
        {"remove by name", "remove one of n files by its name", 500, Law::constant, Law::constant,
         [](std::size_t n) { return onDirectory(n, [n](auto& directory) { directory.remove(nameOf(n), false); }); }},
        {"open by number", "open a number that none of n files has", 500, Law::linear, Law::constant,
         [](std::size_t n) { return onDirectory(n, [](auto& directory) { directory.open(-1); }); }},
        {"remove by number", "remove a number that none of n files has", 500, Law::linear, Law::constant,
         [](std::size_t n) { return onDirectory(n, [](auto& directory) { directory.remove(-1, false); }); }},
        {"remove by pattern", "remove n files by the start of their names", 500, Law::linear, Law::linear,
         [](std::size_t n) { return onDirectory(n, [](auto& directory) { directory.remove("fi", false); }); }},
        {"remove all", "remove n files", 500, Law::linear, Law::linear,
         [](std::size_t n) { return onDirectory(n, [](auto& directory) { directory.removeAll(); }); }},
        {"open all", "open n files at once", 500, Law::linear, Law::linear,
         [](std::size_t n) { return onDirectory(n, [](auto& directory) { directory.openAll(); }); }},
    };
}

} // namespace

std::vector<Corvane::Testing::Family> Corvane::Testing::fileFamilies()
{
    std::vector<Family> families = directoryFamilies();
    const std::vector<Family> ofContents = {
        {"appends", "append 16 bytes to a file n times", 1000, Law::linear, Law::linear, appends},
        {"long append", "append n bytes", 4000, Law::constant, Law::linear,
         [](std::size_t n) {
             return onFile(0, [text = std::string(n, 'x')](FileHandleIf& file) { file.append(text); });
         }},
        {"writes", "write 16 bytes n times over each other", 1000, Law::linear, Law::constant,
         [](std::size_t n) {
             return onFile(1000, [n, bytes = Bytes(16, 'x')](FileHandleIf& file) {
                 for (std::size_t i = 0; i < n; ++i) {
                     file.setPos(0);
                     file.write(bytes.data(), 16);
                 }
             });
         }},
        {"long read", "read n bytes", 4000, Law::constant, Law::constant,
         [](std::size_t n) {
             Bytes bytes(n);
             return onFile(n, [&](FileHandleIf& file) { file.read(bytes.data(), static_cast<unsigned int>(n)); });
         }},
        {"dump", "dump n bytes", 1000, Law::linear, Law::constant,
         [](std::size_t n) {
             NullBuffer buffer;
             std::ostream out(&buffer);
             return onFile(n, [&](FileHandleIf& file) { file.dump(out); });
         }},
        {"header", "replace a header of n bytes", 4000, Law::constant, Law::linear,
         [](std::size_t n) {
             return onFile(0, [text = std::string(n, 'x')](FileHandleIf& file) { file.insertHeader(text); });
         }},
        {"stream", "stream n characters and flush them once", 4096, Law::linear, Law::linear,
         [](std::size_t n) { return streamed(n, n); }},
        {"streamed lines", "stream n characters and flush each line of 64", 16384, Law::linear, Law::linear,
         [](std::size_t n) { return streamed(n, 64); }},
    };
    families.insert(families.end(), ofContents.begin(), ofContents.end());
    return families;
}
