/// What the stand-in for libzel chose where its contract says "Stand-in".
#include <algorithm>
#include <atomic>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <future>
#include <iterator>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/platform/zelStandinFixture.h"

namespace {

using namespace Conformance;
using namespace Corvane::Testing;

bool isAsleep(pid_t thread)
{
    std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/stat");
    std::string line;
    std::getline(file, line);
    return line.compare(line.rfind(')'), 3, ") S") == 0; // from the last one: a name may have some of its own
}

unsigned long timesAsleep(pid_t thread)
{
    std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/status");
    const std::string field = "voluntary_ctxt_switches:";
    for (std::string word; file >> word;) {
        unsigned long count = 0;
        if (word == field && file >> count) {
            return count;
        }
    }
    throw std::runtime_error("no " + field);
}

int inotifyDescriptors()
{
    int count = 0;
    for (const auto& descriptor : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code closed; // by another thread, or the one that the iterator uses
        count += std::filesystem::read_symlink(descriptor, closed) == "anon_inode:inotify" ? 1 : 0;
    }
    return count;
}

TEST_F(ZelStandin, TellsTheSizeOfAMessage)
{
    onThread([] {
        const std::uint32_t own = create("own");
        zel_msg* message = __zel_alloc(31, 5, "", 0);
        EXPECT_EQ(zel_standin_size(message), 31U);
        EXPECT_EQ(__zel_sender(message, "", 0), noMailbox);
        __zel_free(&message, "", 0);
        EXPECT_EQ(zel_standin_size(nullptr), 0U);
        onThread([own] {
            create("sender");
            sendNumbered(own, 0, 1234);
        });
        message = receive(numberedNo);
        EXPECT_EQ(zel_standin_size(message), 1234U);
        __zel_free(&message, "", 0);
    });
}

TEST_F(ZelStandin, AllocatesFourBytesToSixtyFourMebibytes)
{
    for (const std::size_t size : {std::size_t{0}, std::size_t{3}, 64 * mebibyte + 1, SIZE_MAX}) {
        EXPECT_EQ(__zel_alloc(size, 1, "", 0), nullptr) << size;
    }
    for (const std::size_t size : {std::size_t{4}, 64 * mebibyte}) {
        zel_msg* message = __zel_alloc(size, 1, "", 0);
        EXPECT_EQ(zel_standin_size(message), size);
        __zel_free(&message, "", 0);
    }
}

TEST_F(ZelStandin, TakesAnyBytesOfANameUpToSixty)
{
    for (const std::string& name : {std::string("../x"), std::string("a/b c%.\n\xFF"), std::string(60, '/')}) {
        onThread([&] {
            const std::uint32_t id = create(name);
            EXPECT_NE(id, noMailbox);
            EXPECT_EQ(locate(name), id);
        });
    }
    onThread([] { EXPECT_EQ(create(std::string(61, 'n')), noMailbox); });
    onThread([] { EXPECT_EQ(create(""), noMailbox); });
    onThread([] { EXPECT_EQ(__zel_create_mailbox(nullptr, 0, "", 0), noMailbox); });
    onThread([] { EXPECT_EQ(__zel_create_mailbox("flagged", 1, "", 0), noMailbox); });
}

TEST_F(ZelStandin, GivesAThreadOneMailbox)
{
    onThread([] {
        EXPECT_NE(create("first"), noMailbox);
        EXPECT_EQ(create("second"), noMailbox);
        EXPECT_NE(onThread([] { return create("second"); }), noMailbox);
    });
}

TEST_F(ZelStandin, DropsWhatAThreadWithoutAMailboxAsksFor)
{
    zel_msg* message = __zel_alloc(4, 1, "", 0);
    __zel_send(&message, 1, ownMailbox, "", 0);
    EXPECT_EQ(message, nullptr);
    message = __zel_alloc(4, 1, "", 0);
    __zel_locate_async("own", &message, ownMailbox, "", 0);
    EXPECT_EQ(message, nullptr);
    EXPECT_EQ(__zel_receive(nullptr, 0xFFFFFFFF, anySender, "", 0), nullptr);
    zel_standin_close_mailbox();
}

TEST_F(ZelStandin, DropsRequestsInAnotherSendersNameAndNullMessages)
{
    onThread([] {
        const std::uint32_t own = create("own");
        zel_msg* message = __zel_alloc(4, 1, "", 0);
        __zel_send(&message, own, 1, "", 0);
        EXPECT_EQ(message, nullptr);
        message = __zel_alloc(4, 1, "", 0);
        __zel_locate_async("own", &message, 1, "", 0);
        message = __zel_alloc(4, 1, "", 0);
        __zel_locate_async(nullptr, &message, ownMailbox, "", 0);
        EXPECT_EQ(message, nullptr);
        for (zel_msg** nothing : {static_cast<zel_msg**>(nullptr), &message}) {
            __zel_send(nothing, own, ownMailbox, "", 0);
            __zel_locate_async("own", nothing, ownMailbox, "", 0);
            __zel_free(nothing, "", 0);
        }
        EXPECT_EQ(__zel_sender(nullptr, "", 0), noMailbox);
        EXPECT_EQ(__zel_receive(nullptr, 0, anySender, "", 0), nullptr);
    });
}

TEST_F(ZelStandin, ReceivesEveryNumberWithoutAFilterOrWithACountOfZero)
{
    onThread([] {
        const std::uint32_t own = create("own");
        const std::uint32_t none[] = {0};
        for (const std::uint32_t* filter : {static_cast<const std::uint32_t*>(nullptr), none}) {
            sendNumbered(own, 3, 20);
            zel_msg* message = __zel_receive(filter, 0, anySender, "", 0);
            EXPECT_EQ(flawOf(message, 3, 20), "");
            __zel_free(&message, "", 0);
        }
    });
}

TEST_F(ZelStandin, ReceivesWhatHadArrivedAfterItWasClosed)
{
    onThread([] {
        const std::uint32_t own = create("own");
        onThread([own] {
            create("sender");
            for (std::uint32_t index = 0; index < 50; ++index) {
                sendNumbered(own, index, 1000);
            }
        });
        zel_standin_close_mailbox();
        onThread([own] {
            EXPECT_NE(create("own"), noMailbox);
            sendNumbered(own, 50, 1000); // to nobody
        });
        for (std::uint32_t index = 0; index < 50; ++index) {
            zel_msg* message = receive(numberedNo);
            ASSERT_EQ(flawOf(message, index, 1000), "");
            __zel_free(&message, "", 0);
        }
        EXPECT_EQ(receive(numberedNo, 0xFFFFFFFF), nullptr); // or this test hangs
    });
}

TEST_F(ZelStandin, FreesItsSenderWhenItIsClosed)
{
    onThread([] {
        const std::uint32_t own = create("own");
        std::thread sender([own] {
            create("sender");
            for (std::uint32_t index = 0; index < 8; ++index) {
                sendNumbered(own, index, mebibyte); // waits, and returns, or this test hangs
            }
        });
        zel_msg* message = receive(numberedNo);
        EXPECT_EQ(flawOf(message, 0, mebibyte), "");
        __zel_free(&message, "", 0);
        zel_standin_close_mailbox();
        sender.join();
    });
}

TEST_F(ZelStandin, LetsASenderWaitWhoseMessagesAreNotWanted)
{
    onThread([] {
        const std::uint32_t own = create("own");
        constexpr std::uint32_t count = 32;
        std::atomic<std::uint32_t> sent{0};
        std::thread sender([&sent, own] {
            create("sender");
            for (; sent < count; ++sent) {
                sendNumbered(own, sent, mebibyte);
            }
        });
        zel_msg* message = receive(numberedNo);
        __zel_free(&message, "", 0);
        EXPECT_EQ(receive(numberedNo + 1, 500), nullptr); // it has as long to send them all
        EXPECT_LT(sent, count);
        for (std::uint32_t index = 1; index < count; ++index) {
            message = receive(numberedNo);
            ASSERT_EQ(flawOf(message, index, mebibyte), "");
            __zel_free(&message, "", 0);
        }
        sender.join();
    });
}

TEST_F(ZelStandin, WaitsForANameAsleepUntilTheKernelTells)
{
    std::promise<pid_t> waiting;
    std::promise<std::uint32_t> found;
    std::thread seeker([&] {
        create("seeker");
        zel_msg* reply = __zel_alloc(4, 0x2100, "", 0);
        __zel_locate_async("later", &reply, ownMailbox, "", 0);
        EXPECT_EQ(receive(0x2100, 0), nullptr);
        waiting.set_value(::gettid());
        reply = receive(0x2100);
        found.set_value(__zel_sender(reply, "", 0));
        __zel_free(&reply, "", 0);
    });
    const pid_t thread = waiting.get_future().get();
    while (!isAsleep(thread)) {
        std::this_thread::yield();
    }
    EXPECT_EQ(inotifyDescriptors(), 1);
    const unsigned long before = timesAsleep(thread);
    onThread([&] {
        create("unrelated");
        EXPECT_EQ(receive(numberedNo, 3000), nullptr); // the seeker has as long to wake up by itself
    });
    EXPECT_LE(timesAsleep(thread), before + 20); // the kernel tells of the unrelated mailbox's files
    onThread([&] {
        const std::uint32_t id = create("later");
        EXPECT_EQ(found.get_future().get(), id);
    });
    seeker.join();
}

TEST_F(ZelStandin, KeepsNoDescriptorOfAReceiverThatHasGone)
{
    const auto descriptors = [] {
        const std::filesystem::directory_iterator all("/proc/self/fd");
        return std::distance(begin(all), end(all));
    };
    onThread([&] {
        create("sender");
        const auto before = descriptors();
        for (std::uint32_t round = 0; round < 20; ++round) {
            std::promise<std::uint32_t> created;
            std::thread receiver([&] {
                created.set_value(create("receiver"));
                zel_msg* message = receive(numberedNo);
                EXPECT_EQ(flawOf(message, round, 100), "");
                __zel_free(&message, "", 0);
            });
            sendNumbered(created.get_future().get(), round, 100);
            receiver.join();
        }
        EXPECT_LE(descriptors(), before + 1); // the last one's
    });
}

TEST_F(ZelStandin, ClearsAwayWhatAKilledProcessLeft)
{
    const pid_t killed = ::fork();
    if (killed == 0) {
        _exit(create("own") != noMailbox ? 0 : 1); // runs no destructor
    }
    int status = -1;
    ::waitpid(killed, &status, 0);
    EXPECT_EQ(status, 0);
    const auto files = [this] {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(meetingPoint())) {
            names.push_back(entry.path().filename().string().substr(0, 5));
        }
        std::sort(names.begin(), names.end());
        return names;
    };
    EXPECT_EQ(files().size(), 3U);
    onThread([&] {
        EXPECT_NE(create("own"), noMailbox);
        EXPECT_EQ(files().size(), 3U);
    });
    EXPECT_THAT(files(), testing::ElementsAre("lock-"));
}

} // namespace
