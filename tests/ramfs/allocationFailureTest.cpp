/// Which operations take memory, and what they leave behind when each of their allocations fails.
#include <fstream>
#include <functional>
#include <memory>
#include <new>
#include <ostream>
#include <regex>

#include <sys/resource.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "tests/ramfs/ramfsTestSupport.h"
#include "tests/support/emulation.h"
#include "tests/support/failingAllocation.h"
#include "tests/support/tracingTexts.h"

namespace Corvane::RamFs::V1 {
namespace {

using Testing::failEachAllocation;
using Testing::FailingAllocation;
using Testing::TracingTexts;

template <typename Operation>
void expectNoAllocation(const Operation& operation)
{
    EXPECT_EQ(failEachAllocation(operation), 0);
}

class AllocationFailureTest : public testing::Test
{
protected:
    AllocationFailureTest()
    {
        handle.insertHeader("HDR:");
        handle.append("content");
        handle.appendFooter(bytes("END"), 3);
        handle.setPos(2);
    }

    void expectIntact()
    {
        EXPECT_EQ(wholeFile(handle), "HDR:contentEND");
        EXPECT_EQ(FileHandleTestAccess::pos(handle), 2U);
        EXPECT_TRUE(FileEntryTestAccess::isUnlocked(*entry));
    }

    const std::string large = std::string(100'000, 'x');
    std::shared_ptr<FileEntry> entry = FileEntry::create(3, 0);
    FileHandleImpl handle{"a file with a name that is longer than a short string", entry};
};

TEST_F(AllocationFailureTest, AWriteThatCannotGrowLeavesContentAndPosition)
{
    EXPECT_GE(failEachAllocation([&] { handle.write(large); }, [&] { expectIntact(); }), 1);
    EXPECT_EQ(wholeFile(handle), "HDR:" + large + "END");
}

TEST_F(AllocationFailureTest, AnAppendThatCannotGrowLeavesContentAndPosition)
{
    EXPECT_GE(failEachAllocation([&] { handle.append(large); }, [&] { expectIntact(); }), 1);
    EXPECT_EQ(wholeFile(handle), "HDR:content" + large + "END");
}

TEST_F(AllocationFailureTest, AFailedReplacementKeepsHeaderAndFooter)
{
    EXPECT_GE(failEachAllocation([&] { handle.insertHeader(large); }, [&] { expectIntact(); }), 1);
    handle.insertHeader("HDR:");
    EXPECT_GE(failEachAllocation([&] { handle.appendFooter(bytes(large.data()), 100'000); }, [&] { expectIntact(); }),
              1);
    EXPECT_EQ(wholeFile(handle), "HDR:content" + large);
}

TEST_F(AllocationFailureTest, AFailedReservationKeepsTheStorage)
{
    const std::size_t storage = FileEntryTestAccess::storage(*entry);
    EXPECT_EQ(failEachAllocation([&] { handle.contentResize(100'000); },
                                 [&] {
                                     expectIntact();
                                     EXPECT_EQ(FileEntryTestAccess::storage(*entry), storage);
                                 }),
              1);
}

TEST_F(AllocationFailureTest, ReadingAFileLeavesItAsItWas)
{
    EXPECT_EQ(failEachAllocation([&] { handle.readHeader(); }, [&] { expectIntact(); }), 1);
    EXPECT_EQ(failEachAllocation([&] { handle.readFooter(); }, [&] { expectIntact(); }), 1);
    EXPECT_EQ(failEachAllocation([&] { static_cast<void>(handle.getFileName()); }, [&] { expectIntact(); }), 1);
}

TEST_F(AllocationFailureTest, WritesAndAppendsThatNobodyTracesTakeNoMemory)
{
    handle.contentResize(100);
    expectNoAllocation([&] {
        handle.setPos(0);
        EXPECT_EQ(handle.write("CON"), 3U); // corrected to the start of the content
        handle.setPos(1000);
        EXPECT_EQ(handle.write("T", 1), 1U); // corrected to its end
        EXPECT_EQ(handle.append("2"), 1U);
        EXPECT_EQ(handle.write(static_cast<const char*>(nullptr), 5), 0U);
    });
    EXPECT_EQ(wholeFile(handle), "HDR:CONtentT2END");
}

TEST_F(AllocationFailureTest, AWriteWhoseResultCannotBeTracedIsDoneOnce)
{
    const TracingTexts tracing;
    handle.contentResize(100);
    int failed = 0;
    for (int count = 0; failed == count; ++count) {
        handle.setPos(100);
        unsigned int written = 0;
        std::string expected = wholeFile(handle);
        {
            const FailingAllocation failing(count);
            try {
                written = handle.append("x");
            } catch (const std::bad_alloc&) {
            }
            failed += failing.hasFailed() ? 1 : 0;
        }
        expected.insert(expected.size() - 3, written, 'x');
        EXPECT_EQ(wholeFile(handle), expected) << "allocation " << count;
    }
    EXPECT_GE(failed, 2); // one for each trace
}

/// Denies the process further pages.
class NoMorePages
{
public:
    NoMorePages()
    {
        std::size_t pages = 0;
        std::ifstream("/proc/self/statm") >> pages;
        ::getrlimit(RLIMIT_AS, &m_former);
        const rlimit limit{pages * static_cast<rlim_t>(::sysconf(_SC_PAGESIZE)), m_former.rlim_max};
        ::setrlimit(RLIMIT_AS, &limit);
    }
    ~NoMorePages() { ::setrlimit(RLIMIT_AS, &m_former); }
    NoMorePages(const NoMorePages&) = delete;
    NoMorePages& operator=(const NoMorePages&) = delete;

private:
    rlimit m_former{};
};

/// Returns  why pages can't be denied here; an empty text if they can.
std::string whyNotWithoutPages()
{
#ifdef CORVANE_TEST_SANITIZED
    return "a sanitizer needs pages of its own";
#else
    return Testing::isEmulated() ? "the limit would be the emulator's" : "";
#endif
}

TEST_F(AllocationFailureTest, ALargeFileThatCannotGrowLeavesContentAndPosition)
{
    if (!whyNotWithoutPages().empty()) {
        GTEST_SKIP() << whyNotWithoutPages();
    }
    for (const unsigned int size : {1000U, 1'000'000U}) { // what grows next is on the heap, or has pages of its own
        handle.contentResize(size);
        {
            const NoMorePages noMorePages;
            EXPECT_THROW(handle.contentResize(500'000'000), std::bad_alloc);
        }
        expectIntact();
        EXPECT_EQ(FileEntryTestAccess::storage(*entry), size);
    }
}

/// A new handler ends it.
std::unique_ptr<NoMorePages> noMorePagesUntilAsked;

TEST_F(AllocationFailureTest, ALargeFileGrowsOnceTheNewHandlerHasMadeRoom)
{
    if (!whyNotWithoutPages().empty()) {
        GTEST_SKIP() << whyNotWithoutPages();
    }
    noMorePagesUntilAsked = std::make_unique<NoMorePages>();
    std::set_new_handler([] { noMorePagesUntilAsked.reset(); });
    EXPECT_TRUE(handle.contentResize(50'000'000));
    std::set_new_handler(nullptr);
    EXPECT_EQ(noMorePagesUntilAsked, nullptr);
    EXPECT_EQ(FileEntryTestAccess::storage(*entry), 50'000'000U);
}

class DirectoryAllocationFailureTest : public testing::Test
{
protected:
    const std::string name = "a name that is longer than a short string_<date>";
    FileManagerImpl manager;
};

TEST_F(DirectoryAllocationFailureTest, ACreateThatFailsTakesANumberAndListsNoFileOrAWholeOne)
{
    const std::string plainName = "a name that is longer than a short string";
    for (const std::string& fileName : {plainName, name}) {
        int attempts = 0;
        std::string listed; // a letter for each failed attempt
        const int numberBefore = FileManagerTestAccess::fileRefCounter(manager);
        const auto attempt = [&] {
            ++attempts;
            manager.create(fileName, 1000, 0);
        };
        const auto check = [&] {
            EXPECT_TRUE(FileManagerTestAccess::isUnlocked(manager));
            EXPECT_EQ(FileManagerTestAccess::fileRefCounter(manager), numberBefore + attempts);
            const std::vector<Handle> files = manager.openAll();
            listed += files.empty() ? '-' : 'f';
            for (const Handle& file : files) { // the handle alone could not be made
                EXPECT_EQ(file->getFileName().substr(0, plainName.size()), plainName);
                EXPECT_EQ(file->getFileName().find("<date>"), std::string::npos);
                EXPECT_EQ(file->getFileRef(), numberBefore + attempts);
                EXPECT_EQ(file->getUserCount(), 3U);
                EXPECT_EQ(FileEntryTestAccess::storage(FileHandleTestAccess::entry(*file)), 1000U);
                EXPECT_EQ(file->write("works"), 5U);
            }
            manager.removeAll();
        };
        failEachAllocation(attempt, check);
        EXPECT_TRUE(std::regex_match(listed, std::regex("(--){4,}(ff){1,2}"))) // entry, storage, owners, the map's node
            << listed;
        EXPECT_EQ(FileManagerTestAccess::fileCount(manager), 1U);
        manager.removeAll();
    }
}

TEST_F(DirectoryAllocationFailureTest, ACreateWithoutMemoryForItsInitialSizeMakesNoFile)
{
    {
        const FailingAllocation failing(1); // the storage comes after the entry
        EXPECT_THROW(manager.create("a", 1'000'000, 0), std::bad_alloc);
    }
    EXPECT_EQ(FileManagerTestAccess::fileCount(manager), 0U);
    EXPECT_NE(manager.create("a", 0, 0), nullptr);
}

TEST_F(DirectoryAllocationFailureTest, AMarkedFileThatCannotBeOpenedStaysInTheDirectory)
{
    manager.create(name, 0, 5);
    manager.setDelayedDelete(5);
    EXPECT_GE(failEachAllocation([&] { EXPECT_NE(manager.open(5), nullptr); },
                                 [&] {
                                     EXPECT_TRUE(manager.exists(5));
                                     EXPECT_TRUE(FileManagerTestAccess::isUnlocked(manager));
                                 }),
              1);
    EXPECT_FALSE(manager.exists(5));
}

TEST_F(DirectoryAllocationFailureTest, OpeningAllFilesReleasesTheLock)
{
    manager.create(name + "1", 0, 0);
    manager.create(name + "2", 0, 0);
    EXPECT_GE(failEachAllocation([&] { manager.openAll(); },
                                 [&] { EXPECT_TRUE(FileManagerTestAccess::isUnlocked(manager)); }),
              3);
}

TEST_F(DirectoryAllocationFailureTest, ARemovalNeedsNoMemory)
{
    const std::string longName = "another name that is longer than a short string";
    manager.create(longName, 0, 0);
    expectNoAllocation([&] { EXPECT_FALSE(manager.remove(name, false)); });
    expectNoAllocation([&] { EXPECT_TRUE(manager.remove(longName, false)); });
    const std::function<void()> removals[] = {[&] { EXPECT_TRUE(manager.remove("a name", false)); },
                                              [&] { EXPECT_TRUE(manager.remove(5, false)); },
                                              [&] { manager.removeAll(); }};
    for (const auto& removal : removals) {
        manager.create(name + "1", 0, 5);
        manager.create(name + "2", 0, 5);
        const FailingAllocation failing(0); // what would free the files later finds no memory
        removal();
        EXPECT_TRUE(failing.hasFailed());
        EXPECT_EQ(FileManagerTestAccess::fileCount(manager), 0U);
        EXPECT_TRUE(FileManagerTestAccess::isUnlocked(manager));
    }
}

TEST_F(DirectoryAllocationFailureTest, AReportThatFindsNoMemoryReleasesTheLock)
{
    manager.create(name, 0, 0);
    std::ostringstream out;
    const FailingAllocation failing(0);
    EXPECT_THROW(manager.remove("a name", out, true), std::bad_alloc);
    EXPECT_TRUE(FileManagerTestAccess::isUnlocked(manager));
}

class BufferAllocationFailureTest : public testing::Test
{
protected:
    ~BufferAllocationFailureTest() override { FileManagerIf::getInstance().removeAll(); }

    std::string content() { return wholeFile(*FileManagerIf::getInstance().open("a")); }

    const std::string text = std::string(10'000, 'x');
    std::shared_ptr<FileStreamBufIf> buffer = FileManagerIf::getInstance().getFileStreamBuf();
};

TEST_F(BufferAllocationFailureTest, AFailedFlushKeepsTheTextAndNoFlushWritesItTwice)
{
    for (const bool isTraced : {false, true}) {
        FileManagerIf::getInstance().removeAll();
        buffer->create("a", 0, 0);
        std::ostream out(buffer.get());
        std::string expected;
        bool hasFailed = true;
        for (int count = 0; hasFailed; ++count) {
            out << text;
            expected += text;
            {
                const auto tracing = isTraced ? std::make_unique<TracingTexts>() : nullptr;
                const FailingAllocation failing(count);
                out.flush();
                hasFailed = failing.hasFailed();
            }
            if (out.bad()) {
                EXPECT_TRUE(hasFailed);
                out.clear();
                out.flush();
            }
            ASSERT_TRUE(out.good());
            ASSERT_TRUE(content() == expected) << "allocation " << count << (isTraced ? ", traced" : "");
        }
    }
}

TEST_F(BufferAllocationFailureTest, FlushingLineByLineTakesNoMemory)
{
    FileManagerIf::getInstance().create("a", 10'000, 5);
    buffer->open(5);
    std::ostream out(buffer.get());
    const std::string line(100, 'x');
    out << line << std::endl; // the buffer keeps the memory of this line for the others
    expectNoAllocation([&] { out << line << std::endl << line << std::endl; });
}

TEST_F(BufferAllocationFailureTest, AFlushGivesTheMemoryOfALargeTextBackAndACloseAllOfIt)
{
    buffer->create("a", 0, 0);
    std::ostream out(buffer.get());
    out << text << std::flush;
    EXPECT_LE(FileStreamBufTestAccess::pendingText(*buffer).capacity(), 4096U);
    out << "a line that is longer than a short string";
    buffer->close();
    EXPECT_EQ(FileStreamBufTestAccess::pendingText(*buffer).capacity(), std::string().capacity());
}

TEST_F(BufferAllocationFailureTest, ACharacterThatCannotBeKeptMakesTheStreamBadForThatCharacterOnly)
{
    buffer->create("a", 0, 0);
    std::ostream out(buffer.get());
    {
        const FailingAllocation failing(0);
        while (out.good()) {
            out.put('x');
        }
        EXPECT_TRUE(failing.hasFailed());
    }
    out.clear();
    out << "more" << std::flush;
    EXPECT_TRUE(out.good());
    EXPECT_EQ(content().substr(content().size() - 5), "xmore");
}

TEST_F(BufferAllocationFailureTest, ADestructorThatCannotTransferThrowsNothing)
{
    for (int count = 0; count < 4; ++count) {
        FileManagerIf::getInstance().removeAll();
        auto doomed = FileManagerIf::getInstance().getFileStreamBuf();
        doomed->create("a", 0, 0);
        std::ostream(doomed.get()) << text;
        {
            const FailingAllocation failing(count);
            doomed.reset();
        }
        const Handle handle = FileManagerIf::getInstance().open("a");
        EXPECT_EQ(handle->getUserCount(), 3U);
        EXPECT_TRUE(handle->getFileSize() == 0 || handle->getFileSize() == text.size());
    }
}

} // namespace
} // namespace Corvane::RamFs::V1
