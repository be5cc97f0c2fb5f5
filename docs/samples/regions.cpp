/// Header, content and footer of a file.
#include <iostream>

#include <ramfs/fileManagerIf.h>

using Corvane::RamFs::V1::FileManagerIf;

int main()
{
    const auto file = FileManagerIf::getInstance().create("sample", 0, 0);
    const unsigned char content[] = {0x01, 0x41, 0xFF};
    const unsigned char footer[] = {'E', 'N', 'D', '\n'};
    file->insertHeader("HDR:");
    file->write(content, sizeof content);
    file->appendFooter(footer, sizeof footer);

    std::cout << "size " << file->getFileSize() << "\n";
    file->setPos(0);
    file->dump(std::cout);
}
