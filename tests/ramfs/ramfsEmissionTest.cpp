/// What is emitted where the random operations of the model don't come: when a file is full, and when nothing is
/// flushed. The path is the one that the site hands to libtpx, which this program replaces.
#include <cstdint>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <testing/eventRecorder.h>

#include "tests/ramfs/ramfsTestSupport.h"

namespace Corvane::RamFs::V1 {
namespace {

using testing::ElementsAre;
using Testing::Event;
using Testing::EventName;
using Testing::EventRecorder;

Event byHandle(unsigned int line, const std::string& msg)
{
    return {EventName::Trace1, "ramfs/src/fileHandleImpl.cpp", line, "-", msg};
}

TEST(FileHandleEmission, EveryFormOfWriteAndAppendTracesItsRefusal)
{
    const auto entry = FileEntry::create(3, 0);
    FileHandleImpl handle("log", entry);
    FileEntryTestAccess::setContentSize(*entry, UINT32_MAX);
    handle.setPos(UINT32_MAX);
    EventRecorder recorder;
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

TEST(FileStreamBufEmission, AFlushOfNothingIsAWriteOfNothing)
{
    FileStreamBufImpl buffer;
    buffer.create("empty flush", 0, 9);
    EventRecorder recorder;
    buffer.pubsync();
    EXPECT_THAT(recorder.take(), ElementsAre(byHandle(151, "write: empty flush fileRef(9), length(0)"),
                                             byHandle(159, "write: FileEntry::write() returns <9>")));
    FileManagerIf::getInstance().removeAll();
}

} // namespace
} // namespace Corvane::RamFs::V1
