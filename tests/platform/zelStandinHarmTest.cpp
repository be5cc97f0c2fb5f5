/// What the stand-in for libzel withstands: programs that write rubbish, other users, and want of descriptors.
#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <iostream>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/platform/zelStandinFixture.h"

namespace {

using namespace Conformance;
using namespace Corvane::Testing;

constexpr uid_t otherUser = 65534;

using ZelStandinUnderAttack = ZelStandin;

/// While it lives, this process gets no more than a number of new descriptors.
class DescriptorLimit
{
public:
    explicit DescriptorLimit(rlim_t more)
    {
        ::getrlimit(RLIMIT_NOFILE, &m_before);
        const int lowest = ::fcntl(0, F_DUPFD_CLOEXEC, 0);
        ::close(lowest);
        const rlimit limit = {static_cast<rlim_t>(lowest) + more, m_before.rlim_max};
        ::setrlimit(RLIMIT_NOFILE, &limit);
    }
    ~DescriptorLimit() { ::setrlimit(RLIMIT_NOFILE, &m_before); }
    DescriptorLimit(const DescriptorLimit&) = delete;
    DescriptorLimit& operator=(const DescriptorLimit&) = delete;

private:
    rlimit m_before = {};
};

TEST_F(ZelStandinUnderAttack, DropsGarbage)
{
    onThread([this] {
        const std::uint32_t own = create("own");
        const unsigned int seed = std::random_device{}();
        std::cout << "seed " << seed << "\n";
        std::mt19937 random(seed);
        std::vector<int> connections;
        for (int round = 0; round < 200; ++round) {
            std::vector<std::uint32_t> garbage(random() % 500 + 1);
            std::generate(garbage.begin(), garbage.end(), [&] { return static_cast<std::uint32_t>(random()); });
            if (round % 2 == 0) {
                garbage[0] = header(0)[0]; // begins well
            }
            connections.push_back(connectTo(own));
            ASSERT_GE(connections.back(), 0);
            write(connections.back(), garbage.data(), random() % (garbage.size() * sizeof garbage[0]) + 1);
        }
        expectToBeReached(own);
        for (const int connection : connections) {
            ::close(connection);
        }
        expectToBeReached(own);
    });
}

TEST_F(ZelStandinUnderAttack, EndsAConnectionThatAnnouncesASizeNoMessageHas)
{
    onThread([this] {
        const std::uint32_t own = create("own");
        for (const std::uint32_t size : {0U, 3U, 64U << 20U | 1U, 0xFFFFFFFFU}) {
            const int connection = connectTo(own);
            EXPECT_TRUE(write(connection, header(size).data(), sizeof header(size)));
            expectToBeReached(own);
            char byte = 0;
            EXPECT_EQ(::recv(connection, &byte, 1, 0), 0) << size;
            ::close(connection);
        }
    });
}

TEST_F(ZelStandinUnderAttack, IsReachedBesideAMessageThatNeverEnds)
{
    onThread([this] {
        const std::uint32_t own = create("own");
        const int stalled = connectTo(own);
        EXPECT_TRUE(write(stalled, header(1000).data(), sizeof header(1000)));
        expectToBeReached(own);
        EXPECT_TRUE(write(stalled, "abcd", 4));
        expectToBeReached(own);
        ::close(stalled);
        EXPECT_EQ(__zel_receive(nullptr, 0, anySender, "", 0), nullptr);
    });
}

TEST_F(ZelStandinUnderAttack, IsReachedBesideManySilentConnections)
{
    onThread([this] {
        const std::uint32_t own = create("own");
        std::vector<int> silent;
        for (int count = 0; count < 600; ++count) {
            silent.push_back(connectTo(own));
            ASSERT_GE(silent.back(), 0);
        }
        expectToBeReached(own);
        for (const int connection : silent) {
            ::close(connection);
        }
        expectToBeReached(own);
    });
}

TEST_F(ZelStandinUnderAttack, ReceivesAgainOnceThereAreDescriptors)
{
#ifdef CORVANE_TEST_SANITIZED
    GTEST_SKIP() << "a sanitizer needs descriptors for its own checks";
#endif
    onThread([] {
        const std::uint32_t own = create("own");
        std::thread sender([own] {
            create("sender");
            sendNumbered(own, 0, 100);
        });
        sender.join();
        {
            const DescriptorLimit limit(0);
            EXPECT_EQ(receive(numberedNo, 20), nullptr);
            EXPECT_EQ(onThread([] { return create("other"); }), noMailbox);
        }
        zel_msg* message = receive(numberedNo);
        EXPECT_EQ(flawOf(message, 0, 100), "");
        __zel_free(&message, "", 0);
    });
}

TEST_F(ZelStandinUnderAttack, TakesAllThatHadArrivedWhenItIsClosedThoughItHasFewDescriptors)
{
#ifdef CORVANE_TEST_SANITIZED
    GTEST_SKIP() << "a sanitizer needs descriptors for its own checks";
#endif
    onThread([this] {
        constexpr int senders = 20;
        const std::uint32_t own = create("own");
        const std::uint32_t frame[] = {header(4)[0], 4, 1, numberedNo};
        std::vector<int> connections;
        for (int sender = 0; sender < senders; ++sender) {
            connections.push_back(connectTo(own));
            ASSERT_TRUE(write(connections.back(), frame, sizeof frame));
        }
        {
            const DescriptorLimit limit(3);
            zel_standin_close_mailbox();
        }
        int received = 0;
        while (zel_msg* message = receive(numberedNo)) {
            __zel_free(&message, "", 0);
            ++received;
        }
        EXPECT_EQ(received, senders);
        for (const int connection : connections) {
            ::close(connection);
        }
    });
}

TEST_F(ZelStandinUnderAttack, KeepsItsFolderToItself)
{
    onThread([] { EXPECT_NE(create("own"), noMailbox); });
    EXPECT_EQ(std::filesystem::status(meetingPoint()).permissions(), std::filesystem::perms::owner_all);
}

TEST_F(ZelStandinUnderAttack, TrustsNoFolderThatOthersCanEnter)
{
    std::filesystem::create_directory(meetingPoint());
    std::filesystem::permissions(meetingPoint(), std::filesystem::perms(0750));
    onThread([] { EXPECT_EQ(create("own"), noMailbox); });
}

TEST_F(ZelStandinUnderAttack, TrustsNoFolderThatALinkLeadsTo)
{
    const auto elsewhere = m_folder.path() / "elsewhere";
    std::filesystem::create_directory(elsewhere);
    std::filesystem::permissions(elsewhere, std::filesystem::perms::owner_all);
    std::filesystem::create_directory_symlink(elsewhere, meetingPoint());
    onThread([] { EXPECT_EQ(create("own"), noMailbox); });
}

TEST_F(ZelStandinUnderAttack, TrustsNoFolderOfAnotherUser)
{
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root can give a folder away";
    }
    std::filesystem::create_directory(meetingPoint());
    std::filesystem::permissions(meetingPoint(), std::filesystem::perms::owner_all);
    ASSERT_EQ(::chown(meetingPoint().c_str(), otherUser, otherUser), 0);
    onThread([] { EXPECT_EQ(create("own"), noMailbox); });
}

TEST_F(ZelStandinUnderAttack, TakesNothingFromAnotherUserEvenThroughAnOpenFolder)
{
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root can become another user";
    }
    onThread([this] {
        const std::uint32_t own = create("own");
        std::filesystem::permissions(m_folder.path(), std::filesystem::perms::all);
        const auto tryAsOtherUser = [&] {
            const sockaddr_un address = addressOf(own); // in the folder of this user's number
            const pid_t other = ::fork();
            if (other == 0) {
                const int connection = ::setuid(otherUser) == 0 ? connectTo(address) : -1;
                const std::array<std::uint32_t, 4> frame = {header(4)[0], 4, 1, numberedNo};
                _exit(connection < 0 ? 1 : write(connection, frame.data(), sizeof frame) ? 2 : 3);
            }
            int status = 0;
            ::waitpid(other, &status, 0);
            return WEXITSTATUS(status);
        };
        EXPECT_EQ(tryAsOtherUser(), 1); // doesn't get in
        std::filesystem::permissions(meetingPoint(), std::filesystem::perms::all);
        for (const auto& file : std::filesystem::directory_iterator(meetingPoint())) {
            if (file.is_socket()) {
                std::filesystem::permissions(file.path(), std::filesystem::perms::all);
            }
        }
        EXPECT_EQ(tryAsOtherUser(), 2); // does, but in vain
        EXPECT_EQ(__zel_receive(nullptr, 0, anySender, "", 0), nullptr);
        std::filesystem::permissions(meetingPoint(), std::filesystem::perms::owner_all);
        expectToBeReached(own);
    });
}

TEST_F(ZelStandinUnderAttack, GivesTheNameOfAKilledProcessAnewThoughAnotherUserTookItsId)
{
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root can become another user";
    }
    std::array<int, 2> toTest = {};
    std::array<int, 2> toProgram = {};
    ASSERT_EQ(::pipe(toTest.data()), 0);
    ASSERT_EQ(::pipe(toProgram.data()), 0);
    const pid_t killed = ::fork();
    if (killed == 0) {
        const std::uint32_t id = create("own");
        _exit(::write(toTest[1], &id, sizeof id) == static_cast<ssize_t>(sizeof id) ? 0 : 1); // runs no destructor
    }
    std::uint32_t id = 0;
    ASSERT_EQ(::read(toTest[0], &id, sizeof id), static_cast<ssize_t>(sizeof id));
    ::waitpid(killed, nullptr, 0);
    const pid_t program = ::fork();
    if (program == 0) {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        const int length = std::snprintf(&address.sun_path[1], sizeof address.sun_path - 1, "zel-id-%x", id);
        const auto* const generic = static_cast<const sockaddr*>(static_cast<const void*>(&address));
        const int claim = ::socket(AF_UNIX, SOCK_STREAM, 0);
        const int result =
            ::setuid(otherUser) == 0
                ? ::bind(claim, generic,
                         static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + static_cast<std::size_t>(length)))
                : -1;
        char end = '\0';
        const bool isTold = ::write(toTest[1], &result, sizeof result) == static_cast<ssize_t>(sizeof result);
        _exit(isTold && ::read(toProgram[0], &end, 1) == 1 ? 0 : 1);
    }
    int result = -1;
    ASSERT_EQ(::read(toTest[0], &result, sizeof result), static_cast<ssize_t>(sizeof result));
    EXPECT_EQ(result, 0); // it has the id now
    onThread([] { EXPECT_NE(create("own"), noMailbox); });
    EXPECT_EQ(::write(toProgram[1], "", 1), 1);
    ::waitpid(program, nullptr, 0);
    for (const int end : {toTest[0], toTest[1], toProgram[0], toProgram[1]}) {
        ::close(end);
    }
}

} // namespace
