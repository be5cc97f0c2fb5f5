/// The file that the event-log process appends to: what is on disk when, and what a failing disk leads to.
#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "examples/elogEngine/entryFile.h"
#include "tests/support/runtimeFolder.h"

namespace {

using Corvane::Testing::RuntimeFolder;
using ElogEngine::EntryFile;
using testing::ElementsAre;
using testing::IsEmpty;

/// What the disk was asked to keep, in the place of the system's calls, and what it answers.
struct Disk
{
    std::vector<std::string> files;   // their contents
    std::vector<std::string> folders; // their paths
    int error = 0;
};

Disk* s_disk = nullptr;

std::string pathOf(int fd)
{
    return std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(fd));
}

std::string contentOf(const std::filesystem::path& path)
{
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

int answer()
{
    errno = s_disk->error;
    return s_disk->error == 0 ? 0 : -1;
}

class ElogEngineFile : public testing::Test
{
protected:
    ElogEngineFile() { s_disk = &m_disk; }
    ~ElogEngineFile() override { s_disk = nullptr; }
    ElogEngineFile(const ElogEngineFile&) = delete;
    ElogEngineFile& operator=(const ElogEngineFile&) = delete;

    const RuntimeFolder m_folder;
    const std::filesystem::path m_path = m_folder.path() / "log";
    Disk m_disk;
};

int errorOfAppending(EntryFile& file)
{
    try {
        file.append("a line\n");
    } catch (const std::system_error& error) {
        return error.code().value();
    }
    return 0;
}

TEST_F(ElogEngineFile, IsOnDiskWithItsName)
{
    const EntryFile file(m_path);
    EXPECT_THAT(m_disk.folders, ElementsAre(m_folder.path()));
}

TEST_F(ElogEngineFile, IsOnDiskWhereALinkToNothingYetLeads)
{
    std::filesystem::create_directory(m_folder.path() / "target");
    std::filesystem::create_symlink("target/log", m_path);
    const EntryFile file(m_path);
    EXPECT_THAT(m_disk.folders, ElementsAre(m_folder.path() / "target"));
    EXPECT_TRUE(std::filesystem::exists(m_folder.path() / "target" / "log"));
}

TEST_F(ElogEngineFile, HasLinesOnDiskWhenTheyAreAppended)
{
    EntryFile file(m_path);
    file.append("one\ntwo\n");
    EXPECT_THAT(m_disk.files, ElementsAre("one\ntwo\n"));
    file.append("three\n");
    EXPECT_THAT(m_disk.files, ElementsAre("one\ntwo\n", "one\ntwo\nthree\n"));
}

TEST_F(ElogEngineFile, EndsALastLineThatWasCutOff)
{
    std::ofstream(m_path) << "one\ntw";
    EntryFile(m_path).append("three\n");
    EXPECT_EQ(contentOf(m_path), "one\ntw\nthree\n");
    EntryFile(m_path).append("four\n");
    EXPECT_EQ(contentOf(m_path), "one\ntw\nthree\nfour\n");
}

TEST_F(ElogEngineFile, IsRefusedWhereItsNameCanNotBeOnDisk)
{
    m_disk.error = EIO;
    EXPECT_THROW(EntryFile{m_path}, std::system_error);
    EXPECT_THROW(EntryFile{m_folder.path() / "no" / "log"}, std::system_error);
    EXPECT_THROW(EntryFile{m_folder.path()}, std::system_error);
}

TEST_F(ElogEngineFile, ReportsLinesThatDoNotReachTheDisk)
{
    EntryFile file(m_path);
    for (const int error : {EIO, ENOSPC, EDQUOT}) {
        m_disk.error = error;
        EXPECT_EQ(errorOfAppending(file), error);
    }
    m_disk.error = 0;
    EXPECT_EQ(errorOfAppending(file), 0);
}

TEST_F(ElogEngineFile, ReportsLinesForWhichThereIsNoRoom)
{
    EntryFile file("/dev/full");
    EXPECT_EQ(errorOfAppending(file), ENOSPC);
    EXPECT_THAT(m_disk.files, IsEmpty());
}

TEST_F(ElogEngineFile, MayBeSomethingThatHasNoDisk)
{
    m_disk.error = EINVAL; // what the system says of a pipe
    std::array<int, 2> ends = {};
    ASSERT_EQ(pipe(ends.data()), 0);
    {
        m_disk.error = 0; // but its folder has one
        EntryFile file("/proc/self/fd/" + std::to_string(ends[1]));
        m_disk.error = EINVAL;
        EXPECT_EQ(errorOfAppending(file), 0);
    }
    std::string line(7, '\0');
    EXPECT_EQ(read(ends[0], line.data(), line.size()), 7);
    EXPECT_EQ(line, "a line\n");
    close(ends[0]);
    close(ends[1]);
}

} // namespace

// In the place of the system's: the program's own symbols come first.

extern "C" int fdatasync(int fd)
{
    s_disk->files.push_back(contentOf(pathOf(fd)));
    return answer();
}

extern "C" int fsync(int fd)
{
    s_disk->folders.push_back(pathOf(fd));
    return answer();
}
