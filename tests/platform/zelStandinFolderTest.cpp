/// Where the stand-in for libzel has its mailboxes meet, and what it does when that folder or a file in it goes away.
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/file.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/platform/zelStandinFixture.h"

namespace {

using namespace Conformance;
using namespace Corvane::Testing;
namespace fs = std::filesystem;

class ZelStandinFolder : public ZelStandin
{
protected:
    /// Has a thread wait for a name while `change` is done to the folder, and expects it to find the name afterwards.
    template <typename Change>
    static void expectToBeFoundAfter(const Change& change)
    {
        onThread([&] {
            create("seeker");
            zel_msg* reply = __zel_alloc(4, 0x2400, "", 0);
            __zel_locate_async("later", &reply, ownMailbox, "", 0);
            EXPECT_EQ(receive(0x2400, 0), nullptr);
            change();
            EXPECT_EQ(receive(0x2400, 0), nullptr);
            std::promise<std::uint32_t> created;
            std::thread other([&] {
                created.set_value(create("later"));
                zel_msg* message = receive(numberedNo, 10000);
                EXPECT_EQ(flawOf(message, 0, 100), "");
                __zel_free(&message, "", 0);
            });
            reply = receive(0x2400, 10000);
            const std::uint32_t found = __zel_sender(reply, "", 0);
            EXPECT_EQ(found, created.get_future().get());
            sendNumbered(found, 0, 100);
            other.join();
            __zel_free(&reply, "", 0);
        });
    }
};

TEST_F(ZelStandinFolder, IsFollowedByThoseWhoWaitWhenItIsRemoved)
{
    expectToBeFoundAfter([this] { fs::remove_all(meetingPoint()); });
}

TEST_F(ZelStandinFolder, IsFollowedByThoseWhoWaitWhenAnotherTakesItsPlace)
{
    expectToBeFoundAfter([this] {
        fs::rename(meetingPoint(), m_folder.path() / "elsewhere");
        onThread([] { EXPECT_NE(create("seeker"), noMailbox); }); // makes the folder
    });
}

TEST_F(ZelStandinFolder, IsFollowedByThoseWhoAskAfterItWasRemoved)
{
    onThread([this] {
        create("seeker");
        fs::remove_all(meetingPoint());
        std::promise<void> asked;
        std::promise<std::uint32_t> created;
        std::thread other([&] {
            created.set_value(create("other"));
            asked.get_future().wait();
        });
        EXPECT_EQ(created.get_future().get(), locate("other"));
        asked.set_value();
        other.join();
    });
}

TEST_F(ZelStandinFolder, KeepsANameTakenThoughItsLockFileIsRemoved)
{
    onThread([this] {
        const std::uint32_t own = create("own");
        EXPECT_TRUE(fs::remove(meetingPoint() / "lock-own"));
        EXPECT_EQ(onThread([] { return create("own"); }), noMailbox);
        EXPECT_EQ(find("own"), own);
    });
}

TEST_F(ZelStandinFolder, GivesANameOnceThoughItsLockFileIsRemovedWheneverItIsFree)
{
    std::atomic<int> owners{0};
    std::atomic<int> creating{2};
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 2; ++thread) {
        threads.emplace_back([&] {
            for (int round = 0; round < 2000; ++round) {
                onThread([&] {
                    if (create("own") != noMailbox) {
                        EXPECT_EQ(++owners, 1);
                        std::this_thread::yield();
                        --owners;
                    }
                });
            }
            --creating;
        });
    }
    const auto lockFile = meetingPoint() / "lock-own";
    while (creating > 0) {
        const int lock = ::open(lockFile.c_str(), O_RDWR | O_CLOEXEC);
        if (lock >= 0 && ::flock(lock, LOCK_EX | LOCK_NB) == 0) {
            ::unlink(lockFile.c_str());
        }
        ::close(lock);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

TEST_F(ZelStandinFolder, IsSaidToBeUnusable)
{
    fs::create_directory(meetingPoint());
    fs::permissions(meetingPoint(), fs::perms(0750));
    testing::internal::CaptureStderr();
    onThread([] { EXPECT_EQ(create("own"), noMailbox); });
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "zel: no mailbox: " + meetingPoint().string() +
                  " is not a folder of this user alone. Set XDG_RUNTIME_DIR to one that is.\n");
    ::setenv("XDG_RUNTIME_DIR", (m_folder.path() / "absent").c_str(), 1);
    testing::internal::CaptureStderr();
    onThread([] { EXPECT_EQ(create("own"), noMailbox); });
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "zel: no mailbox: " + (m_folder.path() / "absent" / meetingPoint().filename()).string() +
                  ": No such file or directory\n");
}

constexpr int noNamespace = 99;

/// Runs `action` in a child with empty folders /run and /tmp of its own and without XDG_RUNTIME_DIR.
///
/// Returns  what the action returns; noNamespace where that can't be had.
template <typename Action>
int withEmptySystem(const Action& action)
{
    const pid_t child = ::fork();
    if (child == 0) {
        const bool isAlone =
            ::unshare(CLONE_NEWNS) == 0 && ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
            ::mount("none", "/run", "tmpfs", 0, nullptr) == 0 && ::mount("none", "/tmp", "tmpfs", 0, nullptr) == 0;
        ::unsetenv("XDG_RUNTIME_DIR");
        _exit(isAlone ? action() : noNamespace);
    }
    int status = -1;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST_F(ZelStandinFolder, IsInTheUsersRunFolderIfThatIsThere)
{
    const int status = withEmptySystem([] {
        const fs::path runFolder = "/run/user/" + std::to_string(::geteuid());
        fs::create_directories(runFolder);
        const bool isCreated = create("own") != noMailbox;
        const bool isThere = fs::exists(runFolder / ("zel-" + std::to_string(::geteuid())) / "name-own");
        return isCreated && isThere && fs::is_empty("/tmp") ? 0 : 1;
    });
    if (status == noNamespace) {
        GTEST_SKIP() << "only root can mount folders of its own, and not on every machine";
    }
    EXPECT_EQ(status, 0);
}

TEST_F(ZelStandinFolder, IsInTheTemporaryFolderIfTheUserHasNoRunFolder)
{
    const int status = withEmptySystem([] {
        const bool isCreated = create("own") != noMailbox;
        return isCreated && fs::exists("/tmp/zel-" + std::to_string(::geteuid()) + "/name-own") ? 0 : 1;
    });
    if (status == noNamespace) {
        GTEST_SKIP() << "only root can mount folders of its own, and not on every machine";
    }
    EXPECT_EQ(status, 0);
}

} // namespace
