/// The counted operations of the file system.
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include <ramfs/fileManagerIf.h>

#include "bench/instructions/operations.h"
#include "bench/sink.h"

using Corvane::RamFs::V1::FileHandleIf;
using Corvane::RamFs::V1::FileManagerIf;

namespace {

void countHandle(FileManagerIf& files)
{
    unsigned char bytes[64] = {};
    const auto handle = files.create("file", 65536, 1);
    handle->append(bytes, sizeof bytes);
    Corvane::Bench::count("setPos", [&] { handle->setPos(0); });
    Corvane::Bench::count("setPos-write", [&] {
        handle->setPos(0);
        handle->write(bytes, 16);
    });
    Corvane::Bench::count("setPos-read", [&] {
        handle->setPos(0);
        handle->read(bytes, 16);
    });
    const auto reserved = files.create("reserved", 65536, 2);
    Corvane::Bench::count("append-reserved", [&] { reserved->append(bytes, sizeof bytes); });
}

void countDirectory(FileManagerIf& files)
{
    for (int i = 0; i < 100; ++i) { // a small directory is searched without its hash table
        files.create("other" + std::to_string(i), 0, 0);
    }
    const std::string name = "file";
    Corvane::Bench::count("exists", [&] { files.exists(name); });
    Corvane::Bench::count("open", [&] { files.open(name); });
    // Each call has a new file.
    std::vector<std::string> names;
    for (int i = 0; i < 210; ++i) {
        names.push_back("new" + std::to_string(i));
    }
    auto created = names.begin();
    Corvane::Bench::count("create", [&] { files.create(*created++, 0, 4); });
    std::vector<std::shared_ptr<FileHandleIf>> handles;
    for (const std::string& one : names) {
        handles.push_back(files.open(one));
    }
    auto grown = handles.begin();
    const std::string record(64, 'x');
    Corvane::Bench::count("append-growing", [&] { (*grown++)->append(record.data(), 64); });
    handles.clear();
    auto removed = names.begin();
    Corvane::Bench::count("remove", [&] { files.remove(*removed++, false); });
}

void countStreams(FileManagerIf& files)
{
    const auto buffer = files.getFileStreamBuf();
    buffer->create("stream", 65536, 5);
    std::ostream out(buffer.get());
    const std::string line = std::string(64, 'x') + "\n";
    Corvane::Bench::count("line-flush", [&] { out << line << std::flush; });
    Corvane::Bench::Sink sink;
    std::ostream readable(&sink);
    const auto text = files.create("text", 0, 6);
    text->write(std::string(1000, 'x'));
    Corvane::Bench::count("dump-text", [&] {
        text->setPos(0);
        text->dump(readable);
    });
    const auto binary = files.create("binary", 0, 7);
    binary->write(std::string(1000, '\0'));
    Corvane::Bench::count("dump-hexadecimal", [&] {
        binary->setPos(0);
        binary->dump(readable);
    });
}

} // namespace

void Corvane::Bench::countRamfs()
{
    FileManagerIf& files = FileManagerIf::getInstance();
    countHandle(files);
    countDirectory(files);
    countStreams(files);
}
