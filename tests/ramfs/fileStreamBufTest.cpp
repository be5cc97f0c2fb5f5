/// Stream buffers: what reaches the file and when, and what a closed buffer does.
#include <cstdlib>
#include <iomanip>
#include <ostream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/ramfs/ramfsTestSupport.h"
#include "tests/support/emulation.h"

namespace Corvane::RamFs::V1 {
namespace {

class FileStreamBufTest : public testing::Test
{
protected:
    // The buffers work on the one directory of the process.
    FileStreamBufTest() { manager.removeAll(); }
    ~FileStreamBufTest() override { manager.removeAll(); }

    std::string contentOf(const std::string& name) { return wholeFile(*manager.open(name)); }

    FileManagerIf& manager = FileManagerIf::getInstance();
    std::shared_ptr<FileStreamBufIf> buffer = manager.getFileStreamBuf();
};

TEST_F(FileStreamBufTest, EveryBufferIsNewAndClosed)
{
    EXPECT_FALSE(buffer->isOpen());
    EXPECT_NE(buffer, manager.getFileStreamBuf());
}

TEST_F(FileStreamBufTest, AFlushMovesTheTextIntoTheFile)
{
    ASSERT_TRUE(buffer->create("a", 0, 0));
    std::ostream out(buffer.get());
    out << "abc";
    EXPECT_EQ(contentOf("a"), "");
    out << std::flush;
    EXPECT_EQ(contentOf("a"), "abc");
    out << "de";
    buffer.reset();
    EXPECT_EQ(contentOf("a"), "abcde");
    EXPECT_EQ(manager.open("a")->getUserCount(), 3U);
}

TEST_F(FileStreamBufTest, ManipulatorsWork)
{
    ASSERT_TRUE(buffer->create("a", 0, 0));
    std::ostream out(buffer.get());
    out << std::hex << std::setw(6) << std::setfill('0') << 0xBEEF << ' ' << std::boolalpha << true << ' ' << std::dec
        << std::setprecision(3) << 3.14159 << std::flush;
    EXPECT_TRUE(out.good());
    EXPECT_EQ(contentOf("a"), "00beef true 3.14");
}

TEST_F(FileStreamBufTest, EveryByteArrivesAsItIs)
{
    ASSERT_TRUE(buffer->create("a", 0, 0));
    std::ostream out(buffer.get());
    std::string all;
    for (int byte = 0; byte < 256; ++byte) {
        all += static_cast<char>(byte);
        out.put(static_cast<char>(byte));
    }
    out.write(all.data(), 256) << std::flush;
    EXPECT_TRUE(out.good());
    EXPECT_EQ(contentOf("a"), all + all);
}

TEST_F(FileStreamBufTest, CloseMovesTheTextAndReleasesTheFile)
{
    ASSERT_TRUE(buffer->create("a", 0, 7));
    std::ostream out(buffer.get());
    EXPECT_EQ(buffer->getFileName(), "a");
    EXPECT_EQ(buffer->getFileRef(), 7);
    out << "abc";
    buffer->close();
    EXPECT_FALSE(buffer->isOpen());
    EXPECT_EQ(contentOf("a"), "abc");
    EXPECT_EQ(manager.open("a")->getUserCount(), 3U);
    buffer->close();
    EXPECT_FALSE(buffer->isOpen());
}

TEST_F(FileStreamBufTest, AClosedBufferHoldsNoMemoryForText)
{
    FileStreamBufImpl text;
    ASSERT_TRUE(text.create("a", 0, 0));
    std::ostream(&text) << std::string(100, 'x') << std::flush;
    ASSERT_GE(FileStreamBufTestAccess::capacity(text), 100U); // kept for the next line
    text.close();
    EXPECT_EQ(FileStreamBufTestAccess::capacity(text), std::string().capacity());
}

TEST_F(FileStreamBufTest, TextForAClosedBufferIsDropped)
{
    std::ostream out(buffer.get());
    out << "lost" << std::endl;
    EXPECT_TRUE(out.good());
    EXPECT_EQ(buffer->pubsync(), 0);
    EXPECT_EQ(buffer->sputc('x'), 'x');
    ASSERT_TRUE(buffer->create("a", 0, 7));
    out << "kept" << std::flush;
    EXPECT_EQ(contentOf("a"), "kept");
    buffer->close();
    out << "lost" << std::flush;
    ASSERT_TRUE(buffer->open(7));
    out << "K" << std::flush;
    EXPECT_EQ(contentOf("a"), "Kept");
}

TEST_F(FileStreamBufTest, AReopenedBufferWritesFromPositionZero)
{
    ASSERT_TRUE(buffer->create("a", 0, 7));
    std::ostream out(buffer.get());
    out << "abcdef";
    ASSERT_TRUE(buffer->open(7));
    EXPECT_EQ(contentOf("a"), "abcdef");
    out << "XY" << std::flush;
    EXPECT_EQ(contentOf("a"), "XYcdef");
}

TEST_F(FileStreamBufTest, OpeningAnotherFileMovesTheTextIntoTheFormer)
{
    manager.create("b", 0, 8);
    ASSERT_TRUE(buffer->create("a", 0, 7));
    std::ostream out(buffer.get());
    out << "for a";
    ASSERT_TRUE(buffer->open(8));
    out << "for b";
    ASSERT_TRUE(buffer->create("c", 0, 9));
    EXPECT_EQ(contentOf("a"), "for a");
    EXPECT_EQ(contentOf("b"), "for b");
    EXPECT_EQ(contentOf("c"), "");
}

TEST_F(FileStreamBufTest, AFailedCreateEndsClosed)
{
    manager.create("taken", 0, 0);
    ASSERT_TRUE(buffer->create("a", 0, 0));
    std::ostream out(buffer.get());
    out << "abc";
    EXPECT_FALSE(buffer->create("taken", 0, 0));
    EXPECT_FALSE(buffer->isOpen());
    EXPECT_EQ(contentOf("a"), "abc");
    EXPECT_EQ(manager.open("a")->getUserCount(), 3U);
    EXPECT_EQ(contentOf("taken"), "");
}

TEST_F(FileStreamBufTest, AFailedOpenEndsClosed)
{
    ASSERT_TRUE(buffer->create("a", 0, 0));
    std::ostream(buffer.get()) << "abc";
    EXPECT_FALSE(buffer->open(12345));
    EXPECT_FALSE(buffer->isOpen());
    EXPECT_EQ(contentOf("a"), "abc");
}

TEST_F(FileStreamBufTest, ARemovedFileStillTakesText)
{
    const Handle handle = manager.create("a", 0, 7);
    ASSERT_TRUE(buffer->open(7));
    std::ostream out(buffer.get());
    out << "abc";
    manager.remove(7, false);
    out << "de" << std::flush;
    EXPECT_EQ(wholeFile(*handle), "abcde");
}

TEST_F(FileStreamBufTest, ReadingMeetsTheEndOfFileAtOnce)
{
    ASSERT_TRUE(buffer->create("a", 0, 0));
    buffer->sputn("abc", 3);
    buffer->pubsync();
    EXPECT_EQ(buffer->sgetc(), std::streambuf::traits_type::eof());
    EXPECT_EQ(buffer->sbumpc(), std::streambuf::traits_type::eof());
    EXPECT_EQ(buffer->sputbackc('c'), std::streambuf::traits_type::eof());
    EXPECT_EQ(buffer->in_avail(), 0);
    char text[3];
    EXPECT_EQ(buffer->sgetn(text, 3), 0);
}

TEST_F(FileStreamBufTest, SeekingFails)
{
    ASSERT_TRUE(buffer->create("a", 0, 0));
    std::ostream out(buffer.get());
    out << "abc" << std::flush;
    EXPECT_EQ(out.tellp(), std::ostream::pos_type(-1));
    out.seekp(0);
    EXPECT_TRUE(out.fail());
}

/// Makes the protected operations public and records the calls of virtual ones.
class OpenedBuffer : public FileStreamBufImpl
{
public:
    using FileStreamBufImpl::overflow;
    using FileStreamBufImpl::sync;

    bool isOpen() const override
    {
        calls.emplace_back("isOpen");
        return FileStreamBufImpl::isOpen();
    }
    void close() override
    {
        calls.emplace_back("close");
        FileStreamBufImpl::close();
    }
    int sync() override
    {
        calls.emplace_back("sync");
        return FileStreamBufImpl::sync();
    }
    bool hasPutArea() const { return pbase() != nullptr || pptr() != nullptr || epptr() != nullptr; }

    mutable std::vector<std::string> calls;
};

TEST_F(FileStreamBufTest, OverflowKeepsOrDropsOneCharacter)
{
    OpenedBuffer opened;
    EXPECT_EQ(opened.overflow(std::char_traits<char>::eof()), std::char_traits<char>::eof());
    EXPECT_TRUE(opened.calls.empty());
    EXPECT_EQ(opened.overflow('a'), 'a'); // dropped
    EXPECT_THAT(opened.calls, testing::ElementsAre("isOpen"));
    ASSERT_TRUE(opened.create("a", 0, 0));
    EXPECT_EQ(opened.overflow('b'), 'b');
    EXPECT_EQ(opened.overflow(0xFF), 0xFF);
    EXPECT_EQ(opened.overflow(std::char_traits<char>::eof()), std::char_traits<char>::eof());
    EXPECT_EQ(FileStreamBufTestAccess::pendingText(opened), "b\xFF");
    EXPECT_FALSE(opened.hasPutArea());
    EXPECT_EQ(opened.sync(), 0);
    EXPECT_EQ(FileStreamBufTestAccess::pendingText(opened), "");
    EXPECT_FALSE(opened.hasPutArea());
    EXPECT_EQ(contentOf("a"), "b\xFF");
}

TEST_F(FileStreamBufTest, CreateOpenAndCloseGoThroughTheVirtualTable)
{
    OpenedBuffer opened;
    opened.create("a", 0, 7);
    EXPECT_THAT(opened.calls, testing::ElementsAre("close", "sync", "isOpen"));
    opened.calls.clear();
    opened.open(7);
    EXPECT_THAT(opened.calls, testing::ElementsAre("close", "sync", "isOpen"));
    opened.calls.clear();
    opened.close();
    EXPECT_THAT(opened.calls, testing::ElementsAre("close", "sync"));
}

TEST_F(FileStreamBufTest, ADerivedClassThatKeepsTheTextAtAFlushFindsItInTheNextFile)
{
    class KeepingBuffer : public OpenedBuffer
    {
    public:
        int sync() override { return isKeeping ? 0 : OpenedBuffer::sync(); }
        bool isKeeping = true;
    };
    KeepingBuffer keeping;
    ASSERT_TRUE(keeping.create("a", 0, 0));
    std::ostream(&keeping) << std::string(5000, 'x');
    ASSERT_TRUE(keeping.create("b", 0, 0)); // closes "a"
    std::ostream(&keeping) << 'y';
    keeping.isKeeping = false;
    keeping.close();
    EXPECT_EQ(contentOf("a"), "");
    EXPECT_EQ(contentOf("b"), std::string(5000, 'x') + 'y');
}

TEST_F(FileStreamBufTest, AHundredMebibytesFitInOneStream)
{
    ASSERT_TRUE(buffer->create("big", 0, 0));
    std::ostream out(buffer.get());
    constexpr std::size_t size = 100U << 20U;
    std::string block(1U << 20U, '\0');
    for (std::size_t at = 0; at < block.size(); ++at) {
        block[at] = static_cast<char>((at * 7919U) >> 3U);
    }
    for (std::size_t written = 0; written < size; written += block.size()) {
        out.write(block.data(), static_cast<std::streamsize>(block.size()));
    }
    out << std::flush;
    ASSERT_TRUE(out.good());
    const Handle handle = manager.open("big");
    ASSERT_EQ(handle->getFileSize(), size);
    for (std::size_t read = 0; read < size; read += block.size()) {
        ASSERT_TRUE(readText(*handle, static_cast<unsigned int>(block.size())) == block) << read;
    }
}

// Lives longer than the files of the directory.
std::shared_ptr<FileStreamBufIf> outliving;

/// Runs after the end of the directory. Exits with 42 if everything still works.
void useFilesAfterTheEnd()
{
    FileManagerIf& manager = FileManagerIf::getInstance();
    const bool wasEmpty = manager.openAll().empty() && !manager.exists("a");
    std::ostream(outliving.get()) << "pending" << std::flush;
    const bool bufferWorks = wholeFile(*FileStreamBufTestAccess::handle(*outliving)) == "pending";
    const bool takesFiles = manager.create("b", 0, 0) && manager.open("b") && outliving->create("c", 0, 0);
    std::ostream(outliving.get()) << "text that its destructor writes";
    outliving.reset();
    std::_Exit(wasEmpty && bufferWorks && takesFiles && wholeFile(*manager.open("c")).size() == 31 ? 42 : 1);
}

void endWithAnOpenBuffer()
{
    std::atexit(useFilesAfterTheEnd);
    outliving = FileManagerIf::getInstance().getFileStreamBuf();
    outliving->create("a", 0, 0);
    std::exit(0);
}

TEST(FileStreamBufDeathTest, FilesAndBuffersMayBeUsedAfterTheEndOfTheDirectory)
{
    GTEST_FLAG_SET(death_test_style, Corvane::Testing::deathTestStyle());
    EXPECT_EXIT(endWithAnOpenBuffer(), testing::ExitedWithCode(42), "");
}

} // namespace
} // namespace Corvane::RamFs::V1
