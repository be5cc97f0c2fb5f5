/// File handles: the position, the forms of each operation, and which of them go through the virtual table.
#include <ctime>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/ramfs/ramfsTestSupport.h"

namespace Corvane::RamFs::V1 {
namespace {

using Access = FileHandleTestAccess;

class FileHandleTest : public testing::Test
{
protected:
    unsigned int pos() const { return Access::pos(handle); }

    std::shared_ptr<FileEntry> entry = FileEntry::create(3, 0);
    FileHandleImpl handle{"log", entry};
};

TEST_F(FileHandleTest, ANewHandleKnowsItsFile)
{
    EXPECT_EQ(handle.getFileName(), "log");
    EXPECT_EQ(handle.getFileRef(), 3);
    EXPECT_EQ(handle.getFileSize(), 0U);
    EXPECT_EQ(handle.getCreationTime(), entry->getCreationTime());
    EXPECT_EQ(pos(), 0U);
}

TEST_F(FileHandleTest, SetPosStopsAtTheFileSize)
{
    handle.write("0123456789");
    handle.setPos(4);
    EXPECT_EQ(pos(), 4U);
    handle.setPos(1000);
    EXPECT_EQ(pos(), 10U);
    unsigned char byte = 0;
    EXPECT_EQ(handle.read(&byte, 1), 0U);
    handle.setPos(0x100000002UL);
    EXPECT_EQ(pos(), 10U);
}

TEST_F(FileHandleTest, EveryFormOfWriteWritesAtThePosition)
{
    EXPECT_EQ(handle.write(bytes("abc"), 3), 3U);
    EXPECT_EQ(handle.write("defgh", 2), 2U);
    EXPECT_EQ(handle.write(std::string("\0\xFF", 2)), 2U);
    EXPECT_EQ(wholeFile(handle), std::string("abcde\0\xFF", 7));
    EXPECT_EQ(pos(), 7U);
}

TEST_F(FileHandleTest, EveryFormOfAppendIgnoresThePositionAndMovesIt)
{
    handle.write("abc");
    handle.setPos(0);
    EXPECT_EQ(handle.append(bytes("d"), 1), 1U);
    EXPECT_EQ(pos(), 4U);
    handle.setPos(0);
    EXPECT_EQ(handle.append("efgh", 2), 2U);
    EXPECT_EQ(pos(), 6U);
    handle.setPos(0);
    EXPECT_EQ(handle.append(std::string("g")), 1U);
    EXPECT_EQ(pos(), 7U);
    EXPECT_EQ(wholeFile(handle), "abcdefg");
}

TEST_F(FileHandleTest, NullDataIsNotWritten)
{
    handle.write("abc");
    handle.appendFooter(bytes("END"), 3);
    handle.setPos(1);
    EXPECT_EQ(handle.write(static_cast<const unsigned char*>(nullptr), 4), 0U);
    EXPECT_EQ(handle.write(static_cast<const char*>(nullptr), 4), 0U);
    EXPECT_EQ(pos(), 1U);
    EXPECT_EQ(handle.append(static_cast<const char*>(nullptr), 4), 0U);
    EXPECT_EQ(pos(), 6U); // the end of the file
    handle.setPos(1);
    EXPECT_EQ(handle.append(static_cast<const unsigned char*>(nullptr), 4), 0U);
    EXPECT_EQ(pos(), 6U);
    EXPECT_EQ(wholeFile(handle), "abcEND");
}

TEST_F(FileHandleTest, ReplacingHeaderAndFooterKeepsThePosition)
{
    handle.write("abcdef");
    handle.setPos(2);
    handle.insertHeader(bytes("HD"), 2);
    EXPECT_EQ(pos(), 2U);
    EXPECT_EQ(readText(handle, 2), "ab"); // what the position designates has shifted
    handle.insertHeader(std::string("H\0R", 3));
    handle.appendFooter(bytes("END"), 3);
    EXPECT_EQ(pos(), 4U);
    EXPECT_EQ(handle.readHeader(), (std::vector<unsigned char>{'H', 0, 'R'}));
    EXPECT_EQ(textOf(handle.readFooter()), "END");
    EXPECT_EQ(pos(), 4U);
    EXPECT_EQ(handle.getFileSize(), 12U);
}

/// Records the calls of the operations with bytes, and those that a dump makes.
class CountingHandle : public FileHandleImpl
{
public:
    using FileHandleImpl::append;
    using FileHandleImpl::FileHandleImpl;
    using FileHandleImpl::write;

    unsigned int write(const unsigned char* data, unsigned int length) override
    {
        calls.push_back("write " + std::to_string(length));
        return FileHandleImpl::write(data, length);
    }
    unsigned int append(const unsigned char* data, unsigned int length) override
    {
        calls.push_back("append " + std::to_string(length));
        return FileHandleImpl::append(data, length);
    }
    unsigned int read(unsigned char* buffer, unsigned int length) override
    {
        calls.push_back("read " + std::to_string(length));
        return FileHandleImpl::read(buffer, length);
    }
    std::vector<unsigned char> readHeader() override
    {
        calls.emplace_back("readHeader");
        return FileHandleImpl::readHeader();
    }
    std::vector<unsigned char> readFooter() override
    {
        calls.emplace_back("readFooter");
        return FileHandleImpl::readFooter();
    }

    std::vector<std::string> calls;
};

TEST_F(FileHandleTest, TextFormsCallTheFormWithBytesExceptAppendByString)
{
    CountingHandle counting("log", entry);
    counting.write("ab", 2);
    counting.write(std::string("cde"));
    counting.append("fghi", 4);
    counting.append(std::string("jklmn"));
    EXPECT_THAT(counting.calls, testing::ElementsAre("write 2", "write 3", "append 4"));
    EXPECT_EQ(wholeFile(counting), "abcdefghijklmn");
}

TEST_F(FileHandleTest, ADumpReadsHeaderAndFooterAndThenByteByByte)
{
    handle.write("ab");
    CountingHandle counting("log", entry);
    std::ostringstream out;
    counting.dump(out);
    EXPECT_THAT(counting.calls, testing::ElementsAre("readHeader", "readFooter", "read 1", "read 1", "read 1"));
}

} // namespace
} // namespace Corvane::RamFs::V1
