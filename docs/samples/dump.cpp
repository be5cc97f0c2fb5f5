#include <iostream>

#include <ramfs/fileManagerIf.h>

using Corvane::RamFs::V1::FileManagerIf;

int main()
{
    const auto file = FileManagerIf::getInstance().create("carrier", 0, 0);
    const unsigned char state[] = {0x01, 0x41, 0xFF};
    const unsigned char end[] = {' ', 'e', 'n', 'd', '\n'};
    file->insertHeader("carrier 3: ");
    file->write(state, sizeof state);
    file->appendFooter(end, sizeof end);
    file->setPos(0); // the write has moved the position behind the content
    file->dump(std::cout);
}
