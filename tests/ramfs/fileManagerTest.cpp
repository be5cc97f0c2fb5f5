/// The directory: names, numbers, dates, opening and delayed deletion.
#include <climits>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/ramfs/ramfsTestSupport.h"

namespace Corvane::RamFs::V1 {
namespace {

using testing::ElementsAre;

class FileManagerTest : public testing::Test
{
protected:
    int counter() const { return FileManagerTestAccess::fileRefCounter(manager); }
    std::size_t count() const { return FileManagerTestAccess::fileCount(manager); }

    FileManagerImpl manager;
};

TEST(FileManagerInstance, IsOneObject)
{
    FileManagerIf& first = FileManagerIf::getInstance();
    EXPECT_EQ(&first, &FileManagerIf::getInstance());
    EXPECT_NE(dynamic_cast<FileManagerImpl*>(&first), nullptr);
}

TEST_F(FileManagerTest, AutomaticNumbersAreNotDisturbedByGivenOnes)
{
    EXPECT_EQ(manager.create("a", 0, 0)->getFileRef(), 1);
    EXPECT_EQ(manager.create("b", 0, 7)->getFileRef(), 7);
    EXPECT_EQ(manager.create("c", 0, 0)->getFileRef(), 2);
    EXPECT_EQ(manager.create("a", 10, 0), nullptr);
    EXPECT_EQ(counter(), 2);
    EXPECT_EQ(manager.create("d", 0, 0)->getFileRef(), 3);
}

TEST_F(FileManagerTest, NegativeNumbersAreValid)
{
    EXPECT_EQ(manager.create("a", 0, -5)->getFileRef(), -5);
    EXPECT_EQ(manager.create("b", 0, INT_MIN)->getFileRef(), INT_MIN);
    EXPECT_TRUE(manager.exists(-5));
    EXPECT_EQ(manager.open(INT_MIN)->getFileName(), "b");
}

TEST_F(FileManagerTest, NumberingContinuesAfterRemoveAll)
{
    manager.create("a", 0, 0);
    manager.removeAll();
    EXPECT_EQ(manager.create("a", 0, 0)->getFileRef(), 2);
}

TEST_F(FileManagerTest, AutomaticNumbersBeginAgainAtOneAfterTheLargest)
{
    FileManagerTestAccess::setFileRefCounter(manager, INT_MAX - 1);
    EXPECT_EQ(manager.create("a", 0, 0)->getFileRef(), INT_MAX);
    EXPECT_EQ(manager.create("b", 0, 0)->getFileRef(), 1);
}

TEST_F(FileManagerTest, ANewFileIsEmptyAndHasItsStorage)
{
    const Handle handle = manager.create("a", 100, 0);
    EXPECT_EQ(handle->getFileName(), "a");
    EXPECT_EQ(handle->getFileSize(), 0U);
    EXPECT_FALSE(handle->contentResize(100));
    EXPECT_TRUE(handle->contentResize(101));
    EXPECT_EQ(handle->getUserCount(), 3U);
}

TEST_F(FileManagerTest, ANameThatOnlyResemblesADateStays)
{
    EXPECT_EQ(manager.create("log_<Date>", 0, 0)->getFileName(), "log_<Date>");
    EXPECT_EQ(manager.create("log_<date", 0, 0)->getFileName(), "log_<date");
    EXPECT_EQ(manager.create("", 0, 0)->getFileName(), "");
}

TEST_F(FileManagerTest, OpenFindsTheExactNameOrTheNumber)
{
    manager.create("a", 0, 5)->write("abc");
    EXPECT_EQ(wholeFile(*manager.open("a")), "abc");
    EXPECT_EQ(wholeFile(*manager.open(5)), "abc");
    EXPECT_EQ(manager.open(5)->getFileName(), "a");
    EXPECT_EQ(manager.open("b"), nullptr);
    EXPECT_EQ(manager.open(""), nullptr);
    EXPECT_EQ(manager.open("A"), nullptr);
    EXPECT_EQ(manager.open(6), nullptr);
}

TEST_F(FileManagerTest, AMarkedFileLeavesTheDirectoryAtItsNextOpen)
{
    const Handle before = manager.create("a", 0, 5);
    before->write("abc");
    EXPECT_TRUE(manager.setDelayedDelete(5));
    EXPECT_TRUE(manager.exists("a"));
    EXPECT_TRUE(manager.exists(5));
    before->append("d");
    const Handle last = manager.open("a");
    EXPECT_EQ(wholeFile(*last), "abcd");
    EXPECT_FALSE(manager.exists("a"));
    EXPECT_FALSE(manager.exists(5));
    EXPECT_EQ(manager.open("a"), nullptr);
    EXPECT_EQ(manager.open(5), nullptr);
    last->append("e");
    EXPECT_EQ(wholeFile(*before), "abcde");
    EXPECT_EQ(last->getUserCount(), 3U); // two handles and the call
}

TEST_F(FileManagerTest, OpenAllKeepsMarks)
{
    manager.create("a", 0, 1);
    manager.create("b", 0, 2);
    manager.setDelayedDelete(1);
    std::set<std::string> names;
    for (const Handle& handle : manager.openAll()) {
        EXPECT_EQ(FileHandleTestAccess::pos(*handle), 0U);
        names.insert(handle->getFileName());
    }
    EXPECT_THAT(names, ElementsAre("a", "b"));
    EXPECT_EQ(manager.openAll().size(), 2U);
    EXPECT_TRUE(manager.exists("a"));
    EXPECT_NE(manager.open(1), nullptr);
    EXPECT_FALSE(manager.exists("a")) << "the mark was still there";
    manager.removeAll();
    EXPECT_TRUE(manager.openAll().empty());
}

TEST_F(FileManagerTest, NothingIsFoundInAnEmptyDirectory)
{
    EXPECT_FALSE(manager.exists(0));
    EXPECT_FALSE(manager.exists(""));
    EXPECT_FALSE(manager.setDelayedDelete(0));
    EXPECT_FALSE(manager.remove(0, false));
    EXPECT_FALSE(manager.remove("", false));
    EXPECT_EQ(manager.open(0), nullptr);
}

TEST_F(FileManagerTest, HandlesOutliveTheDirectory)
{
    auto own = std::make_unique<FileManagerImpl>();
    const Handle handle = own->create("a", 0, 0);
    own.reset();
    handle->write("abc");
    EXPECT_EQ(wholeFile(*handle), "abc");
    EXPECT_EQ(handle->getUserCount(), 2U);
}

} // namespace
} // namespace Corvane::RamFs::V1
