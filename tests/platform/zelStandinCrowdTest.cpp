/// What the stand-in for libzel does when more comes than it has memory or places for: nothing is lost.
#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <filesystem>
#include <iterator>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include "tests/platform/zelStandinFixture.h"
#include "tests/support/childProcess.h"

namespace {

using namespace Conformance;
using namespace Corvane::Testing;

constexpr std::size_t longMessage = 60 * mebibyte;

class ZelStandinInACrowd : public ZelStandin
{
protected:
    ZelStandinInACrowd() // both ends of a crowd of connections are here
    {
        rlimit limit = {};
        ::getrlimit(RLIMIT_NOFILE, &limit);
        limit.rlim_cur = limit.rlim_max;
        ::setrlimit(RLIMIT_NOFILE, &limit);
    }

    static std::size_t usedMemory()
    {
        const struct mallinfo2 memory = ::mallinfo2();
        return memory.uordblks + memory.hblkhd;
    }

    static auto descriptors()
    {
        const std::filesystem::directory_iterator all("/proc/self/fd");
        return std::distance(begin(all), end(all));
    }

    static void expectMessage(std::uint32_t index, std::size_t size)
    {
        zel_msg* message = receive(numberedNo);
        EXPECT_EQ(flawOf(message, index, size), "");
        __zel_free(&message, "", 0);
    }
};

TEST_F(ZelStandinInACrowd, LosesNoneOfManyLongMessagesThatComeAtOnce)
{
    constexpr int senders = 12;
    constexpr std::size_t size = 32 * mebibyte;
    onThread([&] {
        const std::uint32_t own = create("own");
        std::vector<std::thread> threads;
        std::atomic<int> connected{0};
        for (int sender = 0; sender < senders; ++sender) {
            threads.emplace_back([&] {
                create(uniqueName("sender"));
                sendNumbered(own, 0, 100);
                for (++connected; connected < senders;) {
                    std::this_thread::yield();
                }
                sendNumbered(own, 1, size);
            });
        }
        for (int message = 0; message < senders; ++message) {
            expectMessage(0, 100);
        }
        for (int message = 0; message < senders; ++message) {
            expectMessage(1, size);
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    });
}

TEST_F(ZelStandinInACrowd, LosesNoMessageOfMoreSendersThanItHasPlacesFor)
{
    constexpr int senders = 600;
    constexpr std::size_t size = 100000; // fits the socket, and not the mailbox's buffer
    onThread([&] {
        const std::uint32_t own = create("own");
        std::vector<std::uint32_t> frame(3 + size / 4);
        const auto start = header(size);
        std::copy(start.begin(), start.end(), frame.begin());
        frame[3] = numberedNo;
        std::vector<int> connections;
        for (int sender = 0; sender < senders; ++sender) {
            connections.push_back(connectTo(own));
            ASSERT_TRUE(write(connections.back(), frame.data(), frame.size() * sizeof frame[0]));
        }
        for (int sender = 0; sender < senders; ++sender) {
            zel_msg* message = receive(numberedNo, 10000);
            ASSERT_EQ(zel_standin_size(message), size) << "after " << sender;
            __zel_free(&message, "", 0);
        }
        for (const int connection : connections) {
            ::close(connection);
        }
    });
}

TEST_F(ZelStandinInACrowd, HasAPlaceForANewSenderBesideManyThatKeepTheirs)
{
    onThread([this] {
        const std::uint32_t own = create("own");
        const std::uint32_t frame[] = {header(4)[0], 4, 1, numberedNo};
        std::vector<int> connections;
        for (int sender = 0; sender < 512; ++sender) {
            connections.push_back(connectTo(own));
            ASSERT_TRUE(write(connections.back(), frame, sizeof frame));
            zel_msg* message = receive(numberedNo);
            ASSERT_EQ(zel_standin_size(message), 4U);
            __zel_free(&message, "", 0);
        }
        expectToBeReached(own);
        for (const int connection : connections) {
            ::close(connection);
        }
    });
}

TEST_F(ZelStandinInACrowd, TakesTheMessageOfASenderThatWasStoppedInItsMiddle)
{
    onThread([] {
        const std::uint32_t own = create("own");
        const std::string order = "send-one " + std::to_string(own) + " " + std::to_string(longMessage);
        Companion stopped({CORVANE_CONFORMANCE, "--peer"}, {});
        Companion other({CORVANE_CONFORMANCE, "--peer"}, {});
        for (Companion* peer : {&stopped, &other}) {
            peer->writeLine("create " + uniqueName("sender"));
            EXPECT_NE(peer->readLine(), std::to_string(noMailbox));
        }
        const auto withPeers = descriptors();
        stopped.writeLine(order);
        while (descriptors() == withPeers) { // until it has connected, and sends
            EXPECT_EQ(receive(numberedNo + 1, 1), nullptr);
        }
        kill(stopped.pid(), SIGSTOP);
        std::vector<std::thread> threads;
        for (int sender = 0; sender < 2; ++sender) {
            threads.emplace_back([own] {
                create(uniqueName("sender"));
                sendNumbered(own, 0, longMessage);
            });
        }
        other.writeLine(order);
        for (int message = 0; message < 3; ++message) {
            expectMessage(0, longMessage);
        }
        kill(stopped.pid(), SIGCONT);
        expectMessage(0, longMessage);
        for (std::thread& thread : threads) {
            thread.join();
        }
    });
}

TEST_F(ZelStandinInACrowd, BoundsTheMemoryOfMessagesThatNeverEnd)
{
#ifdef CORVANE_TEST_SANITIZED
    GTEST_SKIP() << "a sanitizer's allocator doesn't tell what is in use";
#endif
    onThread([this] {
        const std::uint32_t own = create("own");
        const std::string piece(mebibyte, 'x');
        std::vector<int> connections;
        std::vector<std::thread> programs;
        std::atomic<int> writing{6};
        const std::size_t usedBefore = usedMemory();
        for (int program = 0; program < 6; ++program) {
            const int connection = connectTo(own);
            connections.push_back(connection);
            programs.emplace_back([&, connection] {
                bool isTaken = write(connection, header(64U << 20U).data(), sizeof header(0));
                for (int count = 0; isTaken && count < 63; ++count) {
                    isTaken = write(connection, piece.data(), piece.size());
                }
                --writing;
            });
        }
        std::size_t mostUsed = 0;
        while (writing > 0) { // those that came first stall, and are given up for the others
            EXPECT_EQ(receive(numberedNo, 1), nullptr);
            mostUsed = std::max(mostUsed, usedMemory() - usedBefore);
        }
        EXPECT_GE(mostUsed, 64 * mebibyte);
        EXPECT_LE(mostUsed, 130 * mebibyte);
        for (std::thread& program : programs) {
            program.join();
        }
        expectToBeReached(own);
        for (const int connection : connections) {
            ::close(connection);
        }
    });
}

TEST_F(ZelStandinInACrowd, LosesNoLongMessageOfMoreSendersThanItHasPlacesFor)
{
    constexpr std::size_t count = 600;
    onThread([] {
        const std::uint32_t own = create("own");
        std::vector<std::thread> senders;
        for (std::size_t sender = 0; sender < count; ++sender) {
            senders.emplace_back([own, sender] {
                create("sender" + std::to_string(sender));
                sendNumbered(own, 1, mebibyte / 2);
            });
        }
        std::set<std::uint32_t> received;
        for (std::size_t message = 0; message < count; ++message) {
            zel_msg* const next = receive(numberedNo);
            EXPECT_EQ(flawOf(next, 1, mebibyte / 2), "");
            received.insert(__zel_sender(next, "", 0));
            zel_msg* freed = next;
            __zel_free(&freed, "", 0);
        }
        EXPECT_EQ(received.size(), std::size_t{count});
        for (std::thread& sender : senders) {
            sender.join();
        }
    });
}

TEST_F(ZelStandinInACrowd, TakesALongMessageBesideThoseThatComeByteByByte)
{
    onThread([this] {
        const std::uint32_t own = create("own");
        const std::array<int, 2> connections = {connectTo(own), connectTo(own)};
        for (const int connection : connections) {
            ASSERT_TRUE(write(connection, header(64U << 20U).data(), sizeof header(0)));
        }
        EXPECT_EQ(receive(numberedNo, 0), nullptr); // both have begun, and take all the room
        std::atomic<bool> isOver{false};
        std::thread program([&] {
            while (!isOver) {
                for (const int connection : connections) {
                    write(connection, "x", 1);
                }
                std::this_thread::sleep_for(std::chrono::milliseconds(20)); // slow is what it is
            }
        });
        std::thread sender([own] {
            create("sender");
            sendNumbered(own, 7, 200000);
        });
        expectMessage(7, 200000);
        isOver = true;
        program.join();
        sender.join();
        for (const int connection : connections) {
            ::close(connection);
        }
    });
}

TEST_F(ZelStandinInACrowd, LetsNoMoreSendersInWhileManyMessagesOfThoseThatHaveGoneWait)
{
    constexpr int count = 30;
    constexpr int messagesOfOne = 7;
    onThread([] {
        const std::uint32_t own = create("own");
        std::atomic<int> gone{0};
        std::thread program([&] {
            for (; gone < int{count}; ++gone) {
                std::thread([own] {
                    create("sender");
                    for (int message = 0; message < messagesOfOne; ++message) {
                        sendNumbered(own, 1, mebibyte);
                    }
                }).join();
            }
        });
        int before = 0;
        do { // until they wait
            before = gone;
            EXPECT_EQ(receive(numberedNo + 1, 200), nullptr);
        } while (gone == 0 || gone != before);
        EXPECT_LT(gone, 20); // 140 MiB
        for (int message = 0; message < count * messagesOfOne; ++message) {
            expectMessage(1, mebibyte);
        }
        program.join();
    });
}

TEST_F(ZelStandinInACrowd, CountsWhatSmallMessagesTakeBesideTheirBytes)
{
    constexpr std::uint32_t count = 400000;
    onThread([&] {
        const std::uint32_t own = create("own");
        std::atomic<std::uint32_t> sent{0};
        std::thread sender([&] {
            create("sender");
            for (; sent < count; ++sent) {
                sendNumbered(own, sent, 12);
            }
        });
        std::uint32_t before = 0;
        do { // until the sender waits
            before = sent;
            EXPECT_EQ(receive(numberedNo + 1, 50), nullptr);
        } while (sent == 0 || sent != before);
        EXPECT_LT(sent, 200000U); // of 8 MiB in all
        for (std::uint32_t index = 0; index < count; ++index) {
            expectMessage(index, 12);
        }
        sender.join();
    });
}

} // namespace
