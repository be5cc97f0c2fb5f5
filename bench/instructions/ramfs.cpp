/// The counted operations of the file system.
#include <ramfs/fileManagerIf.h>

#include "bench/instructions/operations.h"

using Corvane::RamFs::V1::FileManagerIf;

void Corvane::Bench::countRamfs()
{
    FileManagerIf& files = FileManagerIf::getInstance();
    files.create("file", 0, 1);
    count("exists", [&] { files.exists("file"); });
}
