/// An application that calls every operation that emits an event through the exported headers. Exits with 0 if all of
/// them return what they should.
#include <iostream>
#include <ostream>
#include <sstream>
#include <string>

#include <ramfs/fileHandleIf.h>
#include <ramfs/fileManagerIf.h>
#include <ramfs/fileStreamBufIf.h>

namespace {

using Corvane::RamFs::V1::FileHandleIf;
using Corvane::RamFs::V1::FileManagerIf;

bool good = true;

void expect(bool condition, const char* what)
{
    if (!condition) {
        std::cerr << "not as expected: " << what << "\n";
        good = false;
    }
}

void useHandle(FileHandleIf& file)
{
    const auto* const bytes = reinterpret_cast<const unsigned char*>("0123456789");
    std::ostringstream out;
    expect(file.write(bytes, 10) == 10, "write of bytes");
    file.setPos(100);
    expect(file.write("ab", 2) == 2, "write of characters");
    file.insertHeader(std::string("HDR:"));
    file.insertHeader(bytes, 4);
    file.appendFooter(bytes, 3);
    file.setPos(0);
    expect(file.write(std::string("c")) == 1, "write of a string");
    expect(file.append(bytes, 1) == 1, "append of bytes");
    expect(file.append("b", 1) == 1, "append of characters");
    expect(file.append(std::string("c")) == 1, "append of a string");
    expect(file.readHeader().size() == 4, "readHeader");
    expect(file.readFooter().size() == 3, "readFooter");
    expect(file.contentResize(100), "contentResize that grows");
    expect(!file.contentResize(50), "contentResize that does not");
    expect(file.getCreationTime() > 0, "getCreationTime");
    file.setPos(0);
    expect(file.dump(out) == 23, "dump");
    expect(out.str() == "0123633132333435363738396162306263012\n", "text of the dump");
}

} // namespace

int main()
{
    FileManagerIf& manager = FileManagerIf::getInstance();
    std::ostringstream out;
    auto file = manager.create("log", 0, 0);
    expect(manager.create("log", 5, 9) == nullptr, "create of a name that is taken");
    useHandle(*file);
    expect(manager.open("log") != nullptr, "open by name");
    expect(manager.open(1) != nullptr, "open by number");
    expect(manager.openAll().size() == 1, "openAll");
    expect(manager.setDelayedDelete(1), "setDelayedDelete");
    expect(manager.remove("lo", out, true), "remove by name");
    expect(!manager.remove(1, false), "remove by number");
    const auto buffer = manager.getFileStreamBuf();
    expect(buffer->create("stream", 10, -2), "create of a stream buffer");
    std::ostream(buffer.get()) << "text" << std::flush;
    expect(!buffer->open(7), "open of a stream buffer");
    manager.removeAll();
    manager.close(file);
    expect(file == nullptr, "close");
    return good ? 0 : 1;
}
