/// Removal by name, prefix, date pattern and number, and its reports to the letter.
#include <iostream>
#include <memory>
#include <sstream>
#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/ramfs/ramfsTestSupport.h"
#include "tests/support/fullBuffer.h"

namespace Corvane::RamFs::V1 {
namespace {

using testing::AnyOf;

class FileRemovalTest : public testing::Test
{
protected:
    template <typename Which>
    std::string reportOf(const Which& which, bool expected)
    {
        std::ostringstream out;
        EXPECT_EQ(manager.remove(which, out, true), expected);
        return out.str();
    }
    void create(std::initializer_list<std::string> names)
    {
        for (const std::string& name : names) {
            manager.create(name, 0, 0);
        }
    }
    std::size_t count() const { return FileManagerTestAccess::fileCount(manager); }

    FileManagerImpl manager;
};

TEST_F(FileRemovalTest, ARemovedFileHasLostTheDirectoryAsOwnerWhenItsReportIsWritten)
{
    struct OwnerCounter : std::stringbuf
    {
        std::shared_ptr<FileHandleIf> handle;
        unsigned int owners = 0;
        std::streamsize xsputn(const char* text, std::streamsize length) override
        {
            owners = handle->getUserCount();
            return std::stringbuf::xsputn(text, length);
        }
    } counter;
    std::ostream out(&counter);
    for (const std::string name : {"abc", "ab"}) {
        counter.handle = manager.create("abc", 0, 7);
        EXPECT_TRUE(manager.remove(name, out, true));
        EXPECT_EQ(counter.owners, 2U) << name;
    }
    counter.handle = manager.create("abc", 0, 7);
    EXPECT_TRUE(manager.remove(7, out, true));
    EXPECT_EQ(counter.owners, 2U);
}

TEST_F(FileRemovalTest, AnExactNameTakesThatFileAlone)
{
    create({"abc", "abc1", "abc2"});
    EXPECT_EQ(reportOf(std::string("abc"), true), "File 'abc' deleted");
    EXPECT_TRUE(manager.exists("abc1"));
    EXPECT_TRUE(manager.exists("abc2"));
}

TEST_F(FileRemovalTest, APrefixTakesAllFilesAndReportsWithoutSeparators)
{
    create({"abc1", "abc2", "ab", "xabc"});
    const std::string first = "abc1' deleted - it starts with entered pattern 'abc'";
    const std::string second = "abc2' deleted - it starts with entered pattern 'abc'";
    EXPECT_THAT(reportOf(std::string("abc"), true), AnyOf("File '" + first + second, "File '" + second + first));
    EXPECT_EQ(count(), 2U);
}

TEST_F(FileRemovalTest, AReportWithoutAMatchIsItsBeginningAlone)
{
    create({"abc"});
    EXPECT_EQ(reportOf(std::string("zzz"), false), "File '");
    EXPECT_EQ(reportOf(std::string("abcd"), false), "File '");
    EXPECT_EQ(reportOf(std::string("z<date>"), false), "File '");
    EXPECT_EQ(count(), 1U);
}

TEST_F(FileRemovalTest, AnEmptyNameTakesAllFiles)
{
    create({"a", "b", "c"});
    EXPECT_TRUE(manager.remove("", false));
    EXPECT_EQ(count(), 0U);
    create({"a"});
    EXPECT_EQ(reportOf(std::string(), true), "File 'a' deleted - it starts with entered pattern ''");
}

TEST_F(FileRemovalTest, AnEmptyNameThatIsAFileTakesThatFileAlone)
{
    create({"", "b"});
    EXPECT_EQ(reportOf(std::string(), true), "File '' deleted");
    EXPECT_TRUE(manager.exists("b"));
}

TEST_F(FileRemovalTest, ADatePatternTakesFilesThatWereCreatedWithIt)
{
    const std::string name = manager.create("log_<date>.txt", 0, 0)->getFileName();
    create({"log_", "log.txt"});
    EXPECT_EQ(reportOf(std::string("log_<date>.txt"), true),
              "File '" + name + "' deleted - it contains entered pattern 'log_<date>.txt'");
    EXPECT_EQ(count(), 2U);
}

TEST_F(FileRemovalTest, TheSuffixMayBeAnywhereInANameWithoutADate)
{
    create({"log_2024Mar05-14_03_59.txt", "log_.txt.old", "log_.tx"});
    EXPECT_TRUE(manager.remove("log_<date>.txt", false));
    EXPECT_EQ(count(), 1U);
    EXPECT_TRUE(manager.exists("log_.tx"));
}

TEST_F(FileRemovalTest, TheSuffixIsFoundInsideThePrefix)
{
    create({"ab.ab"});
    EXPECT_EQ(reportOf(std::string("ab.ab<date>b.a"), true),
              "File 'ab.ab' deleted - it contains entered pattern 'ab.ab<date>b.a'");
}

TEST_F(FileRemovalTest, AnEmptySuffixAlwaysMatches)
{
    create({"log_1", "log_", "log"});
    EXPECT_TRUE(manager.remove("log_<date>", false));
    EXPECT_EQ(count(), 1U);
    EXPECT_TRUE(manager.exists("log"));
}

TEST_F(FileRemovalTest, TheSuffixBeginsAfterTheFirstBracketEvenBeforeTheDate)
{
    // The suffix of "a>b<date>c" is "b<date>c". Only a name with a "<date>" that was not replaced contains it.
    create({"a>b1c", "a>b<date>b<date>c"});
    EXPECT_TRUE(manager.remove("a>b<date>c", false));
    EXPECT_EQ(count(), 1U);
    EXPECT_TRUE(manager.exists("a>b1c"));
    EXPECT_FALSE(manager.remove("a>b<date>c", false));
}

TEST_F(FileRemovalTest, TheSuffixEndsAtANul)
{
    create({"log_1.txt"});
    EXPECT_TRUE(manager.remove(std::string("log_<date>.txt\0.never", 21), false));
    EXPECT_EQ(count(), 0U);
}

TEST_F(FileRemovalTest, PrefixesAndNamesMayHoldNuls)
{
    create({std::string("a\0b", 3), std::string("a\0c", 3), "a"});
    EXPECT_TRUE(manager.remove(std::string("a\0", 2), false));
    EXPECT_EQ(count(), 1U);
    EXPECT_TRUE(manager.exists("a"));
}

TEST_F(FileRemovalTest, ANumberTakesEveryFileThatHasItAndReportsOneLine)
{
    manager.create("a", 0, -5);
    manager.create("b", 0, -5);
    manager.create("c", 0, 5);
    EXPECT_EQ(reportOf(-5, true), "File with reference number -5 was deleted\n");
    EXPECT_EQ(count(), 1U);
    EXPECT_EQ(reportOf(-5, false), "");
}

TEST_F(FileRemovalTest, OnlyAVerboseRemovalWritesAReport)
{
    manager.create("a", 0, 5);
    manager.create("b", 0, 6);
    std::ostringstream out;
    EXPECT_TRUE(manager.remove(5, out, false));
    EXPECT_FALSE(manager.remove(5, out, false));
    EXPECT_TRUE(manager.remove("b", out, false));
    EXPECT_FALSE(manager.remove("b", out, false));
    EXPECT_EQ(out.str(), "");
}

/// Counts how often it is flushed.
class FlushCounter : public std::stringbuf
{
public:
    int flushes = 0;

protected:
    int sync() override
    {
        ++flushes;
        return std::stringbuf::sync();
    }
};

TEST_F(FileRemovalTest, OnlyTheReportByNumberIsFlushed)
{
    manager.create("a", 0, 5);
    manager.create("b", 0, 6);
    FlushCounter buffer;
    std::ostream out(&buffer);
    manager.remove("b", out, true);
    EXPECT_EQ(buffer.flushes, 0);
    manager.remove(5, out, true);
    EXPECT_EQ(buffer.flushes, 1);
    EXPECT_EQ(buffer.str(), "File 'b' deletedFile with reference number 5 was deleted\n");
}

TEST_F(FileRemovalTest, TheFormatOfTheStreamDoesNotMatter)
{
    manager.create("a", 0, 255);
    std::ostringstream out;
    out << std::hex << std::showbase;
    out.width(60);
    manager.remove(255, out, true);
    EXPECT_EQ(out.str(), "File with reference number 255 was deleted\n");
}

/// Catches what is written to std::cout.
class CoutCatcher
{
public:
    CoutCatcher() : m_former(std::cout.rdbuf(m_buffer.rdbuf())) {}
    ~CoutCatcher() { std::cout.rdbuf(m_former); }
    CoutCatcher(const CoutCatcher&) = delete;
    CoutCatcher& operator=(const CoutCatcher&) = delete;
    std::string text() const { return m_buffer.str(); }

private:
    std::ostringstream m_buffer;
    std::streambuf* m_former;
};

TEST_F(FileRemovalTest, WithoutAStreamTheReportGoesToStandardOutput)
{
    manager.create("a", 0, 5);
    manager.create("b", 0, 6);
    const CoutCatcher cout;
    EXPECT_TRUE(manager.remove("b", true));
    EXPECT_TRUE(manager.remove(5, true));
    EXPECT_FALSE(manager.remove("zzz", false));
    EXPECT_EQ(cout.text(), "File 'b' deletedFile with reference number 5 was deleted\n");
}

/// Overrides only the forms with a stream.
class OverridingManager : public FileManagerImpl
{
public:
    using FileManagerImpl::remove;

    bool remove(const std::string& fileName, std::ostream& out, bool verbose) override
    {
        calls.push_back(fileName + (&out == &std::cout ? " cout" : "") + (verbose ? " verbose" : ""));
        return true;
    }
    bool remove(int fileRef, std::ostream& out, bool verbose) override
    {
        return remove(std::to_string(fileRef), out, verbose);
    }

    std::vector<std::string> calls;
};

TEST_F(FileRemovalTest, TheFormsWithoutAStreamGoThroughTheVirtualTable)
{
    OverridingManager overriding;
    EXPECT_TRUE(overriding.remove("a", true));
    EXPECT_TRUE(overriding.remove(7, false));
    EXPECT_THAT(overriding.calls, testing::ElementsAre("a cout verbose", "7 cout"));
}

TEST_F(FileRemovalTest, AStreamThatThrowsLeavesTheFilesRemovedAndTheDirectoryUnlocked)
{
    manager.create("a", 0, 5);
    manager.create("b", 0, 6);
    Testing::ThrowingStream out;
    EXPECT_THROW(manager.remove("a", out, true), std::runtime_error);
    out.clear();
    EXPECT_THROW(manager.remove(6, out, true), std::runtime_error);
    EXPECT_EQ(count(), 0U);
    EXPECT_TRUE(FileManagerTestAccess::isUnlocked(manager));
}

} // namespace
} // namespace Corvane::RamFs::V1
