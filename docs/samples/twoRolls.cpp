/// Two files of one second: without and with a counter in their names.
#include <iostream>
#include <string>

#include <ramfs/fileManagerIf.h>

using Corvane::RamFs::V1::FileManagerIf;

int main()
{
    FileManagerIf& files = FileManagerIf::getInstance();
    std::string first;
    std::string second;
    do { // again, if a new second has begun between the two
        files.removeAll();
        first = files.create("log_<date>", 0, 0)->getFileName();
        second = files.create("log_<date>", 0, 0)->getFileName();
    } while (first != second);
    std::cout << first << "\n" << second << "\n";
    std::cout << "without a counter: " << files.openAll().size() << " file\n";

    files.removeAll();
    std::cout << files.create("log_<date>_1", 0, 0)->getFileName() << "\n";
    std::cout << files.create("log_<date>_2", 0, 0)->getFileName() << "\n";
    std::cout << "with a counter: " << files.openAll().size() << " files\n";
}
