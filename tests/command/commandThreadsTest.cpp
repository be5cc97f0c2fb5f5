/// Registration, execution and hooks from several threads at once.
#include <atomic>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "command/src/cmdTableHelperImplV2.h"
#include "tests/command/serviceSupport.h"
#include "tests/support/startTogether.h"

namespace {

using namespace Corvane::CmdTableHelper;
using Corvane::CmdTableHelper::Testing::table;
using Corvane::Testing::startTogether;
using V2::CmdTableHelperImpl;

constexpr int rounds = 300;

std::vector<CommandDefinitions> tableOf(const std::string& synopsis, int result)
{
    // The handler reads memory that it owns, so that sanitizers notice the call of a handler that was destroyed.
    const auto held = std::make_shared<int>(result);
    return {{synopsis, [held](int, const char* const*) { return *held; }, nullptr}};
}

TEST(CommandThreads, RegisterExecuteAndHookAtOnce)
{
    CmdTableHelperImpl service;
    service.registerCmdTable("common", tableOf("common <a>", 1));
    std::atomic<int> hookCalls{0};
    std::atomic<int> executed{0};
    const auto registering = [&](const std::string& name) {
        for (int i = 0; i < rounds; ++i) {
            service.registerCmdTable(name, tableOf(name + " w" + std::to_string(i) + " [<a>]", i));
            service.registerCmdTable("common", tableOf("common <a>", i + 2));
        }
    };
    const auto executing = [&] {
        for (int i = 0; i < rounds; ++i) {
            std::ostringstream out;
            EXPECT_GE(service.executeCmd({"common", "v"}, out), 1);
            ++executed;
            const int result = service.executeCmd({"one", "w" + std::to_string(i)}, out);
            EXPECT_TRUE(result == i || result == 20) << result;
            service.executeCmd({"unknown"}, out);
        }
    };
    startTogether({[&] { registering("one"); }, [&] { registering("two"); }, executing, executing,
                   [&] {
                       for (int i = 0; i < rounds; ++i) {
                           const unsigned int id =
                               service.registerPostExecutionHook([&](int, int, const char* const*) { ++hookCalls; });
                           std::ostringstream out;
                           service.executeCmd({"common", "v"}, out);
                           service.deregisterPostExecutionHook(id);
                       }
                   }});
    EXPECT_EQ(executed, 2 * rounds);
    EXPECT_GE(hookCalls, rounds);
    std::ostringstream out;
    for (const char* name : {"one", "two"}) {
        for (int i = 0; i < rounds; ++i) {
            EXPECT_EQ(service.executeCmd({name, "w" + std::to_string(i)}, out), i);
        }
    }
}

/// ThreadSanitizer reports a look-up without the lock: nothing else orders it after the registration.
TEST(CommandThreads, RegisterHooksBetweenTwoHooksOfARun)
{
    CmdTableHelperImpl service;
    service.registerCmdTable("x", tableOf("x", 1));
    std::atomic<bool> inside{false};
    std::atomic<bool> registered{false};
    const auto waitFor = [](const std::atomic<bool>& flag) {
        while (!flag.load(std::memory_order_relaxed)) {
            std::this_thread::yield();
        }
    };
    service.registerPostExecutionHook([&](int, int, const char* const*) {
        inside.store(true, std::memory_order_relaxed);
        waitFor(registered);
    });
    int calls = 0;
    service.registerPostExecutionHook([&](int, int, const char* const*) { ++calls; });
    startTogether({[&] {
                       std::ostringstream out;
                       service.executeCmd({"x"}, out);
                   },
                   [&] {
                       waitFor(inside);
                       for (int i = 0; i < 20; ++i) { // so that the look-up begins at one of them
                           service.registerPostExecutionHook([](int, int, const char* const*) {});
                       }
                       registered.store(true, std::memory_order_relaxed);
                   }});
    EXPECT_EQ(calls, 1);
}

TEST(CommandThreads, ReplaceAHandlerThatOthersAreInside)
{
    CmdTableHelperImpl service;
    std::atomic<bool> replaced{false};
    std::atomic<bool> inside{false};
    const auto token = std::make_shared<int>(7);
    service.registerCmdTable("x", table<CommandDefinitions>("x", [&, token](int, const char* const*) {
                                 inside = true;
                                 while (!replaced) {
                                     std::this_thread::yield();
                                 }
                                 return *token;
                             }));
    startTogether({[&] {
                       std::ostringstream out;
                       EXPECT_EQ(service.executeCmd({"x"}, out), 7);
                   },
                   [&] {
                       while (!inside) {
                           std::this_thread::yield();
                       }
                       service.registerCmdTable("x", tableOf("x", 8));
                       replaced = true;
                   }});
    std::ostringstream out;
    EXPECT_EQ(service.executeCmd({"x"}, out), 8);
    EXPECT_EQ(token.use_count(), 1);
}

} // namespace
