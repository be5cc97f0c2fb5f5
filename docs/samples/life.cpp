/// A file that is removed while it is open, and one that is marked for deletion.
#include <iostream>

#include <ramfs/fileManagerIf.h>

using Corvane::RamFs::V1::FileManagerIf;

int main()
{
    FileManagerIf& files = FileManagerIf::getInstance();
    std::cout << std::boolalpha;

    auto report = files.create("report", 0, 0);
    files.remove("report", false);
    std::cout << "listed: " << files.exists("report") << "\n";
    report->write("still here\n");
    report->setPos(0);
    report->dump(std::cout);
    files.close(report); // the last handle: now the memory is freed

    auto once = files.create("once", 0, 0);
    files.setDelayedDelete(once->getFileRef());
    std::cout << "listed: " << files.exists("once") << "\n";
    const auto last = files.open("once");
    std::cout << "opened: " << (last != nullptr) << ", listed: " << files.exists("once") << "\n";
    std::cout << "opened again: " << (files.open("once") != nullptr) << "\n";
}
