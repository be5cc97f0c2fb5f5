/// What zel.h promises, between threads and between processes.
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <future>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <zel.h>

#include "numberedMessages.h"
#include "tests/support/childProcess.h"

namespace {

using namespace Conformance;
using Corvane::Testing::Companion;
using testing::Each;
using testing::Lt;
using testing::Ne;

/// Another process, which does what it is told in a line.
class Peer : public Companion
{
public:
    Peer() : Companion({"/proc/self/exe", "--peer"}, {}) {}

    ~Peer()
    {
        if (testing::Test::HasFailure()) { // it may wait for what a faulty library doesn't do
            kill(pid(), SIGKILL);
        }
    }

    std::string ask(const std::string& line)
    {
        writeLine(line);
        return readLine();
    }
    std::uint32_t askForId(const std::string& line) { return static_cast<std::uint32_t>(std::stoul(ask(line))); }
};

std::uint32_t create(const std::string& name)
{
    return __zel_create_mailbox(name.c_str(), 0, "", 0);
}

/// Runs on a thread of its own, whose mailbox ends with it.
template <typename Action>
auto onThread(const Action& action)
{
    return std::async(std::launch::async, action).get();
}

void expectNumbered(std::uint32_t count, std::size_t largest)
{
    for (std::uint32_t index = 0; index < count; ++index) {
        zel_msg* message = receive(numberedNo);
        ASSERT_EQ(flawOf(message, index, sizeOfMessage(index, largest)), "");
        __zel_free(&message, "", 0);
    }
}

TEST(Zel, AllocatesAMessageWhoseFirstWordIsItsNumber)
{
    zel_msg* message = __zel_alloc(4, 0x17070D0, "", 0);
    ASSERT_NE(message, nullptr);
    std::uint32_t number = 0;
    std::memcpy(&number, message, sizeof number);
    EXPECT_EQ(number, 0x17070D0U);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(message) % alignof(std::max_align_t), 0U);
    __zel_free(&message, "", 0);
    EXPECT_EQ(message, nullptr);
}

TEST(Zel, CreatesNoMailboxUnderANameThatIsTaken)
{
    const std::string name = uniqueName("taken");
    onThread([&] {
        EXPECT_NE(create(name), noMailbox);
        EXPECT_EQ(onThread([&] { return create(name); }), noMailbox);
        Peer peer;
        EXPECT_EQ(peer.askForId("create " + name), noMailbox);
    });
}

TEST(Zel, FreesANameWithItsThread)
{
    const std::string name = uniqueName("reused");
    EXPECT_NE(onThread([&] { return create(name); }), noMailbox);
    EXPECT_NE(onThread([&] { return create(name); }), noMailbox);
}

TEST(Zel, FreesTheNameOfAKilledProcessAtOnce)
{
    const std::string name = uniqueName("killed");
    Peer peer;
    const std::uint32_t killed = peer.askForId("create " + name);
    EXPECT_NE(killed, noMailbox);
    kill(peer.pid(), SIGKILL);
    EXPECT_EQ(peer.finish(), -SIGKILL);
    onThread([&] {
        const std::uint32_t own = create(name);
        EXPECT_NE(own, noMailbox);
        EXPECT_EQ(locate(name), own);
        sendNumbered(killed, 0, 12); // to nobody
    });
}

TEST(Zel, GivesEveryLivingMailboxAnIdOfItsOwn)
{
    constexpr int count = 8;
    std::vector<std::uint32_t> ids(count);
    std::atomic<int> created{0};
    std::vector<std::thread> threads;
    for (int index = 0; index < count; ++index) {
        threads.emplace_back([&, index] {
            ids[static_cast<std::size_t>(index)] = create(uniqueName("id"));
            for (++created; created < count;) {
                sched_yield();
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(std::set<std::uint32_t>(ids.begin(), ids.end()).size(), ids.size());
    EXPECT_THAT(ids, Each(Ne(0U)));
    EXPECT_THAT(ids, Each(Lt(0xFFF00000U)));
}

TEST(Zel, LocatesAMailboxThatExists)
{
    const std::string name = uniqueName("there");
    Peer peer;
    const std::uint32_t id = peer.askForId("create " + name);
    onThread([&] {
        create(uniqueName("seeker"));
        EXPECT_EQ(locate(name), id);
    });
}

TEST(Zel, LocatesAMailboxAsSoonAsItIsCreated)
{
    const std::string name = uniqueName("later");
    Peer peer;
    onThread([&] {
        create(uniqueName("seeker"));
        zel_msg* reply = __zel_alloc(8, 0x2100, "", 0);
        std::memcpy(reinterpret_cast<unsigned char*>(reply) + 4, "mark", 4);
        __zel_locate_async(name.c_str(), &reply, ownMailbox, "", 0);
        EXPECT_EQ(reply, nullptr);
        EXPECT_EQ(receive(0x2100, 0), nullptr);

        const std::uint32_t id = peer.askForId("create " + name);
        reply = receive(0x2100);
        ASSERT_NE(reply, nullptr);
        EXPECT_EQ(__zel_sender(reply, "", 0), id);
        EXPECT_EQ(std::memcmp(reinterpret_cast<const unsigned char*>(reply) + 4, "mark", 4), 0);
        __zel_free(&reply, "", 0);
    });
}

TEST(Zel, AnswersEveryPendingRequestForItself)
{
    const std::vector<std::string> names = {uniqueName("a"), uniqueName("b"), uniqueName("c")};
    onThread([&] {
        create(uniqueName("seeker"));
        for (std::uint32_t index = 0; index < names.size(); ++index) {
            zel_msg* reply = __zel_alloc(4, 0x2200 + index, "", 0);
            __zel_locate_async(names[index].c_str(), &reply, ownMailbox, "", 0);
        }
        Peer last;
        Peer first;
        const std::uint32_t lastId = last.askForId("create " + names[2]);
        const std::uint32_t firstId = first.askForId("create " + names[0]);
        zel_msg* lastReply = receive(0x2202);
        zel_msg* firstReply = receive(0x2200);
        EXPECT_EQ(__zel_sender(lastReply, "", 0), lastId);
        EXPECT_EQ(__zel_sender(firstReply, "", 0), firstId);
        EXPECT_EQ(receive(0x2201, 0), nullptr);
        __zel_free(&lastReply, "", 0);
        __zel_free(&firstReply, "", 0);
    });
}

TEST(Zel, ReturnsNullWhenTheTimeIsUp)
{
    onThread([&] {
        const std::uint32_t own = create(uniqueName("waits"));
        EXPECT_EQ(receive(numberedNo, 0), nullptr);
        EXPECT_EQ(receive(numberedNo, 20), nullptr);
        sendNumbered(own, 0, 12);
        EXPECT_EQ(receive(numberedNo + 1, 20), nullptr);
        zel_msg* message = receive(numberedNo, 0);
        EXPECT_EQ(flawOf(message, 0, 12), "");
        __zel_free(&message, "", 0);
    });
}

TEST(Zel, TakesAllThatHasArrivedWithoutWaiting)
{
    onThread([&] {
        const std::uint32_t own = create(uniqueName("receiver"));
        Peer peer;
        peer.ask("create " + uniqueName("sender"));
        for (const std::string size : {"100000", "12", "100000"}) {
            EXPECT_EQ(peer.ask("send-one " + std::to_string(own) + " " + size), "sent");
            zel_msg* message = receive(numberedNo, 0);
            EXPECT_EQ(flawOf(message, 0, std::stoul(size)), "");
            __zel_free(&message, "", 0);
        }
    });
}

TEST(Zel, TakesTheFirstMessageThatMatchesAndKeepsTheOthersInOrder)
{
    onThread([&] {
        const std::uint32_t own = create(uniqueName("filters"));
        for (const std::uint32_t number : {0x30U, 0x31U, 0x32U, 0x31U}) {
            zel_msg* message = __zel_alloc(4, number, "", 0);
            __zel_send(&message, own, ownMailbox, "", 0);
        }
        const std::uint32_t lastTwo[] = {2, 0x32, 0x31};
        const std::uint32_t all[] = {3, 0x30, 0x31, 0x32};
        std::vector<std::uint32_t> order;
        for (const std::uint32_t* filter : {lastTwo, lastTwo, all, all}) {
            zel_msg* message = __zel_receive(filter, patience, anySender, "", 0);
            std::uint32_t number = 0;
            std::memcpy(&number, message, sizeof number);
            order.push_back(number);
            __zel_free(&message, "", 0);
        }
        EXPECT_THAT(order, testing::ElementsAre(0x31, 0x32, 0x30, 0x31));
    });
}

TEST(Zel, TakesTheMessagesOfTheOneSenderThatIsWanted)
{
    onThread([&] {
        const std::uint32_t own = create(uniqueName("chooses"));
        Peer one;
        Peer other;
        const std::uint32_t oneId = one.askForId("create " + uniqueName("one"));
        const std::uint32_t otherId = other.askForId("create " + uniqueName("other"));
        EXPECT_EQ(one.ask("send " + std::to_string(own) + " 1 12"), "sent");
        EXPECT_EQ(other.ask("send " + std::to_string(own) + " 1 12"), "sent");
        for (const std::uint32_t sender : {otherId, oneId}) {
            zel_msg* message = receive(numberedNo, patience, sender);
            EXPECT_EQ(__zel_sender(message, "", 0), sender);
            __zel_free(&message, "", 0);
        }
    });
}

TEST(Zel, CarriesMessagesWholeAndInOrderFromAnotherProcess)
{
    onThread([&] {
        const std::uint32_t own = create(uniqueName("receiver"));
        Peer peer;
        peer.ask("create " + uniqueName("sender"));
        peer.writeLine("send " + std::to_string(own) + " 20000 2000");
        ASSERT_NO_FATAL_FAILURE(expectNumbered(20000, 2000));
        EXPECT_EQ(peer.readLine(), "sent");
    });
}

TEST(Zel, CarriesMessagesWholeAndInOrderToAnotherProcess)
{
    onThread([&] {
        create(uniqueName("sender"));
        Peer peer;
        const std::uint32_t id = peer.askForId("create " + uniqueName("receiver"));
        peer.writeLine("receive 20000 2000");
        for (std::uint32_t index = 0; index < 20000; ++index) {
            sendNumbered(id, index, sizeOfMessage(index, 2000));
        }
        EXPECT_EQ(peer.readLine(), "ok");
    });
}

TEST(Zel, CarriesSixteenMebibytes)
{
    onThread([&] {
        const std::uint32_t own = create(uniqueName("receiver"));
        Peer peer;
        peer.ask("create " + uniqueName("sender"));
        const std::size_t sizes[] = {std::size_t{16} << 20U, 12, (std::size_t{16} << 20U) - 1};
        for (const std::size_t size : sizes) {
            peer.writeLine("send-one " + std::to_string(own) + " " + std::to_string(size));
        }
        for (const std::size_t size : sizes) {
            zel_msg* message = receive(numberedNo);
            ASSERT_EQ(flawOf(message, 0, size), "");
            __zel_free(&message, "", 0);
        }

        std::thread sender([&] {
            create(uniqueName("sender"));
            sendNumbered(own, 0, std::size_t{16} << 20U);
        });
        zel_msg* message = receive(numberedNo);
        EXPECT_EQ(flawOf(message, 0, std::size_t{16} << 20U), "");
        __zel_free(&message, "", 0);
        sender.join();
    });
}

TEST(Zel, DeliversWhatWasSentBeforeTheSenderEnded)
{
    onThread([&] {
        const std::uint32_t own = create(uniqueName("receiver"));
        Peer peer;
        peer.ask("create " + uniqueName("sender"));
        EXPECT_EQ(peer.ask("send " + std::to_string(own) + " 100 200"), "sent");
        EXPECT_EQ(peer.finish(), 0);
        expectNumbered(100, 200);
    });
}

TEST(Zel, NeverDeliversPartOfAMessageOfAKilledSender)
{
    onThread([&] {
        const std::uint32_t own = create(uniqueName("receiver"));
        Peer peer;
        peer.ask("create " + uniqueName("sender"));
        constexpr std::size_t largest = std::size_t{4} << 20U;
        peer.writeLine("send " + std::to_string(own) + " 1000 " + std::to_string(largest));
        expectNumbered(3, largest);
        kill(peer.pid(), SIGKILL); // it is in the middle of a message that doesn't fit any buffer
        peer.finish();
        std::uint32_t index = 3;
        while (zel_msg* message = receive(numberedNo, 100)) {
            EXPECT_EQ(flawOf(message, index, sizeOfMessage(index, largest)), "");
            ++index;
            __zel_free(&message, "", 0);
        }
        EXPECT_LT(index, 1000U);
    });
}

TEST(Zel, StopsTheSenderOfAReceiverThatDoesNotRead)
{
    constexpr std::uint32_t count = 128;
    constexpr std::size_t size = std::size_t{1} << 20U;
    constexpr std::uint32_t mostUnderway = 16;
    onThread([&] {
        const std::uint32_t own = create(uniqueName("receiver"));
        std::atomic<std::uint32_t> sent{0};
        std::thread sender([&] {
            create(uniqueName("sender"));
            for (; sent < count; ++sent) {
                sendNumbered(own, sent, size);
            }
        });
        for (std::uint32_t index = 0; index < count; ++index) {
            zel_msg* message = receive(numberedNo);
            ASSERT_EQ(flawOf(message, index, size), "");
            ASSERT_LE(sent, index + mostUnderway); // it runs as far ahead as it can, on a core of its own
            __zel_free(&message, "", 0);
        }
        sender.join();
    });
}

TEST(Zel, KeepsTheOrderOfEachOfManySenders)
{
    constexpr std::uint32_t senders = 8;
    constexpr std::uint32_t count = 5000;
    onThread([&] {
        const std::uint32_t own = create(uniqueName("receiver"));
        std::vector<std::thread> threads;
        for (std::uint32_t sender = 0; sender < senders; ++sender) {
            threads.emplace_back([&] {
                create(uniqueName("sender"));
                for (std::uint32_t index = 0; index < count; ++index) {
                    sendNumbered(own, index, sizeOfMessage(index, 300));
                }
            });
        }
        std::map<std::uint32_t, std::uint32_t> next;
        for (std::uint32_t received = 0; received < senders * count; ++received) {
            zel_msg* message = receive(numberedNo);
            const std::uint32_t index = next[__zel_sender(message, "", 0)]++;
            ASSERT_EQ(flawOf(message, index, sizeOfMessage(index, 300)), "");
            __zel_free(&message, "", 0);
        }
        EXPECT_EQ(next.size(), senders);
        for (std::thread& thread : threads) {
            thread.join();
        }
    });
}

TEST(Zel, DiscardsAMessageToNobody)
{
    onThread([&] {
        create(uniqueName("sender"));
        zel_msg* message = __zel_alloc(100, numberedNo, "", 0);
        __zel_send(&message, 12345, ownMailbox, "", 0);
        EXPECT_EQ(message, nullptr);
    });
}

} // namespace
