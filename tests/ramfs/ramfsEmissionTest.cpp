/// What the file system emits, at each of its sites, with all arguments and in order. The path is the one of the source
/// file, as the site hands it to libtpx, which this program replaces.
#include <ostream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/ramfs/ramfsTestSupport.h"
#include "tests/support/probeRecorder.h"

namespace Corvane::RamFs::V1 {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Testing::ProbedEvent;
using Testing::ProbeRecord;
using Testing::ProbeRecorder;

ProbeRecord byEntry(unsigned int line, const std::string& msg)
{
    return {ProbedEvent::Trace1, "ramfs/src/fileEntry.cpp", line, "-", msg};
}

ProbeRecord byHandle(unsigned int line, const std::string& msg)
{
    return {ProbedEvent::Trace1, "ramfs/src/fileHandleImpl.cpp", line, "-", msg};
}

ProbeRecord byManager(unsigned int line, const std::string& msg)
{
    return {ProbedEvent::Trace1, "ramfs/src/fileManagerImpl.cpp", line, "-", msg};
}

ProbeRecord errorOfManager(unsigned int line, const std::string& msg)
{
    return {ProbedEvent::Error, "ramfs/src/fileManagerImpl.cpp", line, "", msg};
}

TEST(FileEntryEmission, TracesItsConstruction)
{
    ProbeRecorder recorder;
    FileEntry::create(3, 0);
    FileEntry::create(-1, 4000);
    EXPECT_THAT(recorder.take(), ElementsAre(byEntry(28, "FileEntry: 3, initialSize=0"),
                                             byEntry(28, "FileEntry: -1, initialSize=4000")));
}

TEST(FileEntryEmission, TracesNothingElse)
{
    const auto entry = FileEntry::create(3, 0);
    ProbeRecorder recorder;
    unsigned int pos = 0;
    unsigned char buffer[4];
    entry->write(pos, bytes("abc"), 3);
    entry->append(bytes("abc"), 3);
    entry->read(pos, buffer, 4);
    entry->insertHeader(bytes("abc"), 3);
    entry->appendFooter(bytes("abc"), 3);
    entry->readHeader();
    entry->readFooter();
    entry->contentResize(100);
    static_cast<void>(entry->getUserCount());
    entry->setDelayedDelete();
    EXPECT_THAT(recorder.take(), IsEmpty());
}

class FileHandleEmission : public testing::Test
{
protected:
    std::shared_ptr<FileEntry> entry = FileEntry::create(3, 0);
    FileHandleImpl handle{"log", entry};
    ProbeRecorder recorder;
};

TEST_F(FileHandleEmission, AHandleTracesItsConstructionButNotItsDestruction)
{
    {
        const FileHandleImpl other("another", FileEntry::create(-7, 0));
    }
    EXPECT_THAT(recorder.take(), ElementsAre(byEntry(28, "FileEntry: -7, initialSize=0"),
                                             byHandle(29, "FileHandleImpl: another fileRef(-7)")));
}

TEST_F(FileHandleEmission, SetPosTracesTheRequestedOffset)
{
    handle.setPos(1000);
    handle.setPos(0x100000000UL);
    EXPECT_THAT(recorder.take(), ElementsAre(byHandle(34, "setPos: log fileRef(3), offset(1000)"),
                                             byHandle(34, "setPos: log fileRef(3), offset(4294967296)")));
}

TEST_F(FileHandleEmission, EveryFormOfWriteTracesItsCallAndItsResult)
{
    handle.write(bytes("0123456789"), 10);
    handle.write("ab", 2);
    handle.write(std::string("c"));
    EXPECT_THAT(recorder.take(),
                ElementsAre(byHandle(151, "write: log fileRef(3), length(10)"),
                            byHandle(159, "write: FileEntry::write() returns <3 FileEntry::lockFreeWrite() extending "
                                          "file vector to 11 bytes>"),
                            byHandle(151, "write: log fileRef(3), length(2)"),
                            byHandle(159, "write: FileEntry::write() returns <3 FileEntry::lockFreeWrite() extending "
                                          "file vector to 13 bytes>"),
                            byHandle(151, "write: log fileRef(3), length(1)"),
                            byHandle(159, "write: FileEntry::write() returns <3>")));
}

TEST_F(FileHandleEmission, AWriteTracesCorrectionsAndNullData)
{
    handle.contentResize(100);
    handle.insertHeader("HDR:");
    recorder.take();
    handle.write("a");
    handle.setPos(1000);
    handle.appendFooter(bytes("END"), 3);
    handle.setPos(7);
    handle.write("b");
    handle.write(static_cast<const char*>(nullptr), 9);
    EXPECT_THAT(recorder.take(),
                ElementsAre(byHandle(151, "write: log fileRef(3), length(1)"),
                            byHandle(159, "write: FileEntry::write() returns <3 can't update header, Move the offset "
                                          "to the start of the content \n>"),
                            byHandle(34, "setPos: log fileRef(3), offset(1000)"),
                            byHandle(216, "appendFooter: log fileRef(3), length(3)"),
                            byHandle(34, "setPos: log fileRef(3), offset(7)"),
                            byHandle(151, "write: log fileRef(3), length(1)"),
                            byHandle(159, "write: FileEntry::write() returns <3 can't update header, Move the offset "
                                          "to the end of the content \n>"),
                            byHandle(151, "write: log fileRef(3), length(9)"),
                            byHandle(159, "write: FileEntry::write() returns <3 p_buffer is empty>")));
}

TEST_F(FileHandleEmission, AppendByStringTracesLinesOfItsOwn)
{
    handle.contentResize(100);
    recorder.take();
    handle.append(bytes("abc"), 3);
    handle.append("de", 2);
    handle.append(std::string("f"));
    EXPECT_THAT(recorder.take(), ElementsAre(byHandle(175, "append: log fileRef(3), length(3)"),
                                             byHandle(181, "append: FileEntry::write() returns <3>"),
                                             byHandle(175, "append: log fileRef(3), length(2)"),
                                             byHandle(181, "append: FileEntry::write() returns <3>"),
                                             byHandle(192, "append: log fileRef(3), length(1)"),
                                             byHandle(198, "append: FileEntry::write() returns <3>")));
}

TEST_F(FileHandleEmission, EveryFormOfWriteAndAppendTracesItsRefusal)
{
    FileEntryTestAccess::setContentSize(*entry, UINT32_MAX);
    handle.setPos(UINT32_MAX);
    recorder.take();
    handle.write(bytes("x"), 1);
    handle.write("xy", 2);
    handle.write(std::string("x"));
    handle.append(bytes("x"), 1);
    handle.append("xy", 2);
    handle.append(std::string("x"));
    const std::string refused = "returns <3 content can't exceed 4294967295 bytes>";
    EXPECT_THAT(
        recorder.take(),
        ElementsAre(
            byHandle(151, "write: log fileRef(3), length(1)"), byHandle(159, "write: FileEntry::write() " + refused),
            byHandle(151, "write: log fileRef(3), length(2)"), byHandle(159, "write: FileEntry::write() " + refused),
            byHandle(151, "write: log fileRef(3), length(1)"), byHandle(159, "write: FileEntry::write() " + refused),
            byHandle(175, "append: log fileRef(3), length(1)"), byHandle(181, "append: FileEntry::write() " + refused),
            byHandle(175, "append: log fileRef(3), length(2)"), byHandle(181, "append: FileEntry::write() " + refused),
            byHandle(192, "append: log fileRef(3), length(1)"),
            byHandle(198, "append: FileEntry::write() " + refused)));
}

TEST_F(FileHandleEmission, HeaderAndFooterOperationsTraceTheirUnevenTexts)
{
    handle.insertHeader(bytes("HDR:"), 4);
    handle.insertHeader(std::string("HDR"));
    handle.appendFooter(bytes("END"), 3);
    handle.readHeader();
    handle.readFooter();
    EXPECT_THAT(recorder.take(),
                ElementsAre(byHandle(204, "insertHeader: log fileRef(3), length('4')"),
                            byHandle(210, "insertHeader: log fileRef(3)"),
                            byHandle(216, "appendFooter: log fileRef(3), length(3)"),
                            byHandle(223, "readHeader: log fileRef(3)"), byHandle(229, "readFooter: log(fileRef=3)")));
}

TEST_F(FileHandleEmission, ContentResizeTracesItsOutcome)
{
    handle.contentResize(200);
    handle.contentResize(50);
    const std::string text = "contentResize: calling m_fileEntry->contentResize() with m_fileRef = 3, new size = ";
    EXPECT_THAT(recorder.take(), ElementsAre(byHandle(268, text + "200 succeeds"), byHandle(264, text + "50 failed")));
}

TEST_F(FileHandleEmission, AskingForTheCreationTimeIsTracedAndOtherQuestionsAreNot)
{
    static_cast<void>(handle.getCreationTime());
    static_cast<void>(handle.getFileName());
    static_cast<void>(handle.getFileRef());
    static_cast<void>(handle.getFileSize());
    static_cast<void>(handle.getUserCount());
    unsigned char byte = 0;
    handle.read(&byte, 1);
    EXPECT_THAT(
        recorder.take(),
        ElementsAre(byHandle(251, "getCreationTime: calling m_fileEntry->getCreationTime() with m_fileRef = 3")));
}

TEST_F(FileHandleEmission, ADumpTracesThatItReadsHeaderAndFooter)
{
    std::ostringstream out;
    handle.dump(out);
    handle.readReadable(out, 10);
    const ProbeRecord header = byHandle(223, "readHeader: log fileRef(3)");
    const ProbeRecord footer = byHandle(229, "readFooter: log(fileRef=3)");
    EXPECT_THAT(recorder.take(), ElementsAre(header, footer, header, footer));
}

class FileManagerEmission : public testing::Test
{
protected:
    FileManagerImpl manager;
    ProbeRecorder recorder;
};

TEST_F(FileManagerEmission, ACreateThatSucceedsTracesItsBeginningAndItsEnd)
{
    manager.create("a", 10, 0);
    manager.create("b", 0, -7);
    EXPECT_THAT(
        recorder.take(),
        ElementsAre(
            byManager(47, "create: fileName=a,initialSize=10,fileRef=0)"), byEntry(28, "FileEntry: 1, initialSize=10"),
            byManager(91, "create: 0,fileName=a,fileReference=1"), byHandle(29, "FileHandleImpl: a fileRef(1)"),
            byManager(47, "create: fileName=b,initialSize=0,fileRef=-7)"), byEntry(28, "FileEntry: -7, initialSize=0"),
            byManager(91, "create: -7,fileName=b,fileReference=-7"), byHandle(29, "FileHandleImpl: b fileRef(-7)")));
}

TEST_F(FileManagerEmission, ACreateTracesTheGivenNameAndItsHandleTheFinalOne)
{
    const Handle handle = manager.create("log_<date>", 0, 0);
    EXPECT_THAT(recorder.take(), ElementsAre(byManager(47, "create: fileName=log_<date>,initialSize=0,fileRef=0)"),
                                             byEntry(28, "FileEntry: 1, initialSize=0"),
                                             byManager(91, "create: 0,fileName=log_<date>,fileReference=1"),
                                             byHandle(29, "FileHandleImpl: " + handle->getFileName() + " fileRef(1)")));
}

TEST_F(FileManagerEmission, ACreateThatFailsTracesAnErrorToo)
{
    manager.create("a", 0, 0);
    recorder.take();
    manager.create("a", 4294967295, 0);
    manager.create("a", 5, 9);
    EXPECT_THAT(recorder.take(), ElementsAre(byManager(47, "create: fileName=a,initialSize=4294967295,fileRef=0)"),
                                             byManager(91, "create: 0,fileName=a,fileReference=0"),
                                             errorOfManager(95, "file (a) already exists"),
                                             byManager(47, "create: fileName=a,initialSize=5,fileRef=9)"),
                                             byManager(91, "create: 9,fileName=a,fileReference=9"),
                                             errorOfManager(95, "file (a) already exists")));
}

TEST_F(FileManagerEmission, OpenTracesTheNameOrTheNumber)
{
    manager.create("a", 0, 5);
    recorder.take();
    manager.open("a");
    manager.open("b");
    manager.open(5);
    manager.open(-6);
    EXPECT_THAT(recorder.take(),
                ElementsAre(byManager(104, "open: fileName(a)"), byHandle(29, "FileHandleImpl: a fileRef(5)"),
                            byManager(104, "open: fileName(b)"), byManager(126, "open: fileRef(5)"),
                            byHandle(29, "FileHandleImpl: a fileRef(5)"), byManager(126, "open: fileRef(-6)")));
}

TEST_F(FileManagerEmission, RemovalsAndMarksTraceTheirUnevenTexts)
{
    std::ostringstream out;
    manager.remove("a", out, true);
    manager.remove("b", false);
    manager.remove(5, out, true);
    manager.remove(-6, false);
    manager.removeAll();
    manager.setDelayedDelete(7);
    EXPECT_THAT(recorder.take(),
                ElementsAre(byManager(180, "remove: filename(a)"), byManager(180, "remove: filename(b)"),
                            byManager(269, "remove fileRef(5)"), byManager(269, "remove fileRef(-6)"),
                            byManager(303, "removeAll"), byManager(310, "setDelayedDelete fileRef(7)")));
}

TEST_F(FileManagerEmission, OpenAllTracesItsHandlesAndExistsAndCloseTraceNothing)
{
    manager.create("a", 0, 5);
    recorder.take();
    auto handles = manager.openAll();
    EXPECT_THAT(recorder.take(), ElementsAre(byHandle(29, "FileHandleImpl: a fileRef(5)")));
    manager.close(handles.front());
    EXPECT_TRUE(manager.exists("a"));
    EXPECT_TRUE(manager.exists(5));
    manager.getFileStreamBuf();
    EXPECT_THAT(recorder.take(), IsEmpty());
}

TEST(FileStreamBufEmission, ABufferTracesOnlyWhatItsManagerAndHandleTrace)
{
    FileManagerIf& manager = FileManagerIf::getInstance();
    const auto buffer = manager.getFileStreamBuf();
    buffer->create("a", 100, 5);
    ProbeRecorder recorder;
    std::ostream(buffer.get()) << "abc" << std::flush << std::flush;
    EXPECT_FALSE(buffer->open(6));
    buffer->close();
    EXPECT_THAT(recorder.take(), ElementsAre(byHandle(151, "write: a fileRef(5), length(3)"),
                                             byHandle(159, "write: FileEntry::write() returns <5>"),
                                             byHandle(151, "write: a fileRef(5), length(0)"),
                                             byHandle(159, "write: FileEntry::write() returns <5>"),
                                             byHandle(151, "write: a fileRef(5), length(0)"),
                                             byHandle(159, "write: FileEntry::write() returns <5>"),
                                             byManager(126, "open: fileRef(6)")));
    manager.removeAll();
}

TEST(FileStreamBufEmission, ADestructorTracesTheWriteOfItsText)
{
    FileManagerIf& manager = FileManagerIf::getInstance();
    auto buffer = manager.getFileStreamBuf();
    buffer->create("a", 100, 5);
    std::ostream(buffer.get()) << "abc";
    ProbeRecorder recorder;
    buffer.reset();
    EXPECT_THAT(recorder.take(), ElementsAre(byHandle(151, "write: a fileRef(5), length(3)"),
                                             byHandle(159, "write: FileEntry::write() returns <5>")));
    manager.removeAll();
}

TEST(FileStreamBufEmission, ADestructorOfAnOpenBufferTracesAWriteEvenWithoutText)
{
    FileManagerIf& manager = FileManagerIf::getInstance();
    auto buffer = manager.getFileStreamBuf();
    auto closed = manager.getFileStreamBuf();
    buffer->create("a", 100, 5);
    ProbeRecorder recorder;
    buffer.reset();
    closed.reset();
    EXPECT_THAT(recorder.take(), ElementsAre(byHandle(151, "write: a fileRef(5), length(0)"),
                                             byHandle(159, "write: FileEntry::write() returns <5>")));
    manager.removeAll();
}

} // namespace
} // namespace Corvane::RamFs::V1
