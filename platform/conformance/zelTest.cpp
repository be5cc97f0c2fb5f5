// SPDX-License-Identifier: MIT
/// What zel.h promises, between threads and between processes.
#include <atomic>
#include <map>
#include <set>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "suite.h"

namespace {

using namespace Conformance;

/// Returns  a message of a series, whose sizes are spread from 12 bytes to `largest`.
Numbered inSeries(std::uint32_t index, std::size_t largest)
{
    const std::uint32_t spread = index * 2654435761U + 13U; // neighbours are far apart
    return {index, 12 + spread % (largest - 11)};
}

void sendSeries(std::uint32_t to, std::uint32_t count, std::size_t largest)
{
    for (std::uint32_t index = 0; index < count; ++index) {
        inSeries(index, largest).sendTo(to);
    }
}

/// Returns  how many messages of a series come whole and in order.
std::uint32_t receiveSeries(std::uint32_t count, std::size_t largest, std::uint32_t timeoutMs = patienceMs)
{
    std::uint32_t index = 0;
    while (index < count && inSeries(index, largest).isNext(timeoutMs)) {
        ++index;
    }
    return index;
}

/// Makes a function for a peer with a mailbox, which sends to the mailbox that it hears of.
template <typename Send>
auto sender(const Send& send)
{
    return [send](const Peer& test) {
        test.tell(create("sender"));
        send(test.hear());
        test.tell(1);
        test.hear(); // its mailbox lives until the test has seen all
    };
}

TEST(Zel, LocatesTheOldestOfTheLivingMailboxesOfAName)
{
    Peer first(holdName("shared"));
    Peer second(holdName("shared"));
    const auto locate = [](std::uint32_t timeoutMs) { return ask("shared", 0x2000), located(0x2000, timeoutMs); };
    EXPECT_NE(create("seeker"), ZEL_NO_MAILBOX);
    EXPECT_EQ(create("another of this thread"), ZEL_NO_MAILBOX);
    first.tell(1);
    const std::uint32_t firstId = first.hear();
    second.tell(1);
    const std::uint32_t secondId = second.hear();
    std::thread([&] {
        const std::uint32_t third = create("shared");
        EXPECT_EQ(std::set<std::uint32_t>({firstId, secondId, third, ZEL_NO_MAILBOX}).size(), 4U);
        EXPECT_EQ(locate(patienceMs), firstId);
    }).join();
    first.kill();
    first.finish();
    EXPECT_EQ(locate(patienceMs), secondId);
    for (const std::uint32_t nobody : {firstId, 12345U}) {
        Numbered{0, 12}.sendTo(nobody); // returns, or this test hangs
    }
    second.tell(1);
    EXPECT_EQ(second.finish(), 0);
    EXPECT_EQ(locate(100), ZEL_NO_MAILBOX);
}

TEST(Zel, AnswersEachRequestAsSoonAsItsMailboxIsCreated)
{
    Peer first(holdName("a"));
    Peer last(holdName("c"));
    create("seeker");
    zel_msg* reply = __zel_alloc(8, 0x2200, "", 0);
    std::memcpy(static_cast<unsigned char*>(static_cast<void*>(reply)) + 4, "mark", 4);
    __zel_locate_async("a", &reply, ZEL_OWN_MAILBOX, "", 0);
    EXPECT_EQ(reply, nullptr);
    ask("b", 0x2201);
    ask("c", 0x2202);
    EXPECT_EQ(receive(0x2200, 0), nullptr);
    last.tell(1);
    EXPECT_EQ(located(0x2202), last.hear());
    first.tell(1);
    reply = receive(0x2200);
    ASSERT_NE(reply, nullptr);
    EXPECT_EQ(__zel_sender(reply, "", 0), first.hear());
    EXPECT_EQ(std::memcmp(static_cast<unsigned char*>(static_cast<void*>(reply)) + 4, "mark", 4), 0);
    __zel_free(&reply, "", 0);
    EXPECT_EQ(located(0x2201, 0), ZEL_NO_MAILBOX);
}

TEST(Zel, TakesTheFirstMessageThatMatchesInTimeAndKeepsTheOthersInOrder)
{
    const std::uint32_t own = create("own");
    EXPECT_EQ(receive(0x30, 0), nullptr);
    for (const std::uint32_t number : {0x30U, 0x31U, 0x32U, 0x31U}) {
        zel_msg* message = __zel_alloc(4, number, "", 0);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(message) % alignof(std::max_align_t), 0U);
        __zel_send(&message, own, ZEL_OWN_MAILBOX, "", 0);
    }
    EXPECT_EQ(receive(0x33, 20), nullptr); // the time is up
    const std::uint32_t lastTwo[] = {2, 0x32, 0x31};
    const std::uint32_t all[] = {3, 0x30, 0x31, 0x32};
    std::vector<std::uint32_t> order;
    for (const std::uint32_t* filter : {lastTwo, lastTwo, all, all}) {
        zel_msg* message = __zel_receive(filter, 0, ZEL_ANY_SENDER, "", 0);
        ASSERT_NE(message, nullptr);
        order.push_back(*static_cast<std::uint32_t*>(static_cast<void*>(message)));
        __zel_free(&message, "", 0);
        EXPECT_EQ(message, nullptr);
    }
    EXPECT_THAT(order, testing::ElementsAre(0x31, 0x32, 0x30, 0x31));
}

TEST(Zel, TakesTheMessagesOfTheOneSenderThatIsWanted)
{
    Peer peer(sender([](std::uint32_t to) { sendSeries(to, 1, 100); }));
    const std::uint32_t own = create("own");
    sendSeries(own, 1, 100);
    const std::uint32_t peerId = peer.hear();
    peer.tell(own);
    peer.hear();
    for (const std::uint32_t id : {peerId, own}) {
        zel_msg* message = receive(Numbered::number, patienceMs, id);
        EXPECT_EQ(__zel_sender(message, "", 0), id);
        __zel_free(&message, "", 0);
    }
}

TEST(Zel, CarriesMessagesWholeAndInOrderBetweenProcesses)
{
    Peer peer([](const Peer& test) {
        test.tell(create("peer"));
        sendSeries(test.hear(), 20000, 2000);
        test.tell(receiveSeries(20000, 2000));
    });
    const std::uint32_t peerId = peer.hear();
    peer.tell(create("own"));
    ASSERT_EQ(receiveSeries(20000, 2000), 20000U); // else the peer goes on sending, and doesn't read
    sendSeries(peerId, 20000, 2000);
    EXPECT_EQ(peer.hear(), 20000U);
}

TEST(Zel, CarriesMessagesOfUpToSixteenMebibytes)
{
    const std::vector<std::size_t> sizes = {12, 200000, mebibyte, 16 * mebibyte, 12, 16 * mebibyte - 1, 199999};
    Peer peer(sender([&](std::uint32_t to) {
        for (const std::size_t size : sizes) {
            Numbered{7, size}.sendTo(to);
        }
    }));
    peer.tell(create("own"));
    for (const std::size_t size : sizes) {
        EXPECT_TRUE((Numbered{7, size}.isNext())) << size;
    }
}

TEST(Zel, DeliversWithoutWaitingWhatWasSentBeforeTheSenderEnded)
{
    Peer peer([](const Peer& test) {
        create("sender");
        sendSeries(test.hear(), 5, 2000);
    });
    peer.tell(create("own"));
    EXPECT_EQ(peer.finish(), 0);
    EXPECT_EQ(receiveSeries(5, 2000, 0), 5U);
}

TEST(Zel, NeverDeliversPartOfAMessageOfAKilledSender)
{
    Peer peer(sender([](std::uint32_t to) { sendSeries(to, 1000, 4 * mebibyte); }));
    peer.tell(create("own"));
    EXPECT_EQ(receiveSeries(3, 4 * mebibyte), 3U);
    peer.kill(); // within a message that no buffer holds
    peer.finish();
    std::uint32_t index = 3;
    while (zel_msg* message = receive(Numbered::number, 100)) {
        EXPECT_TRUE(inSeries(index++, 4 * mebibyte).is(message));
    }
    EXPECT_LT(index, 1000U);
}

TEST(Zel, LetsTheSenderOfAReceiverThatDoesNotReadWait)
{
    constexpr std::uint32_t count = 128;
    constexpr std::uint32_t mostUnderway = 16;
    const std::uint32_t own = create("own");
    std::atomic<std::uint32_t> sent{0};
    std::thread thread([&] {
        create("sender");
        for (; sent < count; ++sent) {
            Numbered{sent, mebibyte}.sendTo(own);
        }
    });
    for (std::uint32_t index = 0; index < count; ++index) {
        EXPECT_TRUE((Numbered{index, mebibyte}.isNext()));
        EXPECT_LE(sent, index + mostUnderway); // it runs as far ahead as it can, on a core of its own
    }
    thread.join();
}

TEST(Zel, KeepsTheOrderOfEachOfManySenders)
{
    constexpr std::uint32_t count = 5000;
    const std::uint32_t own = create("own");
    std::vector<std::thread> threads(8);
    for (std::thread& thread : threads) {
        thread = std::thread([&] {
            create("sender");
            sendSeries(own, count, 300);
        });
    }
    std::map<std::uint32_t, std::uint32_t> next;
    for (std::size_t received = 0; received < threads.size() * count; ++received) {
        zel_msg* message = receive(Numbered::number);
        ASSERT_NE(message, nullptr);
        const std::uint32_t index = next[__zel_sender(message, "", 0)]++;
        EXPECT_TRUE(inSeries(index, 300).is(message));
    }
    EXPECT_EQ(next.size(), threads.size()); // each has an id of its own
    EXPECT_THAT(next, testing::Each(testing::Key(testing::AllOf(testing::Gt(0U), testing::Lt(ZEL_OWN_MAILBOX)))));
    for (std::thread& thread : threads) {
        thread.join();
    }
}

} // namespace
