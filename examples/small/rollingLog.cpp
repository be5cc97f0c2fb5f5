// SPDX-License-Identifier: MIT
// A log in memory that begins a new file when one is full, keeps the last three, and never overwrites one.
#include <cstddef>
#include <deque>
#include <iostream>
#include <memory>
#include <string>

#include <ramfs/fileManagerIf.h>

namespace {

using Corvane::RamFs::V1::FileHandleIf;
using Corvane::RamFs::V1::FileManagerIf;

class RollingLog
{
public:
    void write(const std::string& line)
    {
        if (m_files.empty() || m_files.back()->getFileSize() + line.size() + 1 > fileSize) {
            roll();
        }
        m_files.back()->append(line + "\n");
    }

    const std::deque<std::shared_ptr<FileHandleIf>>& files() const { return m_files; }

private:
    static constexpr unsigned int fileSize = 64;
    static constexpr std::size_t keptFiles = 3;

    void roll()
    {
        FileManagerIf& directory = FileManagerIf::getInstance();
        // "<date>" has seconds only. Without the counter, two files of one second would have the same name, and the
        // second would replace the first.
        m_files.push_back(directory.create("log_" + std::to_string(++m_counter) + "_<date>", fileSize, 0));
        if (m_files.size() > keptFiles) {
            directory.remove(m_files.front()->getFileName(), false);
            m_files.pop_front();
        }
    }

    unsigned int m_counter = 0;
    std::deque<std::shared_ptr<FileHandleIf>> m_files;
};

} // namespace

int main()
{
    RollingLog log;
    for (int number = 1; number <= 20; ++number) {
        log.write("measurement " + std::to_string(number));
    }
    for (const std::shared_ptr<FileHandleIf>& file : log.files()) {
        std::cout << file->getFileName() << " has " << file->getFileSize() << " bytes\n";
    }
}
