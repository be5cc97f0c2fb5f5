/// What the stand-in for libzel chose where its contract says "Stand-in", and what it adds.
#include <atomic>
#include <filesystem>
#include <string>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>

#include "tests/platform/zelStandinFixture.h"

namespace {

using namespace Conformance;
using namespace Corvane::Testing;
namespace fs = std::filesystem;

TEST_F(ZelStandin, TellsSizeAndSenderOfAMessage)
{
    Peer peer([](const Peer& test) {
        create("sender");
        Numbered{0, 1234}.sendTo(test.hear());
        test.tell(static_cast<std::uint32_t>(::getpid()));
    });
    const std::uint32_t own = create("own");
    peer.tell(own);
    zel_msg* message = receive(Numbered::number);
    EXPECT_EQ(zel_standin_size(message), 1234U);
    EXPECT_EQ(static_cast<std::uint32_t>(zel_standin_process(message)), peer.hear());
    EXPECT_STREQ(zel_standin_program(message), std::string(program_invocation_short_name).substr(0, 15).c_str());
    __zel_send(&message, own, ZEL_OWN_MAILBOX, "", 0);
    message = receive(Numbered::number);
    EXPECT_EQ(zel_standin_size(message), 1234U);
    EXPECT_EQ(zel_standin_process(message), 0); // no other process sent it last
    __zel_free(&message, "", 0);
    EXPECT_EQ(zel_standin_size(nullptr), 0U);
    EXPECT_EQ(zel_standin_process(nullptr), 0);
    EXPECT_STREQ(zel_standin_program(nullptr), "");
}

TEST_F(ZelStandin, CarriesMessagesOfFourBytesToSixtyFourMebibytes)
{
    for (const std::size_t size : {std::size_t{0}, std::size_t{3}, 64 * mebibyte + 1, SIZE_MAX}) {
        EXPECT_EQ(__zel_alloc(size, 1, "", 0), nullptr) << size;
    }
    const std::uint32_t own = create("own");
    for (const std::size_t size : {12UL, 199968UL, 199969UL, mebibyte, 64 * mebibyte}) {
        expectToBeReached(own, size); // 199968 bytes and their head fill a datagram
    }
    zel_msg* message = __zel_alloc(4, 5, "", 0);
    EXPECT_EQ(__zel_sender(message, "", 0), ZEL_NO_MAILBOX);
    __zel_send(&message, own, ZEL_OWN_MAILBOX, "", 0);
    message = receive(5);
    EXPECT_EQ(zel_standin_size(message), 4U);
    __zel_free(&message, "", 0);
}

TEST_F(ZelStandin, CreatesNoMailboxWithoutAProperNameAndSaysSo)
{
    const std::string reason =
        "zel: no mailbox: a thread has one, with a name of 1 to 60 bytes without a slash, and flags 0\n";
    const auto expectNone = [&](const char* name, std::uint32_t flags) {
        testing::internal::CaptureStderr();
        EXPECT_EQ(__zel_create_mailbox(name, flags, "", 0), ZEL_NO_MAILBOX);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), reason);
    };
    expectNone(nullptr, 0);
    expectNone("", 0);
    expectNone("a/b", 0);
    expectNone(std::string(61, 'n').c_str(), 0);
    expectNone("flagged", 1);
    for (const std::string& name : {std::string("..x\n\xFF"), std::string(60, '.'), std::string("a.b")}) {
        onThread([&] {
            const std::uint32_t id = create(name);
            EXPECT_NE(id, ZEL_NO_MAILBOX);
            EXPECT_EQ(locate(name), id);
        });
    }
    create("a");
    EXPECT_EQ(locate("a.b"), ZEL_NO_MAILBOX);
    expectNone("second", 0);
}

TEST_F(ZelStandin, DropsWhatIsAskedWithoutAMailboxOrInTheNameOfOthersAndNullMessages)
{
    for (const bool hasMailbox : {false, true}) {
        const std::uint32_t own = hasMailbox ? create("own") : 1;
        zel_msg* message = nullptr;
        errno = ENOMEM; // of an earlier call
        for (const std::uint32_t to : {own, 0U, ZEL_NO_MAILBOX}) {
            message = __zel_alloc(4, 1, "", 0);
            __zel_send(&message, to, hasMailbox && to == own ? 1 : ZEL_OWN_MAILBOX, "", 0);
            EXPECT_EQ(message, nullptr);
        }
        for (const char* name : {"own", "", static_cast<const char*>(nullptr)}) {
            const bool isProper = name != nullptr && *name != '\0';
            message = __zel_alloc(4, 1, "", 0);
            __zel_locate_async(name, &message, hasMailbox && isProper ? 1 : ZEL_OWN_MAILBOX, "", 0);
            EXPECT_EQ(message, nullptr);
        }
        for (zel_msg** nothing : {static_cast<zel_msg**>(nullptr), &message}) {
            __zel_send(nothing, own, ZEL_OWN_MAILBOX, "", 0);
            __zel_locate_async("own", nothing, ZEL_OWN_MAILBOX, "", 0);
            __zel_free(nothing, "", 0);
        }
        EXPECT_EQ(__zel_receive(nullptr, hasMailbox ? 0 : 0xFFFFFFFF, ZEL_ANY_SENDER, "", 0), nullptr);
    }
    EXPECT_EQ(__zel_sender(nullptr, "", 0), ZEL_NO_MAILBOX);
}

TEST_F(ZelStandin, ReceivesEveryNumberWithoutAFilterOrWithACountOfZero)
{
    const std::uint32_t own = create("own");
    const std::uint32_t none[] = {0};
    for (const std::uint32_t* filter : {static_cast<const std::uint32_t*>(nullptr), none}) {
        Numbered{3, 20}.sendTo(own);
        EXPECT_TRUE((Numbered{3, 20}.is(__zel_receive(filter, 0, ZEL_ANY_SENDER, "", 0))));
    }
}

TEST_F(ZelStandin, ReceivesWhatHadArrivedAfterItWasClosed)
{
    const std::uint32_t own = create("own");
    std::atomic<std::uint32_t> sent{0};
    std::thread sender([&] {
        create("sender");
        for (; sent < 20; ++sent) { // more than wait in the socket: one waits to be let in
            Numbered{sent, 1000}.sendTo(own);
        }
    });
    while (sent < 5) {
        std::this_thread::yield();
    }
    const std::uint32_t arrived = sent;
    for (const std::uint32_t number : {2U, 1U}) { // one of them is too much for a receive that wants another
        zel_msg* message = __zel_alloc(64 * mebibyte, number, "", 0);
        __zel_send(&message, own, ZEL_OWN_MAILBOX, "", 0);
        zel_standin_close_mailbox(); // the second message comes too late
    }
    EXPECT_EQ(locate("own"), ZEL_NO_MAILBOX);
    EXPECT_EQ(receive(1, 0xFFFFFFFF), nullptr); // ends, or this test hangs
    std::uint32_t index = 0;
    while (zel_msg* message = receive(Numbered::number, 0xFFFFFFFF)) { // ends, or this test hangs
        EXPECT_TRUE((Numbered{index++, 1000}.is(message)));
    }
    EXPECT_GE(index, arrived);
    sender.join(); // its other messages are discarded
    EXPECT_EQ(sent, 20U);
}

TEST_F(ZelStandin, LetsSendersWaitWhileTooMuchWaitsThatNobodyWanted)
{
    constexpr std::uint32_t count = 80;
    const std::uint32_t own = create("own");
    std::atomic<std::uint32_t> sent{0};
    std::thread sender([&] {
        create("sender");
        for (; sent < count; ++sent) {
            Numbered{sent, mebibyte}.sendTo(own);
        }
    });
    while (sent < 64) {
        EXPECT_EQ(receive(Numbered::number + 1, 10), nullptr);
    }
    EXPECT_EQ(receive(Numbered::number + 1, 300), nullptr); // it has as long to send them all
    EXPECT_LT(sent, count);
    for (std::uint32_t index = 0; index < count; ++index) {
        EXPECT_TRUE((Numbered{index, mebibyte}.isNext()));
    }
    sender.join();
}

TEST_F(ZelStandin, FindsMailboxesInAFolderThatIsRemovedAndMadeAgain)
{
    Peer peer(holdName("later"));
    create("seeker");
    ask("later", 0x2400);
    EXPECT_EQ(receive(0x2400, 0), nullptr);
    fs::rename(meetingFolder(), m_folder.path() / "elsewhere");
    EXPECT_EQ(receive(0x2400, 0), nullptr);
    peer.tell(1);
    EXPECT_EQ(located(0x2400), peer.hear());
}

TEST_F(ZelStandin, ClearsAwayWhatAKilledProcessLeft)
{
    Peer killed(holdName("own"));
    killed.tell(1);
    killed.hear();
    killed.kill();
    killed.finish();
    ASSERT_EQ(sockets().size(), 1U);
    const fs::path socket = sockets().front();
    const std::string id = socket.extension();
    onThread([&] {
        create("own"); // leaves the other, which might be a new one that doesn't answer yet
        EXPECT_EQ(sockets().size(), 2U);
    });
    fs::rename(socket, meetingFolder() / ("own.0000000000000001" + id));
    onThread([&] {
        create("own");
        EXPECT_EQ(sockets().size(), 1U);
    });
    EXPECT_TRUE(sockets().empty());
}

/// A child made by fork() that has no folder but its own at /run and /tmp.
int inEmptySystem(const std::function<bool()>& isRight)
{
    constexpr int noNamespace = 2;
    Peer child([&](const Peer&) {
        const bool isAlone =
            ::unshare(CLONE_NEWNS) == 0 && ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
            ::mount("none", "/run", "tmpfs", 0, nullptr) == 0 && ::mount("none", "/tmp", "tmpfs", 0, nullptr) == 0;
        ::unsetenv("XDG_RUNTIME_DIR");
        _exit(!isAlone ? noNamespace : isRight() ? 0 : 1);
    });
    return child.finish();
}

TEST_F(ZelStandin, MeetsInTheUsersRunFolderOrElseInTheTemporaryFolder)
{
    const std::string user = std::to_string(::geteuid());
    const int withRunFolder = inEmptySystem([&] {
        fs::create_directories("/run/user/" + user);
        return create("own") != ZEL_NO_MAILBOX && fs::exists("/run/user/" + user + "/zel-" + user) &&
               fs::is_empty("/tmp");
    });
    if (withRunFolder == 2) {
        GTEST_SKIP() << "only root can mount folders of its own, and not on every machine";
    }
    EXPECT_EQ(withRunFolder, 0);
    EXPECT_EQ(inEmptySystem([&] { return create("own") != ZEL_NO_MAILBOX && fs::exists("/tmp/zel-" + user); }), 0);
}

TEST_F(ZelStandin, LeavesTheMailboxesOfAForkedProcessToTheParent)
{
#ifdef CORVANE_TEST_SANITIZED
    GTEST_SKIP() << "a sanitizer may leave locks of its own to a child that another thread holds";
#endif
    const std::uint32_t own = create("own");
    const auto fork = [&](const std::function<bool()>& isRight) {
        return Peer([&](const Peer&) { std::exit(isRight() ? 0 : 1); }).finish();
    };
    EXPECT_EQ(fork([&] {
                  zel_standin_close_mailbox();
                  const bool hasNone = receive(Numbered::number, 0xFFFFFFFF) == nullptr;
                  const bool isCreated = create("own") != ZEL_NO_MAILBOX;
                  Numbered{1, 100}.sendTo(own);
                  return hasNone && isCreated && locate("own") == own;
              }),
              0);
    EXPECT_TRUE((Numbered{1, 100}.isNext(0)));
    EXPECT_EQ(locate("own"), own);
}

TEST_F(ZelStandin, EndsAMailboxThoughAForkedChildHasItsSocket)
{
    std::promise<std::uint32_t> own;
    std::promise<void> end;
    std::thread owner([&] {
        own.set_value(create("own"));
        end.get_future().wait();
    });
    const std::uint32_t to = own.get_future().get();
    const Peer child([](const Peer& test) { test.hear(); }); // has all descriptors, and never comes to exec()
    create("sender");
    Numbered{0, 100}.sendTo(to); // connects the sender with the socket
    end.set_value();
    owner.join();
    for (std::uint32_t index = 0; index < 40; ++index) {
        Numbered{index, 100}.sendTo(to); // to nobody: returns, or this test hangs
    }
}

} // namespace
