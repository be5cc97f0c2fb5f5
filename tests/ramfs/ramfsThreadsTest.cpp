/// Files, the directory and stream buffers used by many threads at once.
#include <atomic>
#include <functional>
#include <future>
#include <ostream>

#include <gtest/gtest.h>

#include "tests/ramfs/ramfsTestSupport.h"
#include "tests/support/startTogether.h"

namespace Corvane::RamFs::V1 {
namespace {

using Testing::startTogether;

constexpr int appenders = 3;
constexpr int records = 1500;

/// Records differ in length, so that a torn one can't look like another.
std::string record(int appender, int number)
{
    return "<" + std::to_string(appender) + ":" + std::to_string(number) + ":" +
           std::string(static_cast<std::size_t>((number * 7 + appender) % 40), static_cast<char>('a' + appender)) + ">";
}

/// Reads `content` record by record: each must be the next one of its appender.
void expectEveryRecordOnceAndInOrder(const std::string& content)
{
    std::vector<int> next(appenders, 0);
    for (std::size_t at = 0; at < content.size();) {
        ASSERT_EQ(content[at], '<');
        const auto appender = static_cast<std::size_t>(content.at(at + 1) - '0');
        ASSERT_LT(appender, next.size());
        const std::string expected = record(static_cast<int>(appender), next[appender]++);
        ASSERT_EQ(content.substr(at, expected.size()), expected);
        at += expected.size();
    }
    EXPECT_EQ(next, std::vector<int>(appenders, records));
}

class RamFsThreadsTest : public testing::Test
{
protected:
    std::function<void()> appending(const std::string& name, int appender)
    {
        return [this, name, appender] {
            const Handle handle = manager.open(name);
            for (int number = 0; number < records; ++number) {
                const std::string text = record(appender, number);
                EXPECT_EQ(handle->append(text), text.size());
            }
        };
    }

    std::function<void()> framing(const std::string& name)
    {
        return [this, name] {
            const Handle handle = manager.open(name);
            for (int round = 0; round < records; ++round) {
                const std::string text(static_cast<std::size_t>(round % 17), 'H');
                handle->insertHeader(text);
                handle->appendFooter(bytes(text.data()), static_cast<unsigned int>(text.size()));
                handle->contentResize(static_cast<unsigned int>(round) * 20);
            }
            handle->insertHeader("");
            handle->appendFooter(nullptr, 0);
        };
    }

    std::function<void()> reading(const std::string& name)
    {
        return [this, name] {
            const Handle handle = manager.open(name);
            for (int round = 0; round < records; ++round) {
                handle->setPos(static_cast<unsigned long>(round) * 11);
                for (const char byte : readText(*handle, 100)) {
                    EXPECT_TRUE(std::isgraph(static_cast<unsigned char>(byte)) != 0) << byte;
                }
                EXPECT_LE(handle->readHeader().size() + handle->readFooter().size(), 32U);
                EXPECT_GE(handle->getUserCount(), 3U);
            }
        };
    }

    std::function<void()> dumping()
    {
        return [this] {
            for (int round = 0; round < 10; ++round) {
                for (const Handle& handle : manager.openAll()) {
                    std::ostringstream out;
                    handle->setPos(handle->getFileSize() / 2);
                    handle->dump(out);
                    handle->setPos(0);
                    handle->readReadable(out, 50);
                }
            }
        };
    }

    /// Creates, finds and removes files of its own.
    std::function<void()> churning(const std::string& prefix, int ref)
    {
        return [this, prefix, ref] {
            for (int round = 0; round < records; ++round) {
                const std::string name = prefix + std::to_string(round % 5);
                EXPECT_TRUE(manager.create(name, 10, ref)->write("abc") == 3);
                EXPECT_TRUE(manager.exists(name));
                EXPECT_TRUE(manager.exists(ref));
                std::ostringstream out;
                if (round % 3 == 0) {
                    EXPECT_TRUE(manager.remove(ref, out, true));
                } else if (round % 3 == 1) {
                    EXPECT_TRUE(manager.remove(prefix, out, true));
                } else {
                    EXPECT_TRUE(manager.setDelayedDelete(ref));
                    EXPECT_EQ(wholeFile(*manager.open(ref)), "abc");
                }
                EXPECT_FALSE(manager.exists(name));
            }
        };
    }

    FileManagerImpl manager;
};

TEST_F(RamFsThreadsTest, EveryAppendedRecordIsInTheFileOnceAndWholeAndInOrder)
{
    manager.create("one", 0, 1);
    manager.create("two", 0, 2);
    startTogether({appending("one", 0), appending("one", 1), appending("one", 2), appending("two", 0),
                   appending("two", 1), appending("two", 2), framing("one"), framing("two"), reading("one"),
                   reading("two"), dumping(), churning("x", 10), churning("y", 20)});
    expectEveryRecordOnceAndInOrder(wholeFile(*manager.open("one")));
    expectEveryRecordOnceAndInOrder(wholeFile(*manager.open("two")));
    EXPECT_EQ(FileManagerTestAccess::fileCount(manager), 2U);
}

TEST_F(RamFsThreadsTest, OnlyOneCreatorOfANameSucceeds)
{
    std::atomic<int> created{0};
    const auto creating = [&] {
        for (int number = 0; number < records; ++number) {
            created += manager.create("file" + std::to_string(number), 0, 0) ? 1 : 0;
        }
    };
    startTogether({creating, creating, creating, creating});
    EXPECT_EQ(created, records);
    // No number was given twice or left out.
    EXPECT_EQ(FileManagerTestAccess::fileRefCounter(manager), records);
    for (int ref = 1; ref <= records; ++ref) {
        EXPECT_TRUE(manager.exists(ref));
    }
}

TEST_F(RamFsThreadsTest, OnlyOneOpenerGetsAFileMarkedForDelayedDeletion)
{
    for (int round = 0; round < 50; ++round) {
        manager.create("a", 0, 5);
        manager.setDelayedDelete(5);
        std::atomic<int> opened{0};
        const auto byName = [&] { opened += manager.open("a") ? 1 : 0; };
        const auto byNumber = [&] { opened += manager.open(5) ? 1 : 0; };
        startTogether({byName, byNumber, byName, byNumber});
        EXPECT_EQ(opened, 1);
        EXPECT_FALSE(manager.exists("a"));
    }
}

TEST_F(RamFsThreadsTest, HandlesWorkWhileTheirFilesAreRemovedAndReplaced)
{
    std::atomic<int> written{0};
    const auto writing = [&] {
        for (int round = 0; round < records; ++round) {
            Handle handle = manager.create("a", 0, 0);
            if (!handle) {
                handle = manager.open("a");
            }
            if (handle) { // it may be gone between the two
                EXPECT_EQ(handle->append("abc"), 3U);
                EXPECT_GE(handle->getFileSize(), 3U);
                ++written;
            }
        }
    };
    startTogether({writing, writing, [&] {
                       for (int round = 0; round < records; ++round) {
                           manager.remove("a", false);
                           manager.removeAll();
                       }
                   }});
    EXPECT_GT(written, 0);
}

TEST(RamFsStreamThreads, EveryThreadStreamsIntoItsOwnFile)
{
    FileManagerIf& manager = FileManagerIf::getInstance();
    manager.removeAll();
    const auto streaming = [&](int thread) {
        const auto buffer = manager.getFileStreamBuf();
        EXPECT_TRUE(buffer->create("stream" + std::to_string(thread), 0, 0));
        std::ostream out(buffer.get());
        for (int number = 0; number < records; ++number) {
            out << record(thread, number);
            if (number % 10 == 0) {
                out << std::flush;
            }
        }
    };
    startTogether({[&] { streaming(0); }, [&] { streaming(1); }, [&] { streaming(2); }});
    for (int thread = 0; thread < 3; ++thread) {
        std::string expected;
        for (int number = 0; number < records; ++number) {
            expected += record(thread, number);
        }
        EXPECT_EQ(wholeFile(*manager.open("stream" + std::to_string(thread))), expected);
    }
    manager.removeAll();
}

/// Waits with its first character until mayGoOn is set.
class SlowBuffer : public std::stringbuf
{
public:
    std::promise<void> reached;
    std::promise<void> mayGoOn;

protected:
    std::streamsize xsputn(const char* text, std::streamsize length) override
    {
        waitOnce();
        return std::stringbuf::xsputn(text, length);
    }
    int_type overflow(int_type c) override
    {
        waitOnce();
        return std::stringbuf::overflow(c);
    }

private:
    void waitOnce()
    {
        if (!m_waited) {
            m_waited = true;
            reached.set_value();
            mayGoOn.get_future().wait();
        }
    }

    bool m_waited = false;
};

class SlowStreamTest : public testing::Test
{
protected:
    SlowStreamTest()
    {
        manager.create("slow", 0, 5)->write("abc");
        manager.create("other", 0, 6)->write("abc");
    }

    /// One thread writes to a slow stream. The stream waits until another thread has used the whole directory.
    std::string writeSlowly(const std::function<void(std::ostream&)>& write)
    {
        SlowBuffer buffer;
        startTogether({[&] {
                           std::ostream out(&buffer);
                           write(out);
                       },
                       [&] {
                           buffer.reached.get_future().wait();
                           useDirectory();
                           buffer.mayGoOn.set_value();
                       }});
        return buffer.str();
    }

    void useDirectory()
    {
        EXPECT_TRUE(manager.exists("other"));
        EXPECT_TRUE(manager.exists(6));
        EXPECT_NE(manager.create("new", 0, 7), nullptr);
        EXPECT_NE(manager.open("new"), nullptr);
        EXPECT_FALSE(manager.openAll().empty());
        EXPECT_TRUE(manager.setDelayedDelete(7));
        EXPECT_NE(manager.open(7), nullptr);
        EXPECT_TRUE(manager.remove("other", false));
        EXPECT_FALSE(manager.remove(6, false));
        manager.removeAll();
    }

    FileManagerImpl manager;
};

TEST_F(SlowStreamTest, AReportByNameHoldsUpNobody)
{
    EXPECT_EQ(writeSlowly([&](std::ostream& out) { manager.remove("slow", out, true); }), "File 'slow' deleted");
}

TEST_F(SlowStreamTest, AReportByNumberHoldsUpNobody)
{
    EXPECT_EQ(writeSlowly([&](std::ostream& out) { manager.remove(5, out, true); }),
              "File with reference number 5 was deleted\n");
}

TEST_F(SlowStreamTest, ADumpHoldsUpNeitherDirectoryNorFile)
{
    const Handle dumped = manager.open("slow");
    const Handle other = manager.open("slow");
    SlowBuffer buffer;
    startTogether({[&] {
                       std::ostream out(&buffer);
                       dumped->dump(out);
                   },
                   [&] {
                       buffer.reached.get_future().wait();
                       EXPECT_EQ(other->append("de"), 2U);
                       useDirectory();
                       buffer.mayGoOn.set_value();
                   }});
    EXPECT_EQ(buffer.str(), "abcde\n");
}

} // namespace
} // namespace Corvane::RamFs::V1
