/// One handler of any form: what is held, how it is called, and what a copy is.
#include "command/src/shellCommandFunction.h"

#include <atomic>
#include <functional>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/startTogether.h"

namespace {

using Corvane::CmdTableHelper::ShellCommandFunction;
using testing::ElementsAre;
using testing::IsEmpty;
using Words = std::vector<std::string>;

const char* const line[] = {"show", "-l", "a.txt"};

TEST(ShellCommandFunction, HoldsItsAlternativesInAFixedOrder)
{
    using Function = ShellCommandFunction::Function;
    static_assert(std::variant_size_v<Function> == 5);
    static_assert(std::is_same_v<std::variant_alternative_t<0, Function>, std::monostate>);
    static_assert(std::is_same_v<std::variant_alternative_t<1, Function>, std::function<int(int, const char* const*)>>);
    static_assert(std::is_same_v<std::variant_alternative_t<2, Function>,
                                 std::function<int(int, const char* const*, std::ostream&)>>);
    static_assert(std::is_same_v<std::variant_alternative_t<3, Function>, std::function<int(const Words&)>>);
    static_assert(
        std::is_same_v<std::variant_alternative_t<4, Function>, std::function<int(const Words&, std::ostream&)>>);

    EXPECT_EQ(ShellCommandFunction().index(), 0U);
    EXPECT_EQ(ShellCommandFunction(std::function<int(int, const char* const*)>()).index(), 1U);
    EXPECT_EQ(ShellCommandFunction(std::function<int(int, const char* const*, std::ostream&)>()).index(), 2U);
    EXPECT_EQ(ShellCommandFunction(std::function<int(const Words&)>()).index(), 3U);
    EXPECT_EQ(ShellCommandFunction(std::function<int(const Words&, std::ostream&)>()).index(), 4U);
}

TEST(ShellCommandFunction, IsMadeFromEachFormOfHandlerWithoutACast)
{
    static_assert(std::is_convertible_v<std::function<int(int, const char* const*)>, ShellCommandFunction>);
    static_assert(
        std::is_convertible_v<std::function<int(int, const char* const*, std::ostream&)>, ShellCommandFunction>);
    static_assert(std::is_convertible_v<std::function<int(const Words&)>, ShellCommandFunction>);
    static_assert(std::is_convertible_v<std::function<int(const Words&, std::ostream&)>, ShellCommandFunction>);
    static_assert(std::is_nothrow_move_constructible_v<ShellCommandFunction>);
}

TEST(ShellCommandFunction, HoldingNothingReturnsMinusOneAndWritesNothing)
{
    std::ostringstream out;
    EXPECT_EQ(ShellCommandFunction().callCommandHandlerFunction(3, line, out), -1);
    EXPECT_EQ(out.str(), "");
}

TEST(ShellCommandFunction, GivesACStyleHandlerTheArgumentsUnchanged)
{
    int seenArgc = -1;
    const char* const* seenArgv = nullptr;
    const ShellCommandFunction function(
        std::function<int(int, const char* const*)>([&](int argc, const char* const* argv) {
            seenArgc = argc;
            seenArgv = argv;
            return 17;
        }));
    std::ostringstream out;
    EXPECT_EQ(function.callCommandHandlerFunction(3, line, out), 17);
    EXPECT_EQ(seenArgc, 3);
    EXPECT_EQ(seenArgv, line);
    EXPECT_EQ(function.callCommandHandlerFunction(0, nullptr, out), 17);
    EXPECT_EQ(seenArgc, 0);
    EXPECT_EQ(seenArgv, nullptr);
    EXPECT_EQ(out.str(), "");
}

TEST(ShellCommandFunction, GivesAStreamHandlerTheVeryStream)
{
    std::ostringstream out;
    const ShellCommandFunction function(std::function<int(int, const char* const*, std::ostream&)>(
        [&](int argc, const char* const* argv, std::ostream& stream) {
            EXPECT_EQ(&stream, &out);
            EXPECT_EQ(argv, line);
            stream << "seen";
            return argc;
        }));
    EXPECT_EQ(function.callCommandHandlerFunction(0, line, out), 0);
    EXPECT_EQ(function.callCommandHandlerFunction(3, line, out), 3);
    EXPECT_EQ(out.str(), "seenseen");
}

TEST(ShellCommandFunction, CopiesTheWordsForAHandlerThatTakesStrings)
{
    Words seen;
    std::ostringstream out;
    const ShellCommandFunction withoutStream(std::function<int(const Words&)>([&](const Words& words) {
        seen = words;
        return -5;
    }));
    const ShellCommandFunction withStream(
        std::function<int(const Words&, std::ostream&)>([&](const Words& words, std::ostream& stream) {
            EXPECT_EQ(&stream, &out);
            seen = words;
            return 4;
        }));
    EXPECT_EQ(withoutStream.callCommandHandlerFunction(3, line, out), -5);
    EXPECT_THAT(seen, ElementsAre("show", "-l", "a.txt"));
    EXPECT_EQ(withStream.callCommandHandlerFunction(2, line, out), 4);
    EXPECT_THAT(seen, ElementsAre("show", "-l"));
    for (const int argc : {0, -1, -2147483647}) {
        seen = {"untouched"};
        withoutStream.callCommandHandlerFunction(argc, line, out);
        EXPECT_THAT(seen, IsEmpty());
        seen = {"untouched"};
        withStream.callCommandHandlerFunction(argc, nullptr, out);
        EXPECT_THAT(seen, IsEmpty());
    }
    EXPECT_EQ(out.str(), "");
}

TEST(ShellCommandFunction, ThrowsForAnEmptyHandlerOfEachForm)
{
    std::ostringstream out;
    const ShellCommandFunction functions[] = {
        std::function<int(int, const char* const*)>(), std::function<int(int, const char* const*, std::ostream&)>(),
        std::function<int(const Words&)>(), std::function<int(const Words&, std::ostream&)>()};
    for (const auto& function : functions) {
        EXPECT_TRUE(function.hasFunction());
        EXPECT_THROW(function.callCommandHandlerFunction(3, line, out), std::bad_function_call);
    }
}

TEST(ShellCommandFunction, ThrowsForANullWordWhereStringsAreTaken)
{
    const char* const broken[] = {"show", nullptr, "a.txt"};
    std::ostringstream out;
    EXPECT_THROW(ShellCommandFunction(std::function<int(const Words&)>([](const Words&) {
                     return 0;
                 })).callCommandHandlerFunction(3, broken, out),
                 std::logic_error);
    EXPECT_THROW(ShellCommandFunction(std::function<int(const Words&, std::ostream&)>([](const Words&, std::ostream&) {
                     return 0;
                 })).callCommandHandlerFunction(3, broken, out),
                 std::logic_error);
    EXPECT_EQ(ShellCommandFunction(std::function<int(int, const char* const*)>([](int argc, const char* const*) {
                  return argc;
              })).callCommandHandlerFunction(3, broken, out),
              3);
}

TEST(ShellCommandFunction, PassesOnWhatAHandlerThrows)
{
    std::ostringstream out;
    const ShellCommandFunction function(
        std::function<int(int, const char* const*)>([](int, const char* const*) -> int { throw 42; }));
    EXPECT_THROW(function.callCommandHandlerFunction(3, line, out), int);
}

/// Counts its calls in itself, so that copies can be told apart.
struct CountingHandler
{
    int operator()(int, const char* const*) { return ++calls; }
    int calls = 0;
};

TEST(ShellCommandFunction, CopiesTheHandlerWithIt)
{
    std::ostringstream out;
    ShellCommandFunction original(std::function<int(int, const char* const*)>{CountingHandler()});
    EXPECT_EQ(original.callCommandHandlerFunction(0, nullptr, out), 1);
    ShellCommandFunction copy(original);
    EXPECT_EQ(original.callCommandHandlerFunction(0, nullptr, out), 2);
    EXPECT_EQ(copy.callCommandHandlerFunction(0, nullptr, out), 2);
    EXPECT_EQ(copy.callCommandHandlerFunction(0, nullptr, out), 3);
    original = copy;
    EXPECT_EQ(original.callCommandHandlerFunction(0, nullptr, out), 4);
    EXPECT_EQ(copy.callCommandHandlerFunction(0, nullptr, out), 4);
}

TEST(ShellCommandFunction, MovesTheHandlerWithIt)
{
    std::ostringstream out;
    ShellCommandFunction original(std::function<int(int, const char* const*)>{CountingHandler()});
    ShellCommandFunction moved(std::move(original));
    EXPECT_EQ(moved.callCommandHandlerFunction(0, nullptr, out), 1);
    ShellCommandFunction assigned;
    assigned = std::move(moved);
    EXPECT_EQ(assigned.callCommandHandlerFunction(0, nullptr, out), 2);
}

TEST(ShellCommandFunction, SurvivesBeingAssignedToItself)
{
    std::ostringstream out;
    ShellCommandFunction function(std::function<int(int, const char* const*)>{CountingHandler()});
    const ShellCommandFunction& same = function;
    function = same;
    EXPECT_EQ(function.callCommandHandlerFunction(0, nullptr, out), 1);
}

TEST(ShellCommandFunction, KeepsAHandlerThatReplacesItselfUntilItReturns)
{
    std::ostringstream out;
    ShellCommandFunction function;
    const auto token = std::make_shared<int>(7);
    function = std::function<int(int, const char* const*)>([&function, token](int, const char* const*) {
        function = ShellCommandFunction();
        return *token;
    });
    EXPECT_EQ(token.use_count(), 2);
    EXPECT_EQ(function.callCommandHandlerFunction(0, nullptr, out), 7);
    EXPECT_EQ(token.use_count(), 1);
    EXPECT_FALSE(function.hasFunction());
}

TEST(ShellCommandFunction, CallsTheFunctionThatItHoldsNowAndEndsTheEarlierOneBefore)
{
    std::ostringstream out;
    const auto token = std::make_shared<int>(7);
    ShellCommandFunction function(
        std::function<int(int, const char* const*)>([token](int, const char* const*) { return *token; }));
    EXPECT_EQ(function.callCommandHandlerFunction(function.function(), 0, nullptr, out), 7);
    auto earlier = function.function();
    function = std::function<int(int, const char* const*)>(
        [&token](int, const char* const*) { return 10 + static_cast<int>(token.use_count()); });
    EXPECT_EQ(token.use_count(), 2);
    EXPECT_EQ(function.callCommandHandlerFunction(std::move(earlier), 0, nullptr, out), 11);
    earlier = function.function();
    function = ShellCommandFunction();
    EXPECT_EQ(function.callCommandHandlerFunction(std::move(earlier), 0, nullptr, out), -1);
    EXPECT_EQ(function.callCommandHandlerFunction(nullptr, 0, nullptr, out), -1);
}

/// Reads memory of its own when it is called, and counts its copies.
class LivingHandler
{
public:
    LivingHandler(int number, std::atomic<int>& living) : m_number(std::make_unique<int>(number)), m_living(&living)
    {
        ++*m_living;
    }
    LivingHandler(const LivingHandler& other) : LivingHandler(*other.m_number, *other.m_living) {}
    LivingHandler& operator=(const LivingHandler&) = delete;
    ~LivingHandler()
    {
        *m_number = -1; // seen by a call that comes too late
        --*m_living;
    }
    int operator()(int, const char* const*) const { return *m_number; }

private:
    std::unique_ptr<int> m_number;
    std::atomic<int>* m_living;
};

TEST(ShellCommandFunction, IsAssignedByOneThreadWhileAnotherCallsIt)
{
    constexpr int changes = 100;
    std::atomic<int> living{0};
    const auto handler = [&](int number) {
        return ShellCommandFunction(std::function<int(int, const char* const*)>(LivingHandler(number, living)));
    };
    {
        ShellCommandFunction function = handler(0);
        std::atomic<int> seen{0};
        const auto assigning = [&] {
            for (int number = 1; seen < changes; ++number) {
                function = handler(number);
            }
        };
        const auto calling = [&] {
            std::ostringstream out;
            for (int before = 0; seen < changes;) {
                const int now = function.callCommandHandlerFunction(0, nullptr, out);
                EXPECT_GE(now, before);
                seen += now > before ? 1 : 0;
                before = now;
            }
        };
        Corvane::Testing::startTogether({assigning, calling});
        EXPECT_EQ(living, 1) << "the replaced functions are destroyed";
    }
    EXPECT_EQ(living, 0);
}

} // namespace
