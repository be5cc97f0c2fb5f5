/// A stream buffer, when the lock of its file or of the directory can't be taken.
#include <functional>
#include <ostream>
#include <string>
#include <system_error>

#include <gtest/gtest.h>

#include "tests/ramfs/ramfsTestSupport.h"
#include "tests/support/lockRecorder.h"

namespace Corvane::RamFs::V1 {
namespace {

using Testing::failEachLock;
using Testing::LockRecorder;

class BufferLocks : public testing::Test
{
protected:
    BufferLocks() { manager.create("b", 0, 6); }
    ~BufferLocks() override { manager.removeAll(); }

    std::string contentOf(const std::string& name) { return wholeFile(*manager.open(name)); }

    FileManagerIf& manager = FileManagerIf::getInstance();
    std::shared_ptr<FileStreamBufIf> buffer = manager.getFileStreamBuf();
    LockRecorder recorder;
};

TEST_F(BufferLocks, ThatFailInAFlushKeepTheTextForTheNextFlush)
{
    buffer->create("a", 0, 5);
    std::ostream out(buffer.get());
    out << "abc";
    EXPECT_EQ(failEachLock(
                  recorder, [&] { buffer->pubsync(); }, [&] { EXPECT_EQ(contentOf("a"), ""); }),
              1U);
    EXPECT_EQ(contentOf("a"), "abc");
    out << "de";
    recorder.failNext({EDEADLK});
    out.flush();
    EXPECT_TRUE(out.bad()) << "a stream catches what its buffer throws";
    EXPECT_EQ(contentOf("a"), "abc");
    out.clear();
    out << "f" << std::flush;
    EXPECT_EQ(contentOf("a"), "abcdef");
}

TEST_F(BufferLocks, ThatFailInCreateOrOpenLeaveTheFormerFileOpenOrTheBufferClosed)
{
    const auto isText = [&] { return contentOf("a") == "abc"; };
    for (const std::function<void()>& operation :
         {std::function<void()>([&] { buffer->create("c", 0, 7); }), std::function<void()>([&] { buffer->open(6); }),
          std::function<void()>([&] { buffer->close(); })}) {
        buffer->create("a", 0, 5);
        std::ostream(buffer.get()) << "abc";
        const std::size_t locks = failEachLock(recorder, operation, [&] {
            EXPECT_FALSE(manager.exists("c"));
            EXPECT_TRUE(isText() || (buffer->isOpen() && buffer->getFileRef() == 5)) << "the text waits or is there";
        });
        EXPECT_GE(locks, 1U);
        EXPECT_TRUE(isText()) << "once";
        buffer->close();
        manager.remove("a", false);
        manager.remove("c", false);
    }
}

TEST_F(BufferLocks, ThatFailInTheDestructorDropTheTextAndThrowNothing)
{
    buffer->create("a", 0, 5);
    std::ostream(buffer.get()) << "abc";
    recorder.failNext({EDEADLK});
    buffer.reset();
    recorder.failNext({});
    EXPECT_EQ(contentOf("a"), "");
    EXPECT_EQ(manager.open("a")->getUserCount(), 3U) << "its handle is released";
}

TEST_F(BufferLocks, ThatFailInAHandlesDumpReachTheCallerAndLeaveTheFile)
{
    const Handle handle = manager.create("a", 0, 5);
    handle->write("abc");
    handle->setPos(0);
    std::ostream nowhere(nullptr);
    for (const std::function<void()>& operation : {std::function<void()>([&] { handle->dump(nowhere); }),
                                                   std::function<void()>([&] { handle->readReadable(nowhere, 100); }),
                                                   std::function<void()>([&] { handle->setPos(0); })}) {
        EXPECT_GE(failEachLock(recorder, operation,
                               [&] {
                                   EXPECT_EQ(wholeFile(*handle), "abc");
                                   handle->setPos(0);
                               }),
                  1U);
    }
}

} // namespace
} // namespace Corvane::RamFs::V1
