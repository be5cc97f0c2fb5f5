/// The hooks that run after every executed command.
#include <functional>
#include <memory>
#include <sstream>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "command/src/cmdTableHelperImplV2.h"
#include "tests/command/serviceSupport.h"

namespace {

using namespace Corvane::CmdTableHelper;
using namespace Corvane::CmdTableHelper::Testing;
using testing::ElementsAre;
using V2::CmdTableHelperImpl;

TEST(Hooks, GetTheResultTheCountAndTheHandlersArgv)
{
    CmdTableHelperImpl service;
    const char* const* handlerArgv = nullptr;
    service.registerCmdTable("x", table<CommandDefinitions>("x <a>", [&](int, const char* const* argv) {
                                 handlerArgv = argv;
                                 return -3;
                             }));
    int calls = 0;
    service.registerPostExecutionHook([&](int result, int argc, const char* const* argv) {
        ++calls;
        EXPECT_EQ(result, -3);
        EXPECT_EQ(argc, 2);
        EXPECT_EQ(argv, handlerArgv);
        EXPECT_STREQ(argv[1], "v");
    });
    std::ostringstream out;
    EXPECT_EQ(service.executeCmd({"x", "v"}, out), -3);
    EXPECT_EQ(calls, 1);
}

TEST(Hooks, RunAfterAHandlerThatReplacedItselfHasEnded)
{
    CmdTableHelperImpl service;
    const auto token = std::make_shared<int>(3);
    service.registerCmdTable("x", table<CommandDefinitions>("x", [&service, token](int, const char* const*) {
                                 service.registerCmdTable("x", tableOf("x", 4));
                                 return *token;
                             }));
    long usesInHook = 0;
    service.registerPostExecutionHook([&](int, int, const char* const*) { usesInHook = token.use_count(); });
    std::ostringstream out;
    EXPECT_EQ(service.executeCmd({"x"}, out), 3);
    EXPECT_EQ(usesInHook, 1);
}

class HookRuns : public testing::Test
{
protected:
    HookRuns() { service.registerCmdTable("x", tableOf("x", 0)); }

    std::vector<int> run()
    {
        calls.clear();
        std::ostringstream out;
        service.executeCmd({"x"}, out);
        return calls;
    }

    unsigned int add(int mark, const std::function<void()>& action = {})
    {
        return service.registerPostExecutionHook([this, mark, action](int, int, const char* const*) {
            calls.push_back(mark);
            if (action) {
                action();
            }
        });
    }

    CmdTableHelperImpl service;
    std::vector<int> calls;
};

TEST_F(HookRuns, NumberTheHooksFromOneAndUseNoNumberTwice)
{
    EXPECT_EQ(add(1), 1U);
    EXPECT_EQ(add(2), 2U);
    EXPECT_EQ(add(3), 3U);
    service.deregisterPostExecutionHook(2);
    EXPECT_EQ(add(4), 4U);
    EXPECT_THAT(run(), ElementsAre(1, 3, 4));
    service.deregisterPostExecutionHook(4);
    EXPECT_EQ(add(5), 5U);
}

TEST_F(HookRuns, ReleaseADeregisteredHookOutsideTheLock)
{
    unsigned int fromItsEnd = 0;
    {
        const std::shared_ptr<void> mark(nullptr, [&](void*) { fromItsEnd = add(2); });
        service.registerPostExecutionHook([mark](int, int, const char* const*) {});
    }
    service.deregisterPostExecutionHook(1);
    EXPECT_EQ(fromItsEnd, 2U);
}

TEST_F(HookRuns, IgnoreAnUnknownId)
{
    add(1);
    service.deregisterPostExecutionHook(0);
    service.deregisterPostExecutionHook(99);
    EXPECT_THAT(run(), ElementsAre(1));
}

TEST_F(HookRuns, LeaveOutAHookThatIsDeregisteredBeforeItsTurn)
{
    add(1, [this] { service.deregisterPostExecutionHook(2); });
    add(2);
    add(3);
    EXPECT_THAT(run(), ElementsAre(1, 3));
}

TEST_F(HookRuns, LetAHookDeregisterItself)
{
    add(1, [this] { service.deregisterPostExecutionHook(1); });
    add(2);
    EXPECT_THAT(run(), ElementsAre(1, 2));
    EXPECT_THAT(run(), ElementsAre(2));
}

TEST_F(HookRuns, CallAHookThatARunRegistersFromTheNextOn)
{
    add(1, [this] {
        if (calls.size() == 1) {
            add(2);
        }
    });
    EXPECT_THAT(run(), ElementsAre(1));
    EXPECT_THAT(run(), ElementsAre(1, 2));
}

TEST_F(HookRuns, ReportAnEmptyHook)
{
    service.registerPostExecutionHook({});
    std::ostringstream out;
    EXPECT_THROW(service.executeCmd({"x"}, out), std::bad_function_call);
}

} // namespace
