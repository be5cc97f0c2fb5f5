// SPDX-License-Identifier: MIT
// Writes a report into an in-memory file with a std::ostream, finds the file by its number and reads it back.
#include <array>
#include <iomanip>
#include <iostream>
#include <memory>
#include <string>

#include <ramfs/fileManagerIf.h>

namespace {

using Corvane::RamFs::V1::FileHandleIf;
using Corvane::RamFs::V1::FileManagerIf;
using Corvane::RamFs::V1::FileStreamBufIf;

/// Any code that writes to a std::ostream can write into a file.
void report(std::ostream& out)
{
    out << "carrier  dBm\n";
    for (int carrier = 1; carrier <= 3; ++carrier) {
        out << std::setw(7) << carrier << std::setw(5) << 40 + carrier << "\n";
    }
}

/// Returns  the number of the new file; 0 if its name is taken.
int writeReport()
{
    const std::shared_ptr<FileStreamBufIf> buffer = FileManagerIf::getInstance().getFileStreamBuf();
    if (!buffer->create("report", 0, 0)) {
        return 0;
    }
    std::ostream file(buffer.get());
    report(file);
    file << std::flush; // until here the text waits in the buffer
    return buffer->getFileRef();
}

std::string readAll(FileHandleIf& file)
{
    std::string all;
    std::array<unsigned char, 64> part{};
    while (const unsigned int length = file.read(part.data(), part.size())) {
        all.append(part.begin(), part.begin() + length);
    }
    return all;
}

} // namespace

int main()
{
    const int number = writeReport();
    if (const std::shared_ptr<FileHandleIf> file = FileManagerIf::getInstance().open(number)) {
        std::cout << "file " << number << " is '" << file->getFileName() << "' and has " << file->getFileSize()
                  << " bytes:\n"
                  << readAll(*file);
    }
    std::cout << (writeReport() == 0 ? "the name is taken\n" : "written again\n");
}
