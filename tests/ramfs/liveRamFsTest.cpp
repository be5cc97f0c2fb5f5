/// Records the events of an application that uses the file system with LTTng, and compares every field.
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/liveSession.h"

namespace {

using Corvane::Testing::LiveSession;
using Corvane::Testing::RecordedEvent;
using Corvane::Testing::Recording;

RecordedEvent trace1(const std::string& file, const std::string& line, const std::string& msg)
{
    return {"TRACE1",
            "TRACE_DEBUG_PROGRAM (8)",
            {{"file", "src/" + file + ".cpp"}, {"line", line}, {"obj", "-"}, {"msg", msg}}};
}

RecordedEvent entry(const std::string& line, const std::string& msg)
{
    return trace1("fileEntry", line, msg);
}

RecordedEvent handle(const std::string& line, const std::string& msg)
{
    return trace1("fileHandleImpl", line, msg);
}

RecordedEvent manager(const std::string& line, const std::string& msg)
{
    return trace1("fileManagerImpl", line, msg);
}

/// The two events of a write of `length` bytes with a result text.
void addWrite(std::vector<RecordedEvent>& events, const std::string& operation, const std::string& lines,
              const std::string& length, const std::string& result)
{
    events.push_back(handle(lines.substr(0, 3), operation + ": log fileRef(1), length(" + length + ")"));
    events.push_back(handle(lines.substr(4), operation + ": FileEntry::write() returns <" + result + ">"));
}

std::vector<RecordedEvent> eventsOfHandle()
{
    const std::string growth = " FileEntry::lockFreeWrite() extending file vector to ";
    const std::string toStart = " can't update header, Move the offset to the start of the content \n";
    const std::string toEnd = " can't update header, Move the offset to the end of the content \n";
    const std::string resize = "contentResize: calling m_fileEntry->contentResize() with m_fileRef = 1, new size = ";
    std::vector<RecordedEvent> events;
    addWrite(events, "write", "151,159", "10", "1" + growth + "11 bytes");
    events.push_back(handle("34", "setPos: log fileRef(1), offset(100)"));
    addWrite(events, "write", "151,159", "2", "1" + growth + "13 bytes");
    events.push_back(handle("210", "insertHeader: log fileRef(1)"));
    events.push_back(handle("204", "insertHeader: log fileRef(1), length('4')"));
    events.push_back(handle("216", "appendFooter: log fileRef(1), length(3)"));
    events.push_back(handle("34", "setPos: log fileRef(1), offset(0)"));
    addWrite(events, "write", "151,159", "1", "1" + toStart);
    addWrite(events, "append", "175,181", "1", "1" + toEnd);
    addWrite(events, "append", "175,181", "1", "1" + toEnd + growth + "15 bytes");
    addWrite(events, "append", "192,198", "1", "1" + toEnd);
    events.push_back(handle("223", "readHeader: log fileRef(1)"));
    events.push_back(handle("229", "readFooter: log(fileRef=1)"));
    events.push_back(handle("268", resize + "100 succeeds"));
    events.push_back(handle("264", resize + "50 failed"));
    events.push_back(handle("251", "getCreationTime: calling m_fileEntry->getCreationTime() with m_fileRef = 1"));
    events.push_back(handle("34", "setPos: log fileRef(1), offset(0)"));
    events.push_back(handle("223", "readHeader: log fileRef(1)"));
    events.push_back(handle("229", "readFooter: log(fileRef=1)"));
    return events;
}

[[maybe_unused]] std::vector<RecordedEvent> eventsOfUseRamFs()
{
    std::vector<RecordedEvent> events = {
        manager("47", "create: fileName=log,initialSize=0,fileRef=0)"),
        entry("28", "FileEntry: 1, initialSize=0"),
        manager("91", "create: 0,fileName=log,fileReference=1"),
        handle("29", "FileHandleImpl: log fileRef(1)"),
        manager("47", "create: fileName=log,initialSize=5,fileRef=9)"),
        manager("91", "create: 9,fileName=log,fileReference=9"),
        {"ERROR",
         "TRACE_ERR (3)",
         {{"file", "src/fileManagerImpl.cpp"}, {"line", "95"}, {"msg", "file (log) already exists"}}},
    };
    const std::vector<RecordedEvent> ofHandle = eventsOfHandle();
    events.insert(events.end(), ofHandle.begin(), ofHandle.end());
    const std::vector<RecordedEvent> rest = {
        manager("104", "open: fileName(log)"),
        handle("29", "FileHandleImpl: log fileRef(1)"),
        manager("126", "open: fileRef(1)"),
        handle("29", "FileHandleImpl: log fileRef(1)"),
        handle("29", "FileHandleImpl: log fileRef(1)"),
        manager("310", "setDelayedDelete fileRef(1)"),
        manager("180", "remove: filename(lo)"),
        manager("269", "remove fileRef(1)"),
        manager("47", "create: fileName=stream,initialSize=10,fileRef=-2)"),
        entry("28", "FileEntry: -2, initialSize=10"),
        manager("91", "create: -2,fileName=stream,fileReference=-2"),
        handle("29", "FileHandleImpl: stream fileRef(-2)"),
        handle("151", "write: stream fileRef(-2), length(4)"),
        handle("159", "write: FileEntry::write() returns <-2>"),
        handle("151", "write: stream fileRef(-2), length(0)"),
        handle("159", "write: FileEntry::write() returns <-2>"),
        manager("126", "open: fileRef(7)"),
        manager("303", "removeAll"),
    };
    events.insert(events.end(), rest.begin(), rest.end());
    return events;
}

TEST(LiveRamFs, RecordsEveryFieldOfEveryOperationThatEmits)
{
#ifdef CORVANE_TEST_SANITIZED
    GTEST_SKIP() << "a live recording is not made under a sanitizer";
#else
    LiveSession session;
    if (!session.whyNot().empty()) {
        GTEST_SKIP() << session.whyNot();
    }
    const auto result = session.run({CORVANE_USE_RAMFS});
    EXPECT_EQ(result.status, 0) << result.out << result.err;
    const Recording recording = session.finish();
    EXPECT_THAT(recording.events, testing::ElementsAreArray(eventsOfUseRamFs()));
#endif
}

} // namespace
