/// Lets each allocation of an operation fail: of operations that are traced, and of those that
/// allocationFailureTest.cpp leaves out.
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/ramfs/ramfsTestSupport.h"
#include "tests/support/emulation.h"
#include "tests/support/failingAllocation.h"
#include "tests/support/tracingTexts.h"

namespace Corvane::RamFs::V1 {
namespace {

using Testing::failAllocation;
using Testing::failEachAllocation;
using Testing::Failing;
using Testing::TracingTexts;

using Operations = std::vector<std::function<void()>>;

const std::string longName = "a file with a name that is longer than a short string";

TEST(EachAllocation, OfAHandlesTracedOperationLeavesBytesAndPosition)
{
    const auto entry = FileEntry::create(3, 0);
    FileHandleImpl handle(longName, entry);
    handle.insertHeader("HDR:");
    handle.append("content");
    handle.setPos(2);
    const TracingTexts tracing;
    std::ostream nowhere(nullptr);
    const Operations operations = {
        [&] { handle.setPos(2); },
        [&] { handle.insertHeader("HDR:"); },
        [&] { handle.insertHeader(bytes("HDR:"), 4); },
        [&] { handle.appendFooter(nullptr, 0); },
        [&] { handle.readHeader(); },
        [&] { handle.readFooter(); },
        [&] { handle.contentResize(1'000); },
        [&] { static_cast<void>(handle.getCreationTime()); },
        [&] { handle.dump(nowhere); },
        [&] { handle.readReadable(nowhere, 100); },
    };
    for (std::size_t at = 0; at < operations.size(); ++at) {
        handle.setPos(2);
        const auto check = [&] {
            EXPECT_EQ(wholeFile(handle), "HDR:content") << at;
            EXPECT_EQ(FileHandleTestAccess::pos(handle), 2U) << at;
            EXPECT_TRUE(FileEntryTestAccess::isUnlocked(*entry)) << at;
        };
        EXPECT_GT(failEachAllocation(operations[at], check), 0) << at;
    }
}

TEST(EachAllocation, OfTheOtherOperationsOfAHandleDoesNotExist)
{
    FileHandleImpl handle("a", FileEntry::create(3, 0));
    unsigned char byte = 0;
    EXPECT_EQ(failEachAllocation([&] {
                  handle.setPos(2);
                  handle.read(&byte, 1);
                  static_cast<void>(handle.getFileRef());
                  static_cast<void>(handle.getFileSize());
                  static_cast<void>(handle.getUserCount());
                  static_cast<void>(handle.getCreationTime());
              }),
              0);
}

TEST(EachAllocation, OfTheDirectorysTracedOperationsLeavesItAsItWas)
{
    FileManagerImpl manager;
    manager.create(longName, 0, 5);
    const TracingTexts tracing;
    const std::vector<std::pair<std::function<void()>, bool>> operations = {
        {[&] { manager.create(longName, 0, 6); }, true}, // the name is taken
        {[&] { manager.open(longName); }, true},
        {[&] { manager.open(5); }, true},
        {[&] { manager.open("none"); }, true},
        {[&] { manager.openAll(); }, true},
        {[&] { manager.setDelayedDelete(77); }, true},
        {[&] { manager.remove("none", false); }, true},
        {[&] { manager.remove(77, false); }, true},
        {[&] { manager.getFileStreamBuf(); }, true},
        {[&] { manager.exists(5) && manager.exists(longName); }, false},
    };
    for (std::size_t at = 0; at < operations.size(); ++at) {
        const int allocations = failEachAllocation(operations[at].first, [&] {
            EXPECT_EQ(FileManagerTestAccess::fileCount(manager), 1U) << at;
            EXPECT_TRUE(manager.exists(5) && manager.exists(longName)) << at;
            EXPECT_TRUE(FileManagerTestAccess::isUnlocked(manager)) << at;
        });
        EXPECT_EQ(allocations > 0, operations[at].second) << at;
    }
}

TEST(EachAllocation, OfATracedRemovalOrMarkFailsBeforeIt)
{
    FileManagerImpl manager;
    const TracingTexts tracing;
    const Operations operations = {
        [&] { manager.setDelayedDelete(5); },
        [&] { manager.remove(5, false); },
        [&] { manager.remove(longName, false); },
    };
    for (const auto& operation : operations) {
        manager.create(longName, 0, 5);
        for (const Failing failing : {Failing::Once, Failing::FromThenOn}) {
            EXPECT_TRUE(failAllocation(0, failing, operation)); // the trace's; a removal goes on without the later ones
            EXPECT_EQ(FileManagerTestAccess::fileCount(manager), 1U);
            EXPECT_TRUE(FileManagerTestAccess::isUnlocked(manager));
        }
        operation();
        manager.open(5); // takes a marked file out
        EXPECT_EQ(FileManagerTestAccess::fileCount(manager), 0U);
    }
}

TEST(EachAllocation, OfAStreamBuffersCreateOrOpenLeavesItClosedOrOnItsFormerFile)
{
    FileManagerIf& manager = FileManagerIf::getInstance();
    manager.create("b", 0, 6);
    const auto buffer = manager.getFileStreamBuf();
    const std::string text(10'000, 'x');
    for (const bool creates : {true, false}) {
        buffer->create("a", 0, 5);
        std::ostream(buffer.get()) << text;
        EXPECT_GT(failEachAllocation([&] { creates ? buffer->create(longName, 0, 7) : buffer->open(6); },
                                     [&] {
                                         const std::string content = wholeFile(*manager.open("a"));
                                         const bool isFormer = buffer->isOpen() && buffer->getFileRef() == 5;
                                         EXPECT_TRUE(isFormer ? content.empty() : content == text);
                                         manager.remove(longName, false); // it may be listed without its handle
                                     }),
                  0);
        EXPECT_EQ(buffer->getFileRef(), creates ? 7 : 6);
        EXPECT_TRUE(wholeFile(*manager.open("a")) == text) << "once";
        manager.remove("a", false);
    }
    buffer->close();
    manager.removeAll();
}

TEST(EachAllocationDeathTest, MayLetAHandlerOfMissingMemoryEndTheProcessThoughTheDirectoryIsLocked)
{
    testing::FLAGS_gtest_death_test_style = Testing::deathTestStyle();
    FileManagerIf& manager = FileManagerIf::getInstance();
    const auto create = [&] { manager.create("a", 0, 6); };
    manager.create(longName, 0, 5);
    EXPECT_EXIT(Testing::exitInsideLastAllocation(1, create), testing::ExitedWithCode(3), ""); // or it hangs
    const auto openAll = [&] { manager.openAll(); };
    const int allocations = failEachAllocation(openAll);
    EXPECT_EXIT(Testing::exitInsideLastAllocation(allocations, openAll), testing::ExitedWithCode(3), "");
    manager.removeAll();
}

} // namespace
} // namespace Corvane::RamFs::V1
