/// Which operation takes which lock, shared or exclusively, in which order, and what happens when a lock fails.
#include <cerrno>
#include <functional>
#include <ostream>
#include <string>
#include <system_error>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/ramfs/ramfsTestSupport.h"
#include "tests/support/lockRecorder.h"

namespace Corvane::RamFs::V1 {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Testing::LockMode;
using Testing::LockRecorder;
using Testing::TakenLock;

class EntryLocks : public testing::Test
{
protected:
    /// Returns  the modes in which the entry's lock was taken since the last call.
    std::vector<LockMode> take()
    {
        EXPECT_EQ(recorder.held(), 0);
        std::vector<LockMode> modes;
        for (const TakenLock& taken : recorder.take()) {
            EXPECT_EQ(taken.lock, FileEntryTestAccess::members(*entry).back());
            modes.push_back(taken.mode);
        }
        return modes;
    }

    std::shared_ptr<FileEntry> entry = FileEntry::create(3, 100);
    unsigned int pos = 0;
    unsigned char buffer[4] = {};
    LockRecorder recorder;
};

TEST_F(EntryLocks, AreExclusiveForOperationsThatChangeTheFile)
{
    entry->write(pos, bytes("abc"), 3);
    EXPECT_THAT(take(), ElementsAre(LockMode::Exclusive));
    entry->append(bytes("abc"), 3);
    EXPECT_THAT(take(), ElementsAre(LockMode::Exclusive));
    entry->insertHeader(bytes("abc"), 3);
    EXPECT_THAT(take(), ElementsAre(LockMode::Exclusive));
    entry->appendFooter(bytes("abc"), 3);
    EXPECT_THAT(take(), ElementsAre(LockMode::Exclusive));
    entry->contentResize(200);
    EXPECT_THAT(take(), ElementsAre(LockMode::Exclusive));
    entry->setDelayedDelete();
    EXPECT_THAT(take(), ElementsAre(LockMode::Exclusive));
}

TEST_F(EntryLocks, AreSharedForOperationsThatReadTheFile)
{
    entry->read(pos, buffer, 4);
    EXPECT_THAT(take(), ElementsAre(LockMode::Shared));
    entry->readHeader();
    EXPECT_THAT(take(), ElementsAre(LockMode::Shared));
    entry->readFooter();
    EXPECT_THAT(take(), ElementsAre(LockMode::Shared));
    static_cast<void>(entry->getFileSize());
    EXPECT_THAT(take(), ElementsAre(LockMode::Shared));
    static_cast<void>(entry->getUserCount());
    EXPECT_THAT(take(), ElementsAre(LockMode::Shared));
    static_cast<void>(entry->getDelayedDelete());
    EXPECT_THAT(take(), ElementsAre(LockMode::Shared));
}

TEST_F(EntryLocks, AreNotTakenToReadMembersThatNeverChange)
{
    static_cast<void>(entry->getFileRef());
    static_cast<void>(entry->getCreationTime());
    entry->getPtr();
    FileEntryTestAccess::writeWithoutLock(*entry, pos, "abc"); // its caller holds the lock
    EXPECT_THAT(take(), IsEmpty());
}

TEST_F(EntryLocks, AreNotTakenToReadIntoNull)
{
    entry->read(pos, nullptr, 4);
    EXPECT_THAT(take(), IsEmpty());
}

TEST_F(EntryLocks, AreRetriedWhenThereAreTooManyReaders)
{
    entry->write(pos, bytes("abc"), 3);
    take();
    recorder.failNext({EAGAIN, EAGAIN, EAGAIN});
    EXPECT_EQ(entry->getFileSize(), 3U);
    EXPECT_THAT(take(), ElementsAre(LockMode::Shared));
}

TEST_F(EntryLocks, ThatFailLeaveTheFileAsItWas)
{
    entry->write(pos, bytes("abc"), 3);
    const std::vector<std::function<void()>> operations = {
        [&] { entry->write(pos, bytes("x"), 1); },
        [&] { entry->append(bytes("x"), 1); },
        [&] { entry->insertHeader(bytes("x"), 1); },
        [&] { entry->appendFooter(bytes("x"), 1); },
        [&] { entry->contentResize(200); },
        [&] { entry->setDelayedDelete(); },
        [&] { entry->read(pos, buffer, 4); },
        [&] { entry->readHeader(); },
        [&] { entry->readFooter(); },
        [&] { static_cast<void>(entry->getFileSize()); },
        [&] { static_cast<void>(entry->getUserCount()); },
        [&] { static_cast<void>(entry->getDelayedDelete()); },
    };
    take();
    for (std::size_t at = 0; at < operations.size(); ++at) {
        pos = 3;
        recorder.failNext({EDEADLK});
        EXPECT_THROW(operations[at](), std::system_error) << at;
        EXPECT_THAT(take(), IsEmpty()) << at;
    }
    EXPECT_EQ(pos, 3U);
    EXPECT_EQ(wholeFile(*entry), "abc");
    EXPECT_EQ(FileEntryTestAccess::storage(*entry), 100U);
    EXPECT_FALSE(entry->getDelayedDelete());
}

class DirectoryLocks : public testing::Test
{
protected:
    DirectoryLocks()
    {
        manager.create("a", 0, 5);
        manager.create("b", 0, 6);
        recorder.take();
    }

    /// Returns  the locks that were taken since the last call: "exclusive" or "shared" for the directory's,
    /// " entry-exclusive" or " entry-shared" for an entry's, which must be taken inside the directory's.
    std::string take()
    {
        EXPECT_EQ(recorder.held(), 0);
        std::string text;
        for (const TakenLock& taken : recorder.take()) {
            const bool isDirectory = taken.lock == FileManagerTestAccess::members(manager).back();
            EXPECT_EQ(taken.inside, !isDirectory) << "the directory's lock comes first";
            text += isDirectory ? "" : " entry-";
            text += taken.mode == LockMode::Shared ? "shared" : "exclusive";
        }
        return text;
    }

    FileManagerImpl manager;
    std::ostringstream out;
    LockRecorder recorder;
};

TEST_F(DirectoryLocks, AreExclusiveForOperationsThatMayChangeTheDirectory)
{
    manager.create("c", 0, 0);
    EXPECT_EQ(take(), "exclusive");
    manager.create("c", 0, 0); // the name is taken
    EXPECT_EQ(take(), "exclusive");
    manager.open("none");
    EXPECT_EQ(take(), "exclusive");
    manager.open(77);
    EXPECT_EQ(take(), "exclusive");
    manager.open("a"); // asks for the mark
    EXPECT_EQ(take(), "exclusive entry-shared");
    manager.open(6);
    EXPECT_EQ(take(), "exclusive entry-shared");
    manager.setDelayedDelete(5);
    EXPECT_EQ(take(), "exclusive entry-exclusive");
    manager.setDelayedDelete(77);
    EXPECT_EQ(take(), "exclusive");
    manager.remove("none", out, true);
    EXPECT_EQ(take(), "exclusive");
    manager.remove("a", false);
    EXPECT_EQ(take(), "exclusive");
    manager.remove(77, out, true);
    EXPECT_EQ(take(), "exclusive");
    manager.remove(6, false);
    EXPECT_EQ(take(), "exclusive");
    manager.removeAll();
    EXPECT_EQ(take(), "exclusive");
}

TEST_F(DirectoryLocks, AreSharedForOperationsThatReadTheDirectory)
{
    manager.exists("a");
    EXPECT_EQ(take(), "shared");
    manager.exists(5);
    EXPECT_EQ(take(), "shared");
    manager.openAll();
    EXPECT_EQ(take(), "shared");
}

TEST_F(DirectoryLocks, AreNotTakenToCloseAHandleOrToMakeABuffer)
{
    Handle handle = manager.open("a");
    take();
    manager.close(handle);
    manager.getFileStreamBuf();
    EXPECT_EQ(take(), "");
}

TEST_F(DirectoryLocks, AreReleasedBeforeTheMemoryOfAFileIsFreed)
{
    const std::function<void()> removals[] = {
        [&] { manager.remove("big", false); },
        [&] { manager.remove("bi", false); },
        [&] { manager.remove(7, false); },
        [&] { manager.removeAll(); },
        [&] { manager.releaseAll(false); },
        [&] {
            manager.setDelayedDelete(7);
            manager.open("big");
        },
    };
    for (const auto& removal : removals) {
        manager.create("big", LockRecorder::watchedSize, 7);
        removal();
        EXPECT_THAT(recorder.heldWhenFreed(), ElementsAre(0));
    }
    std::vector<int> held;
    while (held.empty()) { // until one file replaces another of the same second
        manager.create("<date>", LockRecorder::watchedSize, 0);
        held = recorder.heldWhenFreed();
    }
    EXPECT_THAT(held, ElementsAre(0));
}

TEST_F(DirectoryLocks, AreRetriedWhenThereAreTooManyReaders)
{
    recorder.failNext({EAGAIN, EAGAIN, EAGAIN});
    EXPECT_TRUE(manager.exists(6));
    EXPECT_EQ(take(), "shared");
}

TEST_F(DirectoryLocks, ThatFailLeaveTheDirectoryAsItWas)
{
    const std::vector<std::function<void()>> operations = {
        [&] { manager.create("c", 0, 0); },
        [&] { manager.open("a"); },
        [&] { manager.open(5); },
        [&] { manager.remove("a", out, true); },
        [&] { manager.remove(5, out, true); },
        [&] { manager.removeAll(); },
        [&] { manager.exists("a"); },
        [&] { manager.exists(5); },
        [&] { manager.setDelayedDelete(5); },
        [&] { manager.openAll(); },
    };
    for (std::size_t at = 0; at < operations.size(); ++at) {
        recorder.failNext({EDEADLK});
        EXPECT_THROW(operations[at](), std::system_error) << at;
        EXPECT_EQ(take(), "") << at;
    }
    EXPECT_EQ(out.str(), "");
    EXPECT_EQ(FileManagerTestAccess::fileCount(manager), 2U);
    EXPECT_EQ(FileManagerTestAccess::fileRefCounter(manager), 0);
    EXPECT_EQ(manager.open("a")->getUserCount(), 3U);
    EXPECT_TRUE(manager.exists("a")) << "it wasn't marked";
}

TEST_F(DirectoryLocks, AreReleasedWhenAnEntrysLockFails)
{
    manager.setDelayedDelete(5);
    take();
    for (const std::function<void()>& operation : std::vector<std::function<void()>>{
             [&] { manager.open("a"); }, [&] { manager.open(5); }, [&] { manager.setDelayedDelete(6); }}) {
        recorder.failNext({0, EDEADLK});
        EXPECT_THROW(operation(), std::system_error);
        EXPECT_EQ(take(), "exclusive"); // and nothing is held
    }
    EXPECT_TRUE(manager.exists("a")) << "no handle was given out, so it stays";
    EXPECT_EQ(manager.open("b")->getUserCount(), 3U);
    EXPECT_TRUE(manager.exists("b")) << "it wasn't marked";
}

} // namespace
} // namespace Corvane::RamFs::V1
