/// File entries: where writing lands, how storage grows, and what the diagnostic texts say.
#include <ctime>

#include <sys/resource.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/ramfs/ramfsTestSupport.h"
#include "tests/support/emulation.h"

namespace Corvane::RamFs::V1 {
namespace {

using Access = FileEntryTestAccess;

const std::string toStart = " can't update header, Move the offset to the start of the content \n";
const std::string toEnd = " can't update header, Move the offset to the end of the content \n";

class FileEntryTest : public testing::Test
{
protected:
    FileEntry::WriteResult write(unsigned int at, const std::string& text)
    {
        pos = at;
        return entry->write(pos, bytes(text.data()), static_cast<unsigned int>(text.size()));
    }
    FileEntry::AppendResult append(const std::string& text)
    {
        return entry->append(bytes(text.data()), static_cast<unsigned int>(text.size()));
    }
    std::string read(unsigned int at, unsigned int length)
    {
        pos = at;
        std::vector<unsigned char> buffer(length);
        buffer.resize(entry->read(pos, buffer.data(), length));
        return textOf(buffer);
    }
    void setHeader(const std::string& text)
    {
        entry->insertHeader(bytes(text.data()), static_cast<unsigned int>(text.size()));
    }
    void setFooter(const std::string& text)
    {
        entry->appendFooter(bytes(text.data()), static_cast<unsigned int>(text.size()));
    }

    std::shared_ptr<FileEntry> entry = FileEntry::create(3, 0);
    unsigned int pos = 0;
};

TEST_F(FileEntryTest, ANewEntryIsEmptyWithZeroFilledStorage)
{
    const std::time_t before = std::time(nullptr);
    const auto created = FileEntry::create(-7, 5);
    const std::time_t after = std::time(nullptr);
    EXPECT_EQ(created->getFileRef(), -7);
    EXPECT_EQ(created->getFileSize(), 0U);
    EXPECT_EQ(Access::content(*created), std::string(5, 0));
    EXPECT_TRUE(created->readHeader().empty());
    EXPECT_TRUE(created->readFooter().empty());
    EXPECT_FALSE(created->getDelayedDelete());
    EXPECT_GE(created->getCreationTime(), before);
    EXPECT_LE(created->getCreationTime(), after);
}

TEST_F(FileEntryTest, TheFirstWriteGrowsTheStorageByTenPercentBeyondNeed)
{
    const auto result = write(0, "0123456789");
    EXPECT_EQ(result.bytesWritten, 10U);
    EXPECT_EQ(result.text, "3 FileEntry::lockFreeWrite() extending file vector to 11 bytes");
    EXPECT_EQ(Access::contentSize(*entry), 10U);
    EXPECT_EQ(Access::storage(*entry), 11U);
    EXPECT_EQ(pos, 10U);
}

TEST_F(FileEntryTest, OneByteMoreThanAHundredGrowsTheStorageToAHundredAndEleven)
{
    entry = FileEntry::create(3, 100);
    EXPECT_EQ(write(0, std::string(100, 'x')).text, "3");
    EXPECT_EQ(write(100, "y").text, "3 FileEntry::lockFreeWrite() extending file vector to 111 bytes");
    EXPECT_EQ(Access::storage(*entry), 111U);
}

TEST_F(FileEntryTest, StorageBeyondTheContentStaysZero)
{
    write(0, std::string(100, 'x'));
    EXPECT_EQ(Access::content(*entry), std::string(100, 'x') + std::string(10, 0));
}

/// Appends 64 MiB.
///
/// Returns  the largest memory that the process needed for it, divided by the size of the file.
double peakOfGrowth(FileEntry& entry)
{
    const std::string block(64 * 1024, 'x');
    const auto peak = [] {
        rusage usage{};
        ::getrusage(RUSAGE_SELF, &usage);
        return static_cast<double>(usage.ru_maxrss) * 1024;
    };
    const double before = peak();
    for (int count = 0; count < 1024; ++count) {
        entry.append(bytes(block.data()), static_cast<unsigned int>(block.size()));
    }
    return (peak() - before) / static_cast<double>(entry.getFileSize());
}

TEST_F(FileEntryTest, AContentThatGrowsIsNotCopied)
{
#ifdef CORVANE_TEST_SANITIZED
    GTEST_SKIP() << "a sanitizer takes memory of its own";
#endif
    EXPECT_LE(peakOfGrowth(*entry), 1.25);
}

TEST_F(FileEntryTest, AWriteOfNothingInsideTheContentChangesNothing)
{
    write(0, "abcdef");
    const auto result = write(2, "");
    EXPECT_EQ(result.bytesWritten, 0U);
    EXPECT_EQ(result.text, "3");
    EXPECT_EQ(pos, 2U);
    EXPECT_EQ(wholeFile(*entry), "abcdef");
}

TEST_F(FileEntryTest, AWriteInTheHeaderMovesToTheStartOfTheContent)
{
    setHeader("HDR:");
    const auto result = write(0, "abc");
    EXPECT_EQ(result.bytesWritten, 3U);
    EXPECT_EQ(result.text, "3" + toStart + " FileEntry::lockFreeWrite() extending file vector to 3 bytes");
    EXPECT_EQ(pos, 7U);
    EXPECT_EQ(wholeFile(*entry), "HDR:abc");
}

TEST_F(FileEntryTest, AWriteInTheFooterMovesToTheEndOfTheContent)
{
    write(0, "abc");
    setFooter("END");
    const auto result = write(6, "de");
    EXPECT_EQ(result.bytesWritten, 2U);
    EXPECT_EQ(result.text, "3" + toEnd + " FileEntry::lockFreeWrite() extending file vector to 5 bytes");
    EXPECT_EQ(pos, 5U);
    EXPECT_EQ(wholeFile(*entry), "abcdeEND");
}

TEST_F(FileEntryTest, AWriteOfNothingStillCorrectsThePosition)
{
    setHeader("HDR:");
    EXPECT_EQ(write(1, "").text, "3" + toStart);
    EXPECT_EQ(pos, 4U);
    EXPECT_EQ(write(9, "").text, "3" + toEnd);
    EXPECT_EQ(pos, 4U);
}

TEST_F(FileEntryTest, NullDataIsNotWrittenAndKeepsThePosition)
{
    setHeader("HDR:");
    pos = 1;
    const auto result = entry->write(pos, nullptr, 5);
    EXPECT_EQ(result.bytesWritten, 0U);
    EXPECT_EQ(result.text, "3 p_buffer is empty");
    EXPECT_EQ(pos, 1U);
    EXPECT_EQ(entry->write(pos, nullptr, 0).text, "3 p_buffer is empty");
}

TEST_F(FileEntryTest, AnAppendBeforeAFooterAlwaysCarriesTheNote)
{
    setHeader("H");
    append("abc");
    setFooter("END");
    const auto result = append("d");
    EXPECT_EQ(result.position, 5U);
    EXPECT_EQ(result.text, "3" + toEnd + " FileEntry::lockFreeWrite() extending file vector to 4 bytes");
    EXPECT_EQ(append("").text, "3" + toEnd);
    EXPECT_EQ(wholeFile(*entry), "HabcdEND");
}

TEST_F(FileEntryTest, AnAppendOfNullReturnsTheEndOfTheFile)
{
    append("abc");
    setFooter("END");
    const auto result = entry->append(nullptr, 4);
    EXPECT_EQ(result.position, 6U);
    EXPECT_EQ(result.bytesWritten, 0U);
    EXPECT_EQ(result.text, "3 p_buffer is empty");
}

TEST_F(FileEntryTest, AReadCrossesAllThreeRegions)
{
    setHeader("HDR:");
    write(4, "content");
    setFooter("END");
    EXPECT_EQ(read(0, 100), "HDR:contentEND");
    EXPECT_EQ(pos, 14U);
    EXPECT_EQ(read(2, 4), "R:co");
    EXPECT_EQ(pos, 6U);
    EXPECT_EQ(read(10, 2), "tE");
    EXPECT_EQ(read(4, 7), "content");
    EXPECT_EQ(read(13, 1), "D");
    for (unsigned int at = 0; at <= 14; ++at) {
        for (unsigned int length = 0; length <= 15; ++length) {
            ASSERT_EQ(read(at, length), std::string("HDR:contentEND").substr(at, length)) << at << " " << length;
        }
    }
}

TEST_F(FileEntryTest, LengthZeroRemovesHeaderAndFooter)
{
    setHeader("HDR:");
    write(4, "abc");
    setFooter("END");
    setHeader("");
    EXPECT_EQ(read(0, 100), "abcEND");
    entry->appendFooter(nullptr, 0);
    EXPECT_EQ(read(0, 100), "abc");
}

TEST_F(FileEntryTest, ResizingReservesAndNeverShrinks)
{
    entry = FileEntry::create(3, 100);
    write(0, "abc");
    EXPECT_FALSE(entry->contentResize(50));
    EXPECT_FALSE(entry->contentResize(100));
    EXPECT_EQ(Access::storage(*entry), 100U);
    EXPECT_TRUE(entry->contentResize(200));
    EXPECT_EQ(Access::storage(*entry), 200U);
    EXPECT_EQ(entry->getFileSize(), 3U);
    EXPECT_EQ(write(3, std::string(197, 'x')).text, "3");
}

TEST_F(FileEntryTest, TheUserCountIncludesTheCallItself)
{
    EXPECT_EQ(entry->getUserCount(), 2U);
    const auto second = entry->getPtr();
    EXPECT_EQ(second, entry);
    EXPECT_EQ(entry->getUserCount(), 3U);
}

TEST(FileEntryDeathTest, AnEntryWithoutAnOwnerHasNoneToShare)
{
    GTEST_FLAG_SET(death_test_style, Corvane::Testing::deathTestStyle());
    EXPECT_DEATH(FileEntry(1, 0).getPtr(), "");
    EXPECT_DEATH(static_cast<void>(FileEntry(1, 0).getUserCount()), "");
}

} // namespace
} // namespace Corvane::RamFs::V1
