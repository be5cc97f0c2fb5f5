/// Where a write begins, for a position in each region. Every write writes one byte.
#include <iostream>
#include <string>

#include <ramfs/fileManagerIf.h>

using Corvane::RamFs::V1::FileHandleIf;
using Corvane::RamFs::V1::FileManagerIf;

static void writeAt(FileHandleIf& file, unsigned long position)
{
    file.setPos(position);
    file.write("x");
    std::cout << "position " << position << ": ";
    file.setPos(0);
    file.dump(std::cout);
}

int main()
{
    const auto file = FileManagerIf::getInstance().create("sample", 0, 0);
    const unsigned char footer[] = {'E', 'N', 'D', '\n'};
    file->write("abc");
    file->appendFooter(footer, sizeof footer);

    writeAt(*file, 1);   // in the content
    writeAt(*file, 5);   // in the footer
    writeAt(*file, 100); // past the end

    file->insertHeader("HDR:");
    file->setPos(0);
    file->write("A"); // in the header
    std::string content(5, '\0');
    file->setPos(4);
    file->read(reinterpret_cast<unsigned char*>(content.data()), 5);
    std::cout << "position 0, with a header: " << content << "\n";
}
