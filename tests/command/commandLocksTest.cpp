/// Which operation of the command service takes how many locks, and what happens when each of them fails.
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "command/src/cmdTableHelperImplV2.h"
#include "tests/command/serviceSupport.h"
#include "tests/support/lockRecorder.h"

namespace {

using namespace Corvane::CmdTableHelper;
using namespace Corvane::CmdTableHelper::Testing;
using Corvane::Testing::failEachLock;
using Corvane::Testing::LockRecorder;

class CommandLocks : public testing::Test
{
protected:
    CommandLocks()
    {
        service.registerCmdTable("x", table<CmdDefinition>("x [on]", [this](int, const char* const*, std::ostream&) {
                                     ++handlerCalls;
                                     return 7;
                                 }));
        service.registerPostExecutionHook([this](int, int, const char* const*) { ++hookCalls; });
    }

    int execute(const Words& words)
    {
        std::ostringstream out;
        return service.executeCmd(words, out);
    }

    V2::CmdTableHelperImpl service;
    int handlerCalls = 0;
    int hookCalls = 0;
    LockRecorder recorder{service};
};

TEST_F(CommandLocks, ThatFailInARegistrationLeaveTheFormerHandler)
{
    EXPECT_EQ(
        failEachLock(
            recorder, [&] { service.registerCmdTable("x", tableOf("x", 8)); }, [&] { EXPECT_EQ(execute({"x"}), 7); }),
        1U);
    EXPECT_EQ(execute({"x"}), 8);
}

TEST_F(CommandLocks, ThatFailInTheMatchingRunNeitherHandlerNorHook)
{
    recorder.failNext({EDEADLK});
    EXPECT_THROW(execute({"x"}), std::system_error);
    EXPECT_EQ(handlerCalls, 0);
    EXPECT_EQ(hookCalls, 0);
    EXPECT_EQ(execute({"x"}), 7);
    EXPECT_EQ(hookCalls, 1);
}

TEST_F(CommandLocks, ThatFailBeforeTheHooksComeAfterTheHandler)
{
    // graph, copy of the hooks, look-up of the hook
    EXPECT_EQ(failEachLock(
                  recorder, [&] { execute({"x"}); }, [&] { EXPECT_EQ(hookCalls, 0); }),
              3U);
    EXPECT_EQ(handlerCalls, 3) << "all but the first attempt ran the handler";
    EXPECT_EQ(hookCalls, 1);
}

TEST_F(CommandLocks, ThatFailForAnIncompleteLineWriteNoUsage)
{
    std::ostringstream out;
    EXPECT_EQ(failEachLock(
                  recorder, [&] { service.executeCmd({"y"}, out); }, [&] { EXPECT_EQ(out.str(), ""); }),
              1U);
    EXPECT_EQ(out.str(), "Usage: x [ on ] \n\n");
}

TEST_F(CommandLocks, ThatFailForAHookLeaveTheHooksAsTheyWere)
{
    int otherCalls = 0;
    unsigned int id = 0;
    EXPECT_EQ(failEachLock(
                  recorder,
                  [&] { id = service.registerPostExecutionHook([&](int, int, const char* const*) { ++otherCalls; }); },
                  [&] { execute({"x"}); }),
              1U);
    EXPECT_EQ(otherCalls, 0);
    EXPECT_EQ(id, 2U) << "no id was used up";
    EXPECT_EQ(failEachLock(
                  recorder, [&] { service.deregisterPostExecutionHook(id); }, [&] { execute({"x"}); }),
              1U);
    EXPECT_EQ(otherCalls, 1) << "it was still registered";
    execute({"x"});
    EXPECT_EQ(otherCalls, 1);
}

TEST_F(CommandLocks, ThatFailAtTheEndOfTheServiceLeaveNobodyWaiting)
{
    recorder.failNext({EDEADLK, EDEADLK});
    service.end(false);
    recorder.failNext({});
    EXPECT_EQ(recorder.held(), 0);
    EXPECT_EQ(execute({"x"}), 7) << "what can't be locked can't end";
    service.end(false);
    EXPECT_EQ(execute({"x"}), 20);
}

} // namespace
