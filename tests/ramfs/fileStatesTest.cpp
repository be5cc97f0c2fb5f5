/// Every operation of the directory, of handles and of stream buffers, tried against every state that a file can be in.
#include <functional>
#include <ostream>

#include <gtest/gtest.h>

#include "tests/ramfs/ramfsTestSupport.h"

namespace Corvane::RamFs::V1 {
namespace {

/// A file with the number 5 in one of its states, and what is expected of it.
struct Situation
{
    std::string name = "f";
    std::vector<Handle> handles; // open on a file with the content "old"
    bool nameListed = true;
    std::string listedContent = "old";
    std::size_t filesWithNumber = 1;
    std::size_t files = 1;
    bool marked = false;
    unsigned int userCount = 0;       // as the open handles tell it: owners plus one
    unsigned int listedUserCount = 3; // as a new handle on the listed file tells it
};

struct State
{
    const char* title;
    std::function<void(FileManagerIf&, Situation&)> make;
};

void PrintTo(const State& state, std::ostream* out)
{
    *out << state.title;
}

Handle createOld(FileManagerIf& manager, const std::string& name)
{
    Handle handle = manager.create(name, 0, 5);
    handle->write("old");
    return handle;
}

/// Makes two files with one final name: it tries until both are created in the same second.
void makeReplaced(FileManagerIf& manager, Situation& it)
{
    for (;;) {
        const Handle former = createOld(manager, "f<date>");
        const Handle latter = manager.create("f<date>", 0, 6);
        if (former->getFileName() == latter->getFileName()) {
            latter->write("new");
            it.name = former->getFileName();
            it.handles = {former};
            break;
        }
        manager.removeAll();
    }
    it.listedContent = "new";
    it.filesWithNumber = 0;
    it.userCount = 2;
}

const State states[] = {
    {"Absent",
     [](FileManagerIf&, Situation& it) {
         it.nameListed = false;
         it.filesWithNumber = 0;
         it.files = 0;
     }},
    {"Present", [](FileManagerIf& manager, Situation& it) { createOld(manager, it.name); }},
    {"OpenByOne",
     [](FileManagerIf& manager, Situation& it) {
         it.handles = {createOld(manager, it.name)};
         it.userCount = 3;
         it.listedUserCount = 4;
     }},
    {"OpenByTwo",
     [](FileManagerIf& manager, Situation& it) {
         it.handles = {createOld(manager, it.name), manager.open(it.name)};
         it.userCount = 4;
         it.listedUserCount = 5;
     }},
    {"RemovedWhileOpen",
     [](FileManagerIf& manager, Situation& it) {
         it.handles = {createOld(manager, it.name)};
         manager.remove(it.name, false);
         it.nameListed = false;
         it.filesWithNumber = 0;
         it.files = 0;
         it.userCount = 2;
     }},
    {"ReplacedWhileOpen", makeReplaced},
    {"Marked",
     [](FileManagerIf& manager, Situation& it) {
         createOld(manager, it.name);
         manager.setDelayedDelete(5);
         it.marked = true;
     }},
    {"MarkedWhileOpen",
     [](FileManagerIf& manager, Situation& it) {
         it.handles = {createOld(manager, it.name)};
         manager.setDelayedDelete(5);
         it.marked = true;
         it.userCount = 3;
         it.listedUserCount = 4;
     }},
    {"TakenOutByItsLastOpen",
     [](FileManagerIf& manager, Situation& it) {
         it.handles = {createOld(manager, it.name)};
         manager.setDelayedDelete(5);
         it.handles.push_back(manager.open(5));
         it.nameListed = false;
         it.filesWithNumber = 0;
         it.files = 0;
         it.userCount = 3;
     }},
    {"NumberShared",
     [](FileManagerIf& manager, Situation& it) {
         it.handles = {createOld(manager, it.name)};
         createOld(manager, "g");
         it.filesWithNumber = 2;
         it.files = 2;
         it.userCount = 3;
         it.listedUserCount = 4;
     }},
};

class FileStatesTest : public testing::TestWithParam<State>
{
protected:
    FileStatesTest()
    {
        manager.removeAll();
        GetParam().make(manager, it);
    }

    ~FileStatesTest() override
    {
        // The handles still work, whatever the test did.
        for (const Handle& handle : it.handles) {
            const std::string before = wholeFile(*handle);
            handle->append("!");
            EXPECT_EQ(wholeFile(*handle), before + "!");
        }
        manager.removeAll();
    }

    void expectUnchanged() const
    {
        EXPECT_EQ(manager.exists(it.name), it.nameListed);
        EXPECT_EQ(manager.exists(5), it.filesWithNumber > 0);
        EXPECT_EQ(manager.openAll().size(), it.files);
        for (const Handle& handle : it.handles) {
            EXPECT_EQ(wholeFile(*handle), "old");
        }
    }

    /// Returns  a handle on the file that is listed under the name. Opening it so doesn't take a marked file out.
    Handle listedFile() const
    {
        for (const Handle& handle : manager.openAll()) {
            if (handle->getFileName() == it.name) {
                return handle;
            }
        }
        return nullptr;
    }

    FileManagerIf& manager = FileManagerIf::getInstance();
    Situation it;
};

TEST_P(FileStatesTest, ExistsTellsWhetherTheDirectoryListsIt)
{
    expectUnchanged();
}

TEST_P(FileStatesTest, CreateOfItsNameSucceedsIfNoFileHasTheName)
{
    const Handle handle = manager.create(it.name, 10, 77);
    if (it.nameListed) {
        EXPECT_EQ(handle, nullptr);
        EXPECT_FALSE(manager.exists(77));
        expectUnchanged();
    } else {
        ASSERT_NE(handle, nullptr);
        EXPECT_EQ(handle->getFileSize(), 0U);
        EXPECT_TRUE(manager.exists(it.name));
        EXPECT_TRUE(manager.exists(77));
    }
}

TEST_P(FileStatesTest, CreateOfItsNumberAlwaysSucceeds)
{
    const Handle handle = manager.create("another", 0, 5);
    ASSERT_NE(handle, nullptr);
    EXPECT_TRUE(manager.exists(5));
    EXPECT_EQ(manager.openAll().size(), it.files + 1);
}

TEST_P(FileStatesTest, OpenByNameFindsAListedFileAndTakesAMarkedOneOut)
{
    const Handle handle = manager.open(it.name);
    ASSERT_EQ(handle != nullptr, it.nameListed);
    if (handle) {
        EXPECT_EQ(wholeFile(*handle), it.listedContent);
        EXPECT_EQ(handle->getFileName(), it.name);
    }
    EXPECT_EQ(manager.exists(it.name), it.nameListed && !it.marked);
}

TEST_P(FileStatesTest, OpenByNumberFindsAListedFileAndTakesAMarkedOneOut)
{
    const Handle handle = manager.open(5);
    ASSERT_EQ(handle != nullptr, it.filesWithNumber > 0);
    if (handle) {
        EXPECT_EQ(wholeFile(*handle), "old");
        EXPECT_EQ(handle->getFileRef(), 5);
    }
    EXPECT_EQ(manager.exists(5), it.filesWithNumber > 0 && !it.marked);
}

TEST_P(FileStatesTest, OpenAllOpensEveryListedFileAndChangesNothing)
{
    EXPECT_EQ(manager.openAll().size(), it.files);
    expectUnchanged();
}

TEST_P(FileStatesTest, CloseEmptiesTheHandleAndChangesNoFile)
{
    for (Handle& handle : it.handles) {
        manager.close(handle);
        EXPECT_EQ(handle, nullptr);
    }
    it.handles.clear();
    expectUnchanged();
}

TEST_P(FileStatesTest, RemoveByNameTakesAListedFileOut)
{
    std::ostringstream out;
    EXPECT_EQ(manager.remove(it.name, out, true), it.nameListed);
    EXPECT_EQ(out.str(), it.nameListed ? "File '" + it.name + "' deleted" : "File '");
    EXPECT_FALSE(manager.exists(it.name));
    EXPECT_FALSE(manager.remove(it.name, false));
}

TEST_P(FileStatesTest, RemoveByNumberTakesAllFilesWithTheNumberOut)
{
    std::ostringstream out;
    EXPECT_EQ(manager.remove(5, out, true), it.filesWithNumber > 0);
    EXPECT_EQ(out.str(), it.filesWithNumber > 0 ? "File with reference number 5 was deleted\n" : "");
    EXPECT_FALSE(manager.exists(5));
    EXPECT_EQ(manager.openAll().size(), it.files - it.filesWithNumber);
}

TEST_P(FileStatesTest, RemoveAllTakesEveryFileOut)
{
    manager.removeAll();
    EXPECT_FALSE(manager.exists(it.name));
    EXPECT_FALSE(manager.exists(5));
    EXPECT_TRUE(manager.openAll().empty());
}

TEST_P(FileStatesTest, SetDelayedDeleteMarksAListedFile)
{
    EXPECT_EQ(manager.setDelayedDelete(5), it.filesWithNumber > 0);
    expectUnchanged();
    if (it.filesWithNumber > 0) {
        // open() finds the file that was marked; another one with its number stays.
        EXPECT_NE(manager.open(5), nullptr);
        EXPECT_EQ(manager.openAll().size(), it.files - 1);
    }
}

TEST_P(FileStatesTest, UserCountIsTheOwnersPlusOne)
{
    for (const Handle& handle : it.handles) {
        EXPECT_EQ(handle->getUserCount(), it.userCount);
    }
    const Handle listed = listedFile();
    ASSERT_EQ(listed != nullptr, it.nameListed);
    if (listed) {
        EXPECT_EQ(listed->getUserCount(), it.listedUserCount);
    }
}

TEST_P(FileStatesTest, EveryHandleWritesAndReads)
{
    std::vector<Handle> handles = it.handles;
    if (const Handle listed = listedFile()) {
        handles.push_back(listed);
    }
    ASSERT_EQ(handles.empty(), it.files == 0 && it.handles.empty()) << "only an absent file has nothing to write to";
    unsigned int storage = 0;
    for (const Handle& handle : handles) {
        const bool isNew = wholeFile(*handle) == "new";
        handle->setPos(1);
        EXPECT_EQ(handle->write("xyz"), 3U);
        handle->insertHeader("H");
        handle->appendFooter(bytes("F"), 1);
        EXPECT_EQ(wholeFile(*handle), isNew ? "HnxyzF" : "HoxyzF");
        EXPECT_EQ(textOf(handle->readHeader()) + textOf(handle->readFooter()), "HF");
        storage += 100;
        EXPECT_TRUE(handle->contentResize(storage));
        handle->setPos(0);
        std::ostringstream out;
        handle->dump(out);
        EXPECT_EQ(out.str(), isNew ? "H6E78797AF\n" : "H6F78797AF\n");
        EXPECT_EQ(handle->getFileRef(), isNew ? 6 : 5);
        handle->insertHeader("");
        handle->appendFooter(nullptr, 0);
    }
    if (it.nameListed) {
        EXPECT_EQ(wholeFile(*manager.open(it.name)), it.listedContent == "new" ? "nxyz" : "oxyz");
    }
}

TEST_P(FileStatesTest, AStreamBufferOpensAListedFile)
{
    const auto buffer = manager.getFileStreamBuf();
    EXPECT_EQ(buffer->open(5), it.filesWithNumber > 0);
    EXPECT_EQ(manager.exists(5), it.filesWithNumber > 0 && !it.marked);
    std::ostream(buffer.get()) << "NEW" << std::flush;
    if (buffer->isOpen()) {
        EXPECT_EQ(buffer->getFileRef(), 5);
        const std::string name = buffer->getFileName();
        buffer->close();
        for (const Handle& handle : manager.openAll()) {
            if (handle->getFileName() == name) {
                EXPECT_EQ(wholeFile(*handle).substr(0, 3), "NEW");
            }
        }
    }
}

TEST_P(FileStatesTest, AStreamBufferCreatesAFileIfNoneHasTheName)
{
    const auto buffer = manager.getFileStreamBuf();
    EXPECT_EQ(buffer->create(it.name, 0, 77), !it.nameListed);
    EXPECT_EQ(manager.exists(77), !it.nameListed);
    EXPECT_TRUE(manager.exists(it.name));
}

INSTANTIATE_TEST_SUITE_P(EveryState, FileStatesTest, testing::ValuesIn(states),
                         [](const auto& state) { return std::string(state.param.title); });

} // namespace
} // namespace Corvane::RamFs::V1
