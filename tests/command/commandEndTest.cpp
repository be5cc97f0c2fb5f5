/// The end of the command service's state, at the end of a process and where the library is unloaded.
#include <cstddef>

#include <dlfcn.h>
#include <gtest/gtest.h>

#include "tests/support/childProcess.h"
#include "tests/support/usedMemory.h"

namespace {

TEST(CommandService, IsUsedByDetachedThreadsWhileTheProcessEnds)
{
    for (int run = 0; run < 5; ++run) {
        const auto result = Corvane::Testing::runProgram({CORVANE_USE_TO_THE_END});
        ASSERT_EQ(result.status, 0) << result.err;
        ASSERT_EQ(result.err, "");
    }
}

TEST(CommandService, LetsAForkedChildExitWhileThreadsOfItsParentUseIt)
{
#ifdef CORVANE_TEST_SANITIZED
    GTEST_SKIP() << "a sanitizer may leave locks of its own to a child that another thread holds";
#endif
    const auto result = Corvane::Testing::runProgram({CORVANE_USE_TO_THE_END, "fork"});
    EXPECT_EQ(result.status, 0) << result.err;
}

TEST(CommandService, LeavesNothingOnTheHeapOfAProcessThatUnloadsTheLibrary)
{
#ifdef CORVANE_TEST_SANITIZED
    GTEST_SKIP() << "a sanitizer keeps memory at each loading of a library with static objects";
#endif
#if !__GLIBC_PREREQ(2, 34)
    GTEST_SKIP() << "the loader of this C library keeps memory at each loading of a library with thread-local data";
#endif
    constexpr int rounds = 1000;
    constexpr std::size_t smallestBlock = 24; // of malloc(); the loader itself takes less in a round
    std::size_t before = 0;
    for (int round = -100; round < rounds; ++round) {
        if (round == 0) {
            before = Corvane::Testing::usedMemory();
        }
        void* const plugin = ::dlopen(CORVANE_COMMAND_PLUGIN, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(plugin, nullptr) << ::dlerror();
        ASSERT_EQ(reinterpret_cast<int (*)()>(::dlsym(plugin, "useCommands"))(), 3);
        ASSERT_EQ(::dlclose(plugin), 0);
        ASSERT_EQ(::dlopen("libcorvane.so.0", RTLD_NOW | RTLD_NOLOAD), nullptr) << "it is still loaded";
    }
    EXPECT_LT(Corvane::Testing::usedMemory(), before + rounds * smallestBlock);
}

} // namespace
