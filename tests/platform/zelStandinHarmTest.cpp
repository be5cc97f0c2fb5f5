/// What the stand-in for libzel withstands: rubbish, other users, bad folders, signals, and want of descriptors.
#include <algorithm>
#include <atomic>
#include <csignal>
#include <filesystem>
#include <iostream>
#include <random>
#include <string>
#include <thread>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/un.h>

#include "tests/platform/zelStandinFixture.h"

namespace {

using namespace Conformance;
using namespace Corvane::Testing;
namespace fs = std::filesystem;

constexpr uid_t otherUser = 65534;
constexpr std::size_t headSize = 32; // of a datagram; it begins with the size of the message, a word of 64 bits

class ZelStandinUnderAttack : public ZelStandin
{
protected:
    /// A program of no good intentions: it writes to a mailbox's socket by itself.
    static int connectTo(const fs::path& mailbox)
    {
        const int connection = ::socket(AF_UNIX, SOCK_DGRAM, 0);
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        mailbox.string().copy(address.sun_path, sizeof address.sun_path - 1);
        const auto* const generic = static_cast<const sockaddr*>(static_cast<const void*>(&address));
        return ::connect(connection, generic, sizeof address) == 0 ? connection : -1;
    }

    /// Sends a datagram, and the descriptor of a file twice if there is one.
    static void send(int connection, void* bytes, std::size_t size, int file = -1)
    {
        iovec part = {bytes, size};
        const std::array<int, 2> files = {file, file};
        alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof files)> ancillary = {};
        msghdr datagram = {};
        datagram.msg_iov = &part;
        datagram.msg_iovlen = 1;
        if (file >= 0) {
            datagram.msg_control = ancillary.data();
            datagram.msg_controllen = ancillary.size();
            *CMSG_FIRSTHDR(&datagram) = {CMSG_LEN(sizeof files), SOL_SOCKET, SCM_RIGHTS};
            std::memcpy(CMSG_DATA(CMSG_FIRSTHDR(&datagram)), files.data(), sizeof files);
        }
        EXPECT_EQ(::sendmsg(connection, &datagram, MSG_NOSIGNAL), static_cast<ssize_t>(size));
    }

    static void expectNothing() { EXPECT_EQ(__zel_receive(nullptr, 0, ZEL_ANY_SENDER, "", 0), nullptr); }
};

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
    const std::uint32_t own = create("own");
    const int connection = connectTo(sockets().front());
    const unsigned int seed = std::random_device{}();
    std::cout << "seed " << seed << "\n";
    std::mt19937 random(seed);
    for (int round = 0; round < 500; ++round) {
        std::vector<std::uint32_t> garbage(random() % 500 + 8);
        std::generate(garbage.begin(), garbage.end(), [&] { return static_cast<std::uint32_t>(random()); });
        if (round % 2 == 0) { // the size of a message, but not of this one
            garbage[0] %= 100000;
            garbage[1] = 0;
        }
        send(connection, garbage.data(), random() % (garbage.size() * sizeof garbage[0]));
        expectNothing();
    }
    expectToBeReached(own);
    ::close(connection);
}

TEST_F(ZelStandinUnderAttack, DropsMessagesOfForeignKinds)
{
    const std::uint32_t own = create("own");
    const int connection = connectTo(sockets().front());
    std::vector<char> datagram(200000);
    const auto sendWith = [&](std::uint64_t size, std::size_t length, int file) {
        std::memcpy(datagram.data(), &size, sizeof size);
        send(connection, datagram.data(), length, file);
        expectNothing();
    };
    std::array<int, 2> pipe = {};
    ASSERT_EQ(::pipe(pipe.data()), 0);
    const int unsealed = ::memfd_create("unsealed", 0);
    ASSERT_EQ(::ftruncate(unsealed, 300000), 0);
    for (const std::uint64_t size : {0U, 3U, 64U << 20U | 1U, 0xFFFFFFFFU}) {
        sendWith(size, headSize, -1); // announces a size that no message has
        sendWith(size, headSize + size % 8, -1);
    }
    for (const int announcements : {0, 3}) { // of messages that never come, too
        for (int count = 0; count < announcements; ++count) {
            sendWith(300000, headSize, -1);
        }
        for (const int file : {-1, pipe[0], unsealed}) {
            sendWith(300000, datagram.size(), file);
        }
        expectToBeReached(own);
        expectToBeReached(own, mebibyte);
    }
    const auto before = std::distance(fs::directory_iterator("/proc/self/fd"), {});
    sendWith(12, headSize + 20, pipe[0]); // descriptors that nobody wants are closed
    EXPECT_EQ(std::distance(fs::directory_iterator("/proc/self/fd"), {}), before);
    for (const int descriptor : {connection, pipe[0], pipe[1], unsealed}) {
        ::close(descriptor);
    }
}

TEST_F(ZelStandinUnderAttack, DropsAFullDatagramOfAShorterMessage)
{
    const std::uint32_t own = create("own");
    const int connection = connectTo(sockets().front());
    std::vector<char> datagram(200000); // as the first part of a long message
    for (const std::uint64_t size : {std::size_t{4}, std::size_t{12000}, datagram.size() - headSize - 1}) {
        std::memcpy(datagram.data(), &size, sizeof size);
        send(connection, datagram.data(), datagram.size());
        expectNothing();
    }
    expectToBeReached(own);
    ::close(connection);
}

TEST_F(ZelStandinUnderAttack, DropsADatagramThatIsLongerThanAnyOfItsOwn)
{
    const std::uint32_t own = create("own");
    const int connection = connectTo(sockets().front());
    constexpr std::size_t largest = 200000;
    for (const std::size_t length : {largest + 1, largest + 5000}) { // cut to the largest, the head would fit
        std::vector<char> datagram(length);
        const std::uint64_t size = largest - headSize;
        std::memcpy(datagram.data(), &size, sizeof size);
        send(connection, datagram.data(), datagram.size());
        expectNothing();
    }
    expectToBeReached(own);
    ::close(connection);
}

TEST_F(ZelStandinUnderAttack, LosesNothingWhileThereAreNoDescriptors)
{
#ifdef CORVANE_TEST_SANITIZED
    GTEST_SKIP() << "a sanitizer needs descriptors for its own checks";
#endif
    const auto sendWith = [](rlim_t descriptors) {
        return [descriptors](const Peer& test) {
            create("sender");
            const std::uint32_t to = test.hear();
            const DescriptorLimit limit(descriptors);
            std::thread([&] { EXPECT_EQ(create("other"), ZEL_NO_MAILBOX); }).join();
            std::thread more([&] { // descriptors come back while the sender waits for them
                test.hear();
                ::prlimit(0, RLIMIT_NOFILE, std::array<rlimit, 1>{{{256, 256}}}.data(), nullptr);
            });
            test.tell(1);
            for (std::uint32_t index = 0; index < 4; ++index) {
                Numbered{index, index % 2 == 0 ? mebibyte : 100}.sendTo(to);
            }
            more.join();
        };
    };
    Peer peers[] = {Peer(sendWith(0)), Peer(sendWith(1))}; // one is enough for the folder, not for a look into it
    const std::uint32_t own = create("own");
    for (Peer& peer : peers) {
        peer.tell(own);
        peer.hear();
        {
            const DescriptorLimit limit(0);
            EXPECT_EQ(receive(Numbered::number, 50), nullptr);
            peer.tell(1);
            EXPECT_EQ(receive(Numbered::number, 200), nullptr); // a long message needs one
        }
        for (std::uint32_t index = 0; index < 4; ++index) {
            EXPECT_TRUE((Numbered{index, index % 2 == 0 ? mebibyte : 100}.isNext())) << index;
        }
        EXPECT_EQ(peer.finish(), 0);
    }
}

TEST_F(ZelStandinUnderAttack, LosesNothingInAStormOfSignals)
{
    struct sigaction action = {};
    action.sa_handler = [](int) {};
    ::sigaction(SIGUSR1, &action, nullptr); // without SA_RESTART
    const std::uint32_t own = create("own");
    std::atomic<bool> isOver{false};
    std::thread sender([&] {
        create("sender");
        for (std::uint32_t index = 0; index < 20000; ++index) {
            Numbered{index, 3000}.sendTo(own);
        }
    });
    std::thread storm([&, receiver = ::pthread_self()] {
        while (!isOver) {
            ::pthread_kill(sender.native_handle(), SIGUSR1);
            ::pthread_kill(receiver, SIGUSR1);
        }
    });
    std::uint32_t index = 0;
    while (index < 20000 && Numbered{index, 3000}.isNext()) {
        ++index;
    }
    EXPECT_EQ(index, 20000U);
    isOver = true;
    storm.join();
    sender.join();
}

TEST_F(ZelStandinUnderAttack, CreatesNoMailboxInAFolderThatIsNotItsAloneAndSaysSo)
{
    const auto expectNone = [](const std::string& reason) {
        testing::internal::CaptureStderr();
        EXPECT_EQ(create("own"), ZEL_NO_MAILBOX);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "zel: no mailbox: " + reason + "\n");
    };
    const std::string folder = meetingFolder();
    const std::string foreign = folder + " is not a folder of this user alone. Set XDG_RUNTIME_DIR to one that is.";
    fs::create_directory(folder);
    fs::permissions(folder, fs::perms(0750));
    expectNone(foreign);
    if (::geteuid() == 0) { // only root can give a folder away
        fs::permissions(folder, fs::perms::owner_all);
        ASSERT_EQ(::chown(folder.c_str(), otherUser, otherUser), 0);
        expectNone(foreign);
    }
    fs::rename(folder, m_folder.path() / "elsewhere");
    fs::create_directory_symlink(m_folder.path() / "elsewhere", folder);
    expectNone(foreign);
    fs::remove(folder);
    ::close(::creat(folder.c_str(), 0600));
    expectNone(foreign);
    ::setenv("XDG_RUNTIME_DIR", (m_folder.path() / "absent").c_str(), 1);
    expectNone((m_folder.path() / "absent" / meetingFolder().filename()).string() + ": No such file or directory");
    ::setenv("XDG_RUNTIME_DIR", "/proc", 1); // nobody can make a folder there
    expectNone("/proc/" + meetingFolder().filename().string() + ": No such file or directory");
}

TEST_F(ZelStandinUnderAttack, KeepsOtherUsersOut)
{
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root can become another user";
    }
    const std::uint32_t own = create("own");
    const fs::path folder = meetingFolder();
    const fs::path socket = sockets().front();
    EXPECT_EQ(fs::status(folder).permissions(), fs::perms::owner_all);
    fs::permissions(m_folder.path(), fs::perms::all);
    const auto tryAsOtherUser = [&](const std::function<bool()>& isIn) {
        return Peer([&](const Peer&) { _exit(::setuid(otherUser) == 0 && isIn() ? 1 : 0); }).finish();
    };
    EXPECT_EQ(tryAsOtherUser([&] { return ::access(socket.c_str(), F_OK) == 0; }), 0);
    fs::permissions(folder, fs::perms::all); // by an administrator's mistake
    fs::permissions(socket, fs::perms::all);
    EXPECT_EQ(tryAsOtherUser([&] {
                  const int connection = connectTo(socket);
                  std::array<std::uint32_t, 9> message = {4, 0, 1};
                  send(connection, message.data(), sizeof message);
                  return true; // it is let in, but in vain
              }),
              1);
    expectNothing();
    fs::permissions(folder, fs::perms::owner_all);
    expectToBeReached(own);
}

} // namespace
