/// Files and positions at 4294967295 bytes and past them. Most contents only pretend to be that large.
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <stdexcept>

#include <gtest/gtest.h>

#include "tests/ramfs/ramfsTestSupport.h"

namespace Corvane::RamFs::V1 {
namespace {

using Access = FileEntryTestAccess;

constexpr unsigned int limit = UINT32_MAX;
const std::string refused = "3 content can't exceed 4294967295 bytes";

class FileLimitsTest : public testing::Test
{
protected:
    /// The content pretends to have `size` bytes; only the first 100 are there.
    void pretend(unsigned int size) { Access::setContentSize(*entry, size); }

    void expectRefused(unsigned int at, unsigned int length)
    {
        const unsigned int before = Access::contentSize(*entry);
        unsigned int pos = at;
        const auto result = entry->write(pos, bytes("x"), length);
        EXPECT_EQ(result.bytesWritten, 0U);
        EXPECT_EQ(result.text, refused);
        EXPECT_EQ(pos, at);
        EXPECT_EQ(Access::contentSize(*entry), before);
        EXPECT_EQ(Access::content(*entry), std::string(100, 0));
    }

    std::shared_ptr<FileEntry> entry = FileEntry::create(3, 100);
};

TEST_F(FileLimitsTest, AFullContentTakesNoMore)
{
    pretend(limit);
    expectRefused(limit, 1);
    expectRefused(limit, limit);
    expectRefused(limit - 1, 2);
}

TEST_F(FileLimitsTest, AWriteThatWouldPassTheLimitWritesNothing)
{
    pretend(limit - 5);
    expectRefused(limit - 5, 6);
    expectRefused(100, limit - 99);
}

TEST_F(FileLimitsTest, AHeaderLeavesLessRoomForTheContent)
{
    entry->insertHeader(bytes("HDR:"), 4);
    expectRefused(4, limit - 3);
    expectRefused(0, limit - 3); // without a note on the corrected position
    expectRefused(1000, limit);
}

TEST_F(FileLimitsTest, APositionFarBeyondASmallFileMeansItsEnd)
{
    pretend(3);
    unsigned int pos = limit;
    const auto result = entry->write(pos, bytes("x"), 1);
    EXPECT_EQ(result.bytesWritten, 1U);
    EXPECT_EQ(result.text, "3 can't update header, Move the offset to the end of the content \n");
    EXPECT_EQ(pos, 4U);
}

TEST_F(FileLimitsTest, HeaderAndContentPastTheLastPositionRefuseEveryWriteThere)
{
    entry->insertHeader(bytes("0123456789"), 10);
    pretend(limit - 5); // the content ends 5 bytes past the last position
    expectRefused(limit, 1);
    expectRefused(limit - 3, 4);
    EXPECT_EQ(entry->getFileSize(), std::uint64_t{limit} + 5);
}

TEST_F(FileLimitsTest, TheEndOfALargeFileDoesNotWrapIntoAnAppend)
{
    entry->appendFooter(bytes("0123456789"), 10);
    pretend(limit - 5); // header, content and footer together are 2^32 + 4
    const auto result = entry->append(bytes("123456"), 6);
    EXPECT_EQ(result.bytesWritten, 0U);
    EXPECT_EQ(result.text, refused);
    EXPECT_EQ(Access::content(*entry), std::string(100, 0));
}

TEST_F(FileLimitsTest, AnAppendPastTheLastPositionIsRefused)
{
    entry->insertHeader(bytes("0123456789"), 10);
    pretend(limit);
    const auto result = entry->append(bytes("x"), 1);
    EXPECT_EQ(result.bytesWritten, 0U);
    EXPECT_EQ(result.position, limit);
    EXPECT_EQ(result.text, refused);
    EXPECT_EQ(entry->append(nullptr, 1).position, limit);
}

TEST(FileLimits, TheReserveIsATenthAndEndsAtTheLimit)
{
    EXPECT_EQ(Access::storageFor(0), 0U);
    EXPECT_EQ(Access::storageFor(9), 9U);
    EXPECT_EQ(Access::storageFor(10), 11U);
    EXPECT_EQ(Access::storageFor(101), 111U);
    EXPECT_EQ(Access::storageFor(3'904'515'722), 4'294'967'294U);
    EXPECT_EQ(Access::storageFor(3'904'515'723), limit);
    EXPECT_EQ(Access::storageFor(3'904'515'724), limit) << "one more than 32 bits hold";
    EXPECT_EQ(Access::storageFor(limit), limit);
}

TEST_F(FileLimitsTest, AHandleKeepsItsPositionWhenItIsRefused)
{
    FileHandleImpl handle("a", entry);
    pretend(limit);
    handle.setPos(50);
    EXPECT_EQ(handle.append("x"), 0U);
    EXPECT_EQ(handle.append("x", 1), 0U);
    EXPECT_EQ(handle.append(bytes("x"), 1), 0U);
    EXPECT_EQ(FileHandleTestAccess::pos(handle), 50U);
    handle.setPos(ULONG_MAX);
    EXPECT_EQ(FileHandleTestAccess::pos(handle), limit);
    EXPECT_EQ(handle.write("x"), 0U);
    EXPECT_EQ(handle.write(bytes("x"), 1), 0U);
    EXPECT_EQ(FileHandleTestAccess::pos(handle), limit);
}

TEST_F(FileLimitsTest, SetPosStopsAtTheLastPosition)
{
    FileHandleImpl handle("a", entry);
    handle.insertHeader("0123456789");
    pretend(limit);
    handle.setPos(std::uint64_t{limit} + 3); // it is inside the file, and would be 2 in 32 bits
    EXPECT_EQ(FileHandleTestAccess::pos(handle), limit);
    EXPECT_EQ(handle.getFileSize(), std::uint64_t{limit} + 10);
}

TEST_F(FileLimitsTest, ReadingEndsAtTheLastPosition)
{
    entry->insertHeader(bytes("0123456789"), 10);
    entry->appendFooter(bytes("END"), 3);
    pretend(limit - 8);
    unsigned int pos = limit;
    unsigned char buffer[20];
    EXPECT_EQ(entry->read(pos, buffer, sizeof buffer), 0U);
    EXPECT_EQ(pos, limit);
    pretend(limit - 10); // the content ends where the positions do
    pos = limit;
    EXPECT_EQ(entry->read(pos, buffer, sizeof buffer), 0U);
}

TEST_F(FileLimitsTest, AHundredThousandFilesAreFoundAndRemoved)
{
    FileManagerImpl manager;
    constexpr int count = 100'000;
    for (int at = 1; at <= count; ++at) {
        const Handle handle = manager.create("file" + std::to_string(at), 0, 0);
        ASSERT_EQ(handle->getFileRef(), at);
        handle->write(std::to_string(at));
    }
    EXPECT_EQ(manager.openAll().size(), 100'000U);
    for (int at = 1; at <= count; at += 997) {
        EXPECT_EQ(wholeFile(*manager.open("file" + std::to_string(at))), std::to_string(at));
    }
    EXPECT_EQ(manager.open(count)->getFileName(), "file100000");
    EXPECT_TRUE(manager.remove("file9", false)); // that file alone
    EXPECT_EQ(FileManagerTestAccess::fileCount(manager), 99'999U);
    EXPECT_TRUE(manager.remove("file9", false)); // those that begin so
    EXPECT_EQ(FileManagerTestAccess::fileCount(manager), 99'999U - 11'110U);
    manager.removeAll();
    EXPECT_TRUE(manager.openAll().empty());
}

/// A content of nearly 4 GiB that takes no more memory than a few pages: most of it was never written.
class SparseFileTest : public testing::Test
{
protected:
    void SetUp() override
    {
#ifdef __SANITIZE_THREAD__
        GTEST_SKIP() << "under ThreadSanitizer every content takes all of its memory";
#endif
        Access::setContentSize(*entry, limit - 100);
        try {
            entry->append(bytes(""), 0); // the storage grows to what the content pretends to have
        } catch (const std::bad_alloc&) {
            GTEST_SKIP() << "this machine has no room for a file of 4 GiB";
        }
    }

    std::shared_ptr<FileEntry> entry = FileEntry::create(3, 0);
    FileHandleImpl handle{"a", entry};
};

TEST_F(SparseFileTest, TheReserveEndsAtTheLimit)
{
    EXPECT_EQ(Access::storage(*entry), limit);
    EXPECT_EQ(entry->append(bytes("x"), 1).text, "3");
}

TEST_F(SparseFileTest, AContentIsFilledToItsLastByte)
{
    const std::string block(100, 'x');
    EXPECT_EQ(handle.append(block + "y"), 0U); // one byte too many
    EXPECT_EQ(handle.append(block), 100U);
    EXPECT_EQ(handle.getFileSize(), limit);
    EXPECT_EQ(FileHandleTestAccess::pos(handle), limit);
    EXPECT_EQ(handle.append("y"), 0U);
    EXPECT_EQ(entry->append(bytes(""), 0).text, "3");
    handle.setPos(limit - 1);
    EXPECT_EQ(handle.write("y"), 1U);
    EXPECT_EQ(handle.write("y"), 0U);
    handle.setPos(limit - 3);
    EXPECT_EQ(readText(handle, 10), "xxy");
}

TEST_F(SparseFileTest, AFooterPastTheLastPositionIsReadAsAWholeOnly)
{
    handle.append(std::string(100, 'x'));
    handle.appendFooter(bytes("END"), 3);
    EXPECT_EQ(handle.append("y"), 0U);
    EXPECT_EQ(readText(handle, 10), "");
    EXPECT_EQ(textOf(handle.readFooter()), "END");
    std::ostringstream out;
    handle.setPos(limit - 1);
    handle.dump(out);
    EXPECT_EQ(out.str(), "x\n");
    // No position designates the end of the file, but the note about the move is made.
    const auto empty = entry->append(bytes(""), 0);
    EXPECT_EQ(empty.text, "3 can't update header, Move the offset to the end of the content \n");
    EXPECT_EQ(empty.position, limit);
    handle.insertHeader("HDR:");
    handle.setPos(limit - 4);
    EXPECT_EQ(readText(handle, 10), "xxxx");
    EXPECT_EQ(handle.write("y"), 0U);
    // Now no position designates the end of the content either.
    const auto pastTheLast = entry->append(bytes(""), 0);
    EXPECT_EQ(pastTheLast.text, "3 can't update header, Move the offset to the end of the content \n");
    EXPECT_EQ(pastTheLast.position, limit);
    handle.appendFooter(nullptr, 0);
    EXPECT_EQ(entry->append(bytes(""), 0).text, "3");
}

/// Refuses every write, and notes its form and length.
class RefusingHandle : public FileHandleImpl
{
public:
    using FileHandleImpl::FileHandleImpl;

    unsigned int write(const unsigned char* /*data*/, unsigned int length) override { refuse("bytes", length); }
    unsigned int write(const char* /*data*/, unsigned int length) override { refuse("text", length); }
    unsigned int write(const std::string& data) override { refuse("string", data.size()); }
    void writeAsEver(const std::string& data) { FileHandleImpl::write(data); }

    std::string noted;

private:
    [[noreturn]] void refuse(const char* form, std::size_t length)
    {
        noted = form + (" " + std::to_string(length));
        throw std::runtime_error("refused");
    }
};

TEST(FourGibibytesTest, AStringOfMoreThanTheLargestLengthIsRefused)
{
    if (std::getenv("CORVANE_TEST_4GIB") == nullptr) {
        GTEST_SKIP() << "needs 5 GB of memory; set CORVANE_TEST_4GIB=1 to run it";
    }
    std::string huge(std::size_t{limit} + 3, 'x'); // in 32 bits it would be 2 bytes long
    FileHandleImpl handle("a", FileEntry::create(3, 0));
    handle.insertHeader("HDR:");
    EXPECT_EQ(handle.write(huge), 0U);
    EXPECT_EQ(handle.append(huge), 0U);
    handle.insertHeader(huge);
    EXPECT_EQ(wholeFile(handle), "HDR:");
    EXPECT_EQ(FileHandleTestAccess::pos(handle), 0U);

    const auto refusing = std::make_shared<RefusingHandle>("a", FileEntry::create(3, 0));
    FileStreamBufImpl buffer;
    FileStreamBufTestAccess::setPendingText(buffer, std::move(huge));
    FileStreamBufTestAccess::handle(buffer) = refusing;
    EXPECT_THROW(buffer.pubsync(), std::runtime_error); // so the text stays
    EXPECT_EQ(refusing->noted, "string 4294967298");
    FileStreamBufTestAccess::cutPendingText(buffer, limit);
    EXPECT_THROW(buffer.pubsync(), std::runtime_error);
    EXPECT_EQ(refusing->noted, "text 4294967295");
    EXPECT_THROW(refusing->writeAsEver(FileStreamBufTestAccess::pendingText(buffer)), std::runtime_error);
    EXPECT_EQ(refusing->noted, "bytes 4294967295");
}

} // namespace
} // namespace Corvane::RamFs::V1
