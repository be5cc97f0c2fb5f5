/// Names that carry a date, with a clock that stands still.
#include <cstdlib>
#include <ctime>
#include <limits>

#include <gtest/gtest.h>

#include "tests/ramfs/fakeClock.h"
#include "tests/ramfs/ramfsTestSupport.h"

namespace Corvane::RamFs::V1 {
namespace {

constexpr std::time_t afternoon = 1709647439; // 2024-03-05 14:03:59 UTC

class FileDateTest : public testing::Test
{
protected:
    FileDateTest()
    {
        setTimeZone("UTC0");
        Testing::setClock(afternoon);
        Testing::setDate("");
    }

    static void setTimeZone(const char* zone)
    {
        ::setenv("TZ", zone, 1);
        ::tzset();
    }

    std::string nameOfNew(const std::string& fileName)
    {
        const Handle handle = manager.create(fileName, 0, 0);
        return handle ? handle->getFileName() : "(none)";
    }

    FileManagerImpl manager;
};

TEST_F(FileDateTest, TheDateIsYearMonthDayAndTime)
{
    EXPECT_EQ(nameOfNew("log_<date>"), "log_2024Mar05-14_03_59");
    EXPECT_EQ(nameOfNew("log_<date>.txt"), "log_2024Mar05-14_03_59.txt");
    EXPECT_EQ(nameOfNew("<date>"), "2024Mar05-14_03_59");
    EXPECT_TRUE(manager.exists("log_2024Mar05-14_03_59.txt"));
    EXPECT_FALSE(manager.exists("log_<date>.txt"));
    Testing::setClock(0);
    EXPECT_EQ(nameOfNew("<date>"), "1970Jan01-00_00_00");
}

TEST_F(FileDateTest, TheDateReplacesTheFirstPlaceholderOnly)
{
    EXPECT_EQ(nameOfNew("<date><date>"), "2024Mar05-14_03_59<date>");
    EXPECT_EQ(nameOfNew("a<<date>><date>"), "a<2024Mar05-14_03_59><date>");
}

TEST_F(FileDateTest, TheDateIsLocalTime)
{
    setTimeZone("EST5");
    EXPECT_EQ(nameOfNew("<date>"), "2024Mar05-09_03_59");
    setTimeZone("EAST-10");
    EXPECT_EQ(nameOfNew("<date>"), "2024Mar06-00_03_59");
}

TEST_F(FileDateTest, TheDateIsTheCreationTime)
{
    const Handle handle = manager.create("<date>", 0, 0);
    Testing::setClock(afternoon + 100);
    EXPECT_EQ(handle->getCreationTime(), afternoon);
    EXPECT_EQ(handle->getFileName(), "2024Mar05-14_03_59");
}

TEST_F(FileDateTest, ACreateInTheSameSecondReplacesTheFile)
{
    const Handle first = manager.create("log_<date>", 0, 0);
    const Handle second = manager.create("log_<date>", 0, 0);
    EXPECT_EQ(first->getFileName(), "log_2024Mar05-14_03_59");
    EXPECT_EQ(second->getFileName(), "log_2024Mar05-14_03_59");
    EXPECT_EQ(manager.open("log_2024Mar05-14_03_59")->getFileRef(), 2);
    EXPECT_EQ(FileManagerTestAccess::fileCount(manager), 1U);
    Testing::setClock(afternoon + 1);
    EXPECT_EQ(nameOfNew("log_<date>"), "log_2024Mar05-14_04_00");
    EXPECT_EQ(FileManagerTestAccess::fileCount(manager), 2U);
}

TEST_F(FileDateTest, ADateMayHaveNinetyNineCharacters)
{
    Testing::setDate(std::string(99, 'm'));
    EXPECT_EQ(nameOfNew("log_<date>.txt"), "log_" + std::string(99, 'm') + ".txt"); // month names differ by locale
}

TEST_F(FileDateTest, ALongerDateLeavesThePlaceholder)
{
    Testing::setDate(std::string(100, 'm'));
    EXPECT_EQ(nameOfNew("log_<date>.txt"), "log_<date>.txt");
    EXPECT_TRUE(manager.exists("log_<date>.txt"));
    EXPECT_EQ(nameOfNew("log_<date>.txt"), "(none)") << "now the name is taken as it is";
    Testing::setDate("");
    EXPECT_EQ(nameOfNew("log_<date>.txt"), "(none)");
    EXPECT_TRUE(manager.remove("log_<date>.txt", false));
    EXPECT_EQ(nameOfNew("log_<date>.txt"), "log_2024Mar05-14_03_59.txt");
}

TEST_F(FileDateTest, ATimeBeyondTheCalendarLeavesThePlaceholder)
{
    Testing::setClock(std::numeric_limits<std::time_t>::max());
    EXPECT_EQ(nameOfNew("log_<date>"), "log_<date>");
}

} // namespace
} // namespace Corvane::RamFs::V1
