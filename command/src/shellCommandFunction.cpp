// SPDX-License-Identifier: MIT
/// Calls a handler of any form with one command line.
#include "command/src/shellCommandFunction.h"

#include <utility>

namespace Corvane::CmdTableHelper {

namespace {

constexpr int noHandler = -1;

/// Has the call operators of all the lambdas that it is made of.
template <typename... Callables>
struct overload : Callables...
{
    using Callables::operator()...;
};
template <typename... Callables>
overload(Callables...) -> overload<Callables...>;

std::vector<std::string> wordsOf(int argc, const char* const* argv)
{
    if (argc <= 0) {
        return {};
    }
    return {argv, argv + argc};
}

ShellCommandFunction::SharedFunction copyOf(const ShellCommandFunction::SharedFunction& function)
{
    return function ? std::make_shared<const ShellCommandFunction::Function>(*function) : nullptr;
}

int call(const ShellCommandFunction::Function& function, int argc, const char* const* argv, std::ostream& out)
{
    using Held = ShellCommandFunction;
    const auto callHeld =
        overload{[](std::monostate) { return noHandler; },
                 [&](const Held::ArgvFunction& handler) { return handler(argc, argv); },
                 [&](const Held::ArgvStreamFunction& handler) { return handler(argc, argv, out); },
                 [&](const Held::WordsFunction& handler) { return handler(wordsOf(argc, argv)); },
                 [&](const Held::WordsStreamFunction& handler) { return handler(wordsOf(argc, argv), out); }};
    return std::visit(callHeld, function);
}

} // namespace

ShellCommandFunction::ShellCommandFunction(SharedFunction function) noexcept
    : m_function(std::move(function)), m_current(m_function.get())
{
}

ShellCommandFunction::ShellCommandFunction(ArgvFunction function)
    : ShellCommandFunction(std::make_shared<const Function>(std::move(function)))
{
}

ShellCommandFunction::ShellCommandFunction(ArgvStreamFunction function)
    : ShellCommandFunction(std::make_shared<const Function>(std::move(function)))
{
}

ShellCommandFunction::ShellCommandFunction(WordsFunction function)
    : ShellCommandFunction(std::make_shared<const Function>(std::move(function)))
{
}

ShellCommandFunction::ShellCommandFunction(WordsStreamFunction function)
    : ShellCommandFunction(std::make_shared<const Function>(std::move(function)))
{
}

ShellCommandFunction::ShellCommandFunction(const ShellCommandFunction& other)
    : ShellCommandFunction(copyOf(std::atomic_load(&other.m_function)))
{
}

ShellCommandFunction::ShellCommandFunction(ShellCommandFunction&& other) noexcept
{
    swap(other);
}

ShellCommandFunction& ShellCommandFunction::operator=(const ShellCommandFunction& other)
{
    ShellCommandFunction copy(other);
    swap(copy);
    return *this;
}

ShellCommandFunction& ShellCommandFunction::operator=(ShellCommandFunction&& other) noexcept
{
    ShellCommandFunction taken(std::move(other));
    swap(taken);
    return *this;
}

int ShellCommandFunction::callCommandHandlerFunction(int argc, const char* const* argv, std::ostream& out) const
{
    // Keeps the function alive while it runs, even if the object gets another one meanwhile.
    const auto function = std::atomic_load(&m_function);
    return function ? call(*function, argc, argv, out) : noHandler;
}

int ShellCommandFunction::callCommandHandlerFunction(SharedFunction earlier, int argc, const char* const* argv,
                                                     std::ostream& out) const
{
    if (earlier && earlier.get() == m_current.load(std::memory_order_acquire)) {
        return call(*earlier, argc, argv, out);
    }
    earlier.reset(); // replaced, so it may end before the new one runs
    return callCommandHandlerFunction(argc, argv, out);
}

std::size_t ShellCommandFunction::index() const noexcept
{
    return m_function ? m_function->index() : 0;
}

void ShellCommandFunction::swap(ShellCommandFunction& other) noexcept
{
    other.m_function = std::atomic_exchange(&m_function, std::move(other.m_function));
    other.m_current = m_current.exchange(other.m_current);
}

} // namespace Corvane::CmdTableHelper
