/// What surprises users of in-memory files.
#include <iostream>
#include <memory>
#include <ostream>

#include <ramfs/fileManagerIf.h>

using Corvane::RamFs::V1::FileManagerIf;

static void removeByBeginning(FileManagerIf& files)
{
    files.create("log_1", 0, 0);
    files.create("log_2", 0, 0);
    files.remove("log", false); // there is no file "log"
    std::cout << "files left: " << files.openAll().size() << "\n";
}

static void numbersGoOn(FileManagerIf& files)
{
    files.removeAll();
    std::cout << "next number: " << files.create("a", 0, 0)->getFileRef() << "\n";
}

static void textWaits(FileManagerIf& files)
{
    const auto buffer = files.getFileStreamBuf();
    buffer->create("stream", 0, 0);
    std::ostream out(buffer.get());
    out << "text";
    std::cout << "before the flush: " << files.open("stream")->getFileSize() << " bytes\n";
    out << std::flush;
    std::cout << "after the flush: " << files.open("stream")->getFileSize() << " bytes\n";
}

int main()
{
    FileManagerIf& files = FileManagerIf::getInstance();
    removeByBeginning(files);
    numbersGoOn(files);
    textWaits(files);
}
