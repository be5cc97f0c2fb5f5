/// Which locks are held while the file system emits: never an entry's, and the directory's only while an entry or a
/// handle is constructed inside one of the directory's steps. While the events are off, nothing is emitted.
#include <future>
#include <ostream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <testing/eventRecorder.h>

#include "tests/ramfs/emissionObserver.h"
#include "tests/ramfs/ramfsTestSupport.h"

namespace Corvane::RamFs::V1 {
namespace {

using testing::AllOf;
using testing::Each;
using testing::ElementsAre;
using testing::SizeIs;

class EmissionLockTest : public testing::Test
{
protected:
    EmissionLockTest()
    {
        file->appendFooter(bytes("END"), 3);
        Testing::observeEmissions([this](const std::string& path) {
            // Another thread tries, because a thread must not try a lock that it holds.
            const auto isUnlocked = [this] {
                return std::make_pair(FileManagerTestAccess::isUnlocked(manager),
                                      FileEntryTestAccess::isUnlocked(FileHandleTestAccess::entry(*file)));
            };
            const auto [managerUnlocked, entryUnlocked] = std::async(std::launch::async, isUnlocked).get();
            EXPECT_TRUE(entryUnlocked) << path;
            const std::string folder = "ramfs/src/";
            EXPECT_EQ(path.substr(0, folder.size()), folder);
            seen.push_back(path.substr(folder.size()) + (managerUnlocked ? "" : " under the lock"));
        });
    }
    ~EmissionLockTest() override { Testing::observeEmissions(nullptr); }

    std::vector<std::string> take() { return std::exchange(seen, {}); }

    FileManagerImpl manager;
    Handle file = manager.create("file", 0, 5);
    std::vector<std::string> seen;
    Testing::EventRecorder recorder; // turns the events on
};

TEST_F(EmissionLockTest, ACreateEmitsUnderItsLockOnlyWhatTheNewEntryTraces)
{
    manager.create("a", 0, 0);
    EXPECT_THAT(take(), ElementsAre("fileManagerImpl.cpp", "fileEntry.cpp under the lock", "fileManagerImpl.cpp",
                                    "fileHandleImpl.cpp"));
    manager.create("a", 0, 0);
    EXPECT_THAT(take(), ElementsAre("fileManagerImpl.cpp", "fileManagerImpl.cpp", "fileManagerImpl.cpp"));
}

TEST_F(EmissionLockTest, AnOpenEmitsUnderItsLockOnlyWhatTheNewHandleTraces)
{
    manager.open("file");
    EXPECT_THAT(take(), ElementsAre("fileManagerImpl.cpp", "fileHandleImpl.cpp under the lock"));
    manager.open(5);
    EXPECT_THAT(take(), ElementsAre("fileManagerImpl.cpp", "fileHandleImpl.cpp under the lock"));
    manager.openAll();
    EXPECT_THAT(take(), ElementsAre("fileHandleImpl.cpp under the lock"));
}

TEST_F(EmissionLockTest, RemovalsAndMarksEmitWithoutTheLock)
{
    std::ostringstream out;
    manager.setDelayedDelete(5);
    manager.remove("file", out, true);
    manager.remove("x", out, true);
    manager.remove(5, out, true);
    manager.removeAll();
    EXPECT_THAT(take(), AllOf(SizeIs(5), Each(std::string("fileManagerImpl.cpp"))));
}

TEST_F(EmissionLockTest, AHandleEmitsWithoutAnyLock)
{
    std::ostringstream out;
    file->setPos(1);
    file->write("abc");
    file->append("abc");
    file->append("abc", 3);
    file->insertHeader("H");
    file->insertHeader(bytes("H"), 1);
    file->appendFooter(bytes("F"), 1);
    file->dump(out);
    file->contentResize(100);
    file->contentResize(1);
    static_cast<void>(file->getCreationTime());
    EXPECT_THAT(take(), AllOf(SizeIs(15), Each(std::string("fileHandleImpl.cpp"))));
}

TEST(OffEventsTest, NoPathIsShortenedForThem)
{
    int emissions = 0;
    Testing::observeEmissions([&](const std::string&) { ++emissions; });
    const auto work = [] {
        FileManagerImpl manager;
        const Handle file = manager.create("file", 0, 5);
        std::ostringstream out;
        file->write("abc");
        file->dump(out);
        EXPECT_EQ(manager.create("file", 0, 5), nullptr);
        manager.removeAll();
    };
    work();
    EXPECT_EQ(emissions, 0);
    {
        const Testing::EventRecorder recorder; // the same work is seen when the events are on
        work();
    }
    EXPECT_EQ(emissions, 12);
    Testing::observeEmissions(nullptr);
}

} // namespace
} // namespace Corvane::RamFs::V1
